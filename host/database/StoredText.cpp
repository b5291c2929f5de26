#include "host/database/StoredText.h"

#include <rapidjson/document.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include <algorithm>

#include "host/process/SafeText.h"
#include "host/values/ModifiedUtf8.h"

namespace host {

namespace {

constexpr char kReplacement[] = "\xEF\xBF\xBD";

int nibble(char digit) { return digit <= '9' ? digit - '0' : (digit | 0x20) - 'a' + 10; }

struct Member {
    const char* name;
    std::string EnvelopeField::*text;
};
constexpr Member kMembers[] = {
    {"name", &EnvelopeField::name}, {"type", &EnvelopeField::type}, {"value", &EnvelopeField::value}};

std::string validUtf8(std::string_view text) {
    std::string valid, ignored;
    for (size_t bad = 0; !appendModifiedUtf8(text, ignored, &bad); text.remove_prefix(bad + 1))
        valid.append(text.substr(0, bad)).append(kReplacement);
    return valid.append(text);
}

void read(const rapidjson::Value& object, EnvelopeField& field) {
    for (const auto& one : object.GetObject()) {
        const auto* member = std::find_if(
            std::begin(kMembers), std::end(kMembers),
            [&one](const Member& known) { return std::string_view(one.name.GetString()) == known.name; });
        if (member != std::end(kMembers) && one.value.IsString())
            (field.*member->text).assign(one.value.GetString(), one.value.GetStringLength());
    }
}

}  // namespace

void appendHexBytes(std::string_view digits, std::string& out) {
    for (size_t i = 0; i + 1 < digits.size(); i += 2)
        out += static_cast<char>(nibble(digits[i]) << 4 | nibble(digits[i + 1]));
}

std::vector<std::string> linesOf(const std::string& text) {
    std::vector<std::string> all;
    for (size_t begin = 0; begin < text.size();) {
        const size_t end = std::min(text.find('\n', begin), text.size());
        all.push_back(text.substr(begin, end - begin));
        begin = end + 1;
    }
    return all;
}

std::string storedLine(std::string_view text) {
    const auto isPlain = [](char c) { return c >= ' ' && c < '\x7F'; };
    if (std::all_of(text.begin(), text.end(), isPlain)) return std::string(text);
    return oneLine(validUtf8(text));
}

std::string envelopeText(const std::vector<EnvelopeField>& fields) {
    rapidjson::StringBuffer buffer;
    rapidjson::Writer<rapidjson::StringBuffer> writer(buffer);
    writer.StartArray();
    for (const EnvelopeField& field : fields) {
        writer.StartObject();
        for (const Member& member : kMembers) {
            const std::string valid = validUtf8(field.*member.text);
            writer.Key(member.name);
            writer.String(valid.data(), static_cast<rapidjson::SizeType>(valid.size()));
        }
        writer.EndObject();
    }
    writer.EndArray();
    return {buffer.GetString(), buffer.GetSize()};
}

std::vector<EnvelopeField> envelopeFields(const std::string& text) {
    std::vector<EnvelopeField> fields;
    rapidjson::Document document;
    document.Parse(text.data(), text.size());
    if (!document.IsArray()) return fields;
    for (const auto& one : document.GetArray()) {
        EnvelopeField& field = fields.emplace_back();
        if (one.IsObject()) read(one, field);
        if (field.name.empty()) fields.pop_back();
    }
    return fields;
}

}  // namespace host
