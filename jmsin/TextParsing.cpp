// CSV and XML messages into the connection row.
#include <cstring>

#include "jmsin/JmsInAdapter.h"
#include "jmsin/MessageKeys.h"
#include "jmsin/XmlPatterns.h"
#include "toolkit/kel_intl.h"

namespace {

constexpr char kOpcodeAttribute[] = "KEL_OPS";

// Ends a token with a NUL where it stands in the text, for a setter that wants one, and puts back what stood
// there. Spares a copy of every field.
class TokenInPlace {
public:
    TokenInPlace(std::string& text, size_t begin, size_t end)
        : begin_(text.data() + begin), end_(text.data() + end), saved_(*end_) {
        *end_ = '\0';
    }
    ~TokenInPlace() { *end_ = saved_; }
    TokenInPlace(const TokenInPlace&) = delete;
    TokenInPlace& operator=(const TokenInPlace&) = delete;

    bool empty() const { return begin_ == end_; }
    const char* get() const { return begin_; }
    const char* getOrNull() const { return empty() ? nullptr : begin_; }

private:
    char* begin_;
    char* end_;
    char saved_;
};

}  // namespace

bool JmsInAdapter::matchesStream(const char* name) { return std::strcmp(name, callGetStreamName()) == 0; }

bool JmsInAdapter::parseCsvMessage(std::string& text, bool allFields) {
    trace(keys::kParseCsv);
    // The field that a token goes to: -2 is the stream name, -1 the opcode.
    constexpr int kStreamName = -2;
    constexpr int kOpcode = -1;
    int field = allFields || !expectStreamNameOpcode_ ? 0 : kStreamName;
    size_t begin = 0;
    for (;;) {
        const size_t found = delimiter_.empty() ? std::string::npos : text.find(delimiter_, begin);
        const bool isLast = found == std::string::npos;
        const char* fault = nullptr;
        {
            const TokenInPlace token(text, begin, isLast ? text.size() : found);
            if (field == kStreamName) {
                if (token.empty()) {
                    fault = keys::kNoStreamName;
                } else if (!matchesStream(token.get())) {
                    return false;
                }
            } else if (field == kOpcode) {
                if (token.empty()) {
                    fault = keys::kNoStreamOp;
                } else {
                    setOp(row_, *token.get());
                }
            } else {
                setFieldAsStringWithIndex(row_, field, token.getOrNull());
            }
        }
        if (fault != nullptr) return refuse(fault, text);
        ++field;
        if (isLast) break;
        begin = found + delimiter_.size();
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

bool JmsInAdapter::parseXmlMessage(std::string& text, std::vector<std::string>* names) {
    trace(keys::kParseXml);
    const std::string_view whole = text;
    const auto textOf = [](std::string_view from, size_t begin, size_t end) {
        return std::string(from.substr(begin, end - begin));
    };
    const auto element = elementPattern_->match(whole);
    if (!element) return refuse(keys::kParseXmlFailed);
    if (matchStreamName_ && !matchesStream(textOf(whole, element->nameBegin, element->nameEnd).c_str()))
        return false;

    size_t position = element->valueBegin;
    while (position < element->valueEnd) {
        const std::string_view rest = whole.substr(position);
        const auto attribute = attributePattern_->match(rest);
        if (!attribute) {
            char offset[25];
            MORVEX::Kel::intl_snprintf(offset, sizeof offset, "%d", static_cast<int>(position));
            return refuse(keys::kParseXmlBadAttribute, offset);
        }
        const std::string name = textOf(rest, attribute->nameBegin, attribute->nameEnd);
        const std::string value = textOf(rest, attribute->valueBegin, attribute->valueEnd);
        setFieldAsStringWithKey(row_, name.c_str(), value.c_str());
        if (names != nullptr && name != kOpcodeAttribute) names->push_back(name);
        position += attribute->end;
    }
    return true;
}
