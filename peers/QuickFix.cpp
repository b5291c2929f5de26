#include "peers/QuickFix.h"

#include <quickfix/Message.h>

#include <stdexcept>

namespace quickfix {
namespace {

void add(const FIX::FieldMap& part, Fields& fields) {
    for (auto field = part.begin(); field != part.end(); ++field)
        fields[field->getTag()] = field->getString();
}

template <typename AnyFields>
std::string composeAny(const std::string& version, const std::string& type, const AnyFields& fields) {
    FIX::Message message;
    message.getHeader().setField(8, "FIX." + version);
    message.getHeader().setField(35, type);
    for (const auto& field : fields) {
        const bool inHeader = FIX::Message::isHeaderField(field.first);
        FIX::FieldMap* part = &message;
        if (inHeader) part = &message.getHeader();
        part->setField(field.first, field.second);
    }
    return message.toString();
}

}  // namespace

Fields read(const std::string& message) {
    constexpr bool kLengthAndCheckSum = true;
    const FIX::Message parsed(message, kLengthAndCheckSum);
    int tag = 0;
    if (!parsed.hasValidStructure(tag)) throw std::runtime_error("out of order: " + std::to_string(tag));
    Fields fields;
    add(parsed.getHeader(), fields);
    add(parsed, fields);
    add(parsed.getTrailer(), fields);
    return fields;
}

std::string compose(const std::string& version, const std::string& type, const Fields& fields) {
    return composeAny(version, type, fields);
}

std::string compose(const std::string& version, const std::string& type,
                    const std::vector<std::pair<int, const char*>>& fields) {
    return composeAny(version, type, fields);
}

void parse(const std::string& message) {
    constexpr bool kUnchecked = false;
    const FIX::Message parsed(message, kUnchecked);
}

}  // namespace quickfix
