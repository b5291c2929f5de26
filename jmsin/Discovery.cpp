// Proposes a schema: browses messages without consuming them, lays each into the connection row, and widens
// the type of every column over its values.
#include "jmsin/JmsInAdapter.h"

#include <algorithm>
#include <map>
#include <stdexcept>
#include <tuple>

#include "datatypes/DataTypes.h"
#include "fix/NewFixUtils.h"
#include "jms/JmsUtils.h"
#include "jmsin/MessageKeys.h"
#include "jmsin/Parameters.h"
#include "util/StringUtils.h"

namespace {

using Rows = std::vector<std::vector<std::string>>;

// Tags by number; what is no number comes last, by its characters.
struct TagOrder {
    bool operator()(const std::string& a, const std::string& b) const { return rank(a) < rank(b); }
    static std::tuple<bool, size_t, std::string> rank(const std::string& tag) {
        const bool isNumber = !tag.empty() && tag.find_first_not_of("0123456789") == std::string::npos;
        const size_t digits = isNumber ? tag.size() - std::min(tag.find_first_not_of('0'), tag.size()) : 0;
        return {!isNumber, digits, isNumber ? tag.substr(tag.size() - digits) + tag : tag};
    }
};

bool isFramingTag(const NewFixUtils& fix, const std::string& tag) {
    return tag == fix.beginStringTag || tag == fix.bodyLengthTag || tag == fix.msgTypeTag ||
           tag == fix.checkSumTag;
}

}  // namespace

// The limit is a signed number that is compared as unsigned: a negative one does not limit.
bool JmsInAdapter::wantsMoreSamples(const Rows& rows) const {
    return rows.size() < static_cast<size_t>(discoveryRowLimit);
}

bool JmsInAdapter::discover(std::string /*name*/) {
    trace(keys::kDiscover);
    if (discovered) return true;
    discovered = row_ != nullptr && discoverByFormat();  // no row: there was no successful reset
    jms_->disconnect();
    return discovered;
}

bool JmsInAdapter::discoverCsv() {
    trace(keys::kDiscoverCsv);
    std::vector<std::string> messages;
    if (!jms_->browseTextMessages(messages)) return false;
    std::vector<unsigned int> types;
    Rows rows;
    auto message = messages.begin();
    while (wantsMoreSamples(rows) && message != messages.end() && !message->empty()) {
        std::string text = *message;
        clearData(row_);
        if (!parseCsvMessage(text, true)) continue;  // the scan moves on after a successful parse alone
        addRowToDiscovery(types, rows);
        ++message;
    }
    if (rows.empty()) return false;
    makeNumberedColumns(types, rows);
    return true;
}

bool JmsInAdapter::discoverObjectArray() {
    trace(keys::kDiscoverObjectArray);
    return discoverArrays(&JmsUtils::browseObjectArrayMessages);
}

bool JmsInAdapter::discoverCustom() {
    trace(keys::kDiscoverCustom);
    return discoverArrays(&JmsUtils::browseCustomMessages);
}

bool JmsInAdapter::discoverArrays(bool (JmsUtils::*browse)(Rows& messages)) {
    Rows messages;
    if (!(jms_.get()->*browse)(messages)) return false;
    std::vector<unsigned int> types;
    Rows rows;
    for (const std::vector<std::string>& message : messages) {
        if (!wantsMoreSamples(rows) || message.empty()) break;
        clearData(row_);
        for (size_t i = 0; i < message.size(); ++i) {
            setFieldAsStringWithIndex(row_, static_cast<int>(i), message[i].c_str());
        }
        addRowToDiscovery(types, rows);
    }
    makeNumberedColumns(types, rows);
    return true;
}

void JmsInAdapter::addRowToDiscovery(std::vector<unsigned int>& types, Rows& rows) {
    trace(keys::kAddRowToDiscovery);
    std::vector<std::string> row;
    for (int i = 0; i < size(row_); ++i) {
        const char* value = nullptr;
        if (!getFieldAsStringWithIndex(row_, i, &value) || value == nullptr) value = "";
        row.emplace_back(value);
        if (static_cast<size_t>(i) == types.size()) types.push_back(DataTypes::kNotInferred);
        DataTypes::widenColumn(types[static_cast<size_t>(i)], typeOf(value));
    }
    rows.push_back(std::move(row));
}

