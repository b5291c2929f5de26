// CSV and XML messages into the connection row.
#include "jms/MessageLayout.h"
#include "jmsin/JmsInAdapter.h"
#include "jmsin/MessageKeys.h"
#include "jmsin/Parameters.h"
#include "jmsin/XmlScanner.h"

namespace {

// Where a CSV token goes when it is no field.
constexpr int kStreamName = -jms::kPrefixLength;
constexpr int kOpcode = kStreamName + 1;

}  // namespace

bool JmsInAdapter::matchesStream(std::string_view name) { return name == callGetStreamName(); }

bool JmsInAdapter::parseCsvMessage(std::string& text, bool allFields) {
    trace(keys::kParseCsv);
    int field = allFields || !params_->expectStreamNameOpcode ? 0 : kStreamName;
    for (size_t begin = 0;;) {
        const size_t found =
            params_->delimiter.empty() ? std::string::npos : text.find(params_->delimiter, begin);
        const bool isLast = found == std::string::npos;
        token_.assign(text, begin, isLast ? found : found - begin);
        if (!placeToken(token_, field, text)) return false;
        ++field;
        if (isLast) break;
        begin = found + params_->delimiter.size();
        if (begin == text.size()) {
            // A delimiter at the very end: one more, null field. Behind the stream name alone that is field
            // -1, which the toolkit refuses without harm.
            setFieldAsStringWithIndex(row_, field, nullptr);
            break;
        }
    }
    trace(keys::kParseCsvEnd);
    return true;
}

bool JmsInAdapter::placeToken(const std::string& token, int field, const std::string& text) {
    if (field == kStreamName) return token.empty() ? refuse(keys::kNoStreamName, text) : matchesStream(token);
    if (field == kOpcode) {
        if (token.empty()) return refuse(keys::kNoStreamOp, text);
        setOp(row_, token.front());
    } else {
        setFieldAsStringWithIndex(row_, field, token.empty() ? nullptr : token.c_str());
    }
    return true;
}

bool JmsInAdapter::parseXmlMessage(std::string& text, std::vector<std::string>* names) {
    trace(keys::kParseXml);
    const auto element = xml::findElement(text);
    if (!element) return refuse(keys::kParseXmlFailed);
    if (params_->matchStreamName && !matchesStream(xml::nameOf(text, *element))) return false;

    const auto setField = [&](std::string_view name, std::string_view value) {
        setFieldAsStringWithKey(row_, std::string(name).c_str(), std::string(value).c_str());
        if (names != nullptr && name != xml::kOpcodeAttribute) names->emplace_back(name);
    };
    const size_t failed = xml::walkAttributes(text, *element, setField);
    if (failed == std::string_view::npos) return true;
    return refuse(keys::kParseXmlBadAttribute, std::to_string(failed));
}
