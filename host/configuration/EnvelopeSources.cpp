#include "host/configuration/EnvelopeSources.h"

#include <algorithm>
#include <span>

#include "datatypes/TypeCodes.h"
#include "host/configuration/Spelling.h"
#include "host/values/Text.h"
#include "host/values/ValueTyping.h"

namespace host {

namespace {

using DataTypes::TypeEnum;

constexpr TypeEnum kText[] = {DataTypes::kString};
constexpr TypeEnum kFlag[] = {DataTypes::kBoolean, DataTypes::kString};
constexpr TypeEnum kCount[] = {DataTypes::kInt16, DataTypes::kInteger, DataTypes::kLong, DataTypes::kString};
constexpr TypeEnum kMoment[] = {DataTypes::kLong, DataTypes::kTimestamp, DataTypes::kBigdatetime,
                                DataTypes::kDate, DataTypes::kString};

struct Header {
    const char* name;
    std::span<const TypeEnum> types;
};
constexpr Header kHeaders[] = {
    {"JMSMessageID", kText},    {"JMSCorrelationID", kText}, {"JMSType", kText},
    {"JMSReplyTo", kText},      {"JMSDestination", kText},   {"JMSTimestamp", kMoment},
    {"JMSExpiration", kMoment}, {"JMSPriority", kCount},     {"JMSDeliveryMode", kCount},
    {"JMSRedelivered", kFlag},
};
constexpr std::string_view kProperty = "property.";

}  // namespace

std::string faultOfSource(std::string_view from, std::uint32_t type) {
    if (from == kProperty) return "is from \"property.\", which names none; it is written property.NAME.";
    if (from.starts_with(kProperty)) return {};
    const auto nameOf = [](const Header& header) { return std::string_view(header.name); };
    const Header& header = nearest(kHeaders, from, nameOf);
    if (from != header.name)
        return "is from " + inQuotes(from) + ", which is no header; the nearest one is " + header.name +
               ", and a property is written property.NAME.";
    if (std::find(header.types.begin(), header.types.end(), type) != header.types.end()) return {};
    std::string allowed;
    for (const TypeEnum one : header.types) addToList(allowed, typeName(one));
    return "has the type " + typeName(type) + ", which " + header.name + " does not fill; allowed " +
           (header.types.size() == 1 ? "is " : "are ") + allowed + ".";
}

}  // namespace host