uint32_t JmsInAdapter::typeOf(const char* value) {
    return testValue(value, params_->dateFormat.c_str(), params_->timestampFormat.c_str(), nullptr);
}

void JmsInAdapter::makeNumberedColumns(std::vector<unsigned int>& types, Rows& rows) {
    makeDiscoveredFieldTypes(types);
    for (size_t i = 0; i < fieldTypes.size(); ++i) {
        fieldNames.push_back(MORVEX::Kel::strprintf("column_%d", static_cast<int>(i)));
    }
    makeDiscoveredRows(rows);
}

void JmsInAdapter::makeDiscoveredFieldTypes(std::vector<unsigned int>& types) {
    trace(keys::kMakeDiscoveredFieldTypes);
    for (const unsigned int type : types) fieldTypes.push_back(DataTypes::typeToString(type));
}

void JmsInAdapter::makeDiscoveredRows(Rows& rows) {
    trace(keys::kMakeDiscoveredRows);
    sampleRows = rows;
}

// The columns are the attributes of the first message that parses. A later message that lacks one has the
// empty text there, which says nothing of the type; one that has more is not asked for the rest.
bool JmsInAdapter::discoverXml() {
    trace(keys::kDiscoverXml);
    std::vector<std::string> messages;
    if (!jms_->browseTextMessages(messages)) return false;
    std::vector<std::string> columns;
    std::vector<unsigned int> types;
    Rows rows;
    for (std::string& message : messages) {
        if (!wantsMoreSamples(rows)) break;
        clearData(row_);
        std::vector<std::string> names;
        if (!parseXmlMessage(message, &names)) continue;
        if (rows.empty()) {
            for (const std::string& name : names) {
                if (std::find(columns.begin(), columns.end(), name) == columns.end()) columns.push_back(name);
            }
            types.assign(columns.size(), DataTypes::kNotInferred);
        }
        std::vector<std::string>& row = rows.emplace_back();
        for (size_t i = 0; i < columns.size(); ++i) {
            const char* value = nullptr;
            const bool present =
                getFieldAsStringWithKey(row_, columns[i].c_str(), &value) && value != nullptr;
            row.emplace_back(present ? value : "");
            if (present) DataTypes::widenColumn(types[i], typeOf(value));
        }
    }
    fieldNames.insert(fieldNames.end(), columns.begin(), columns.end());
    makeDiscoveredFieldTypes(types);
    makeDiscoveredRows(rows);
    return true;
}

// The columns are all tags that any sample has, but for the framing ones and those without a name.
bool JmsInAdapter::discoverFix() {
    trace(keys::kDiscoverFix);
    std::vector<std::string> messages;
    if (!jms_->browseTextMessages(messages)) return false;
    std::map<std::string, unsigned int, TagOrder> types;
    std::vector<std::map<std::string, std::string>> samples;
    for (const std::string& message : messages) {
        if (samples.size() >= static_cast<size_t>(discoveryRowLimit)) break;
        std::map<std::string, std::string> fields;
        try {
            if (!fix_->parseFixMessage(message, fields)) continue;
        } catch (const std::out_of_range&) {
            continue;  // one message that cannot be taken apart is no reason to give up the others
        }
        for (const auto& [tag, value] : fields) {
            if (!isFramingTag(*fix_, tag))
                DataTypes::widenColumn(types.try_emplace(tag, DataTypes::kNotInferred).first->second,
                                       typeOf(value.c_str()));
        }
        samples.push_back(std::move(fields));
    }

    std::vector<std::string> tags;
    std::vector<unsigned int> columnTypes;
    for (const auto& [tag, type] : types) {
        std::string name;
        if (!fix_->fieldNameByTag(tag, name)) {
            refuse(keys::kDiscoverFixNoTag, tag);
            continue;
        }
        tags.push_back(tag);
        fieldNames.push_back(name);
        columnTypes.push_back(type);
    }
    Rows rows;
    for (const auto& sample : samples) {
        std::vector<std::string>& row = rows.emplace_back();
        for (const std::string& tag : tags) {
            const auto field = sample.find(tag);
            row.push_back(field != sample.end() ? field->second : "");
        }
    }
    makeDiscoveredFieldTypes(columnTypes);
    makeDiscoveredRows(rows);
    return true;
}
