#include "host/values/ModifiedUtf8.h"

#include <algorithm>
#include <cstdint>

namespace host {

namespace {

constexpr std::uint32_t kReplacement = 0xFFFD;
constexpr std::uint32_t kFirstHigh = 0xD800;
constexpr std::uint32_t kFirstLow = 0xDC00;
constexpr std::uint32_t kAfterLow = 0xE000;
constexpr std::uint32_t kFirstSupplementary = 0x10000;
constexpr std::uint32_t kLast = 0x10FFFF;

bool isHigh(std::uint32_t code) { return code >= kFirstHigh && code < kFirstLow; }
bool isLow(std::uint32_t code) { return code >= kFirstLow && code < kAfterLow; }

void append(std::uint32_t code, std::string& out) {
    if (code < 0x80) {
        out += static_cast<char>(code);
        return;
    }
    const int following = code < 0x800 ? 1 : code < kFirstSupplementary ? 2 : 3;
    constexpr unsigned kLeads[] = {0, 0xC0, 0xE0, 0xF0};
    out += static_cast<char>(kLeads[following] | code >> 6 * following);
    for (int i = following - 1; i >= 0; --i) out += static_cast<char>(0x80 | (code >> 6 * i & 0x3F));
}

struct Decoded {
    std::uint32_t code;
    size_t length;  // 0: the bytes are no character
};

// One character of the general scheme: shortest form not required, surrogates included.
Decoded decode(std::string_view text) {
    const auto byte = [&](size_t i) { return static_cast<unsigned char>(text[i]); };
    const unsigned lead = byte(0);
    if (lead < 0x80) return {lead, 1};
    const size_t length = lead >= 0xC0 && lead < 0xE0   ? 2
                          : lead >= 0xE0 && lead < 0xF0 ? 3
                          : lead >= 0xF0 && lead < 0xF8 ? 4
                                                        : 0;
    if (length == 0 || text.size() < length) return {0, 0};
    std::uint32_t code = lead & (0x7FU >> length);
    for (size_t i = 1; i < length; ++i) {
        if ((byte(i) & 0xC0) != 0x80) return {0, 0};
        code = code << 6 | (byte(i) & 0x3F);
    }
    return {code, length};
}

bool isShortest(const Decoded& decoded) {
    constexpr std::uint32_t kLowest[] = {0, 0, 0x80, 0x800, kFirstSupplementary};
    return decoded.code >= kLowest[decoded.length];
}

bool isPlain(std::string_view text) {
    return std::all_of(text.begin(), text.end(), [](char c) { return static_cast<signed char>(c) > 0; });
}

}  // namespace

bool appendModifiedUtf8(std::string_view utf8, std::string& out, size_t* position) {
    if (isPlain(utf8)) {
        out += utf8;
        return true;
    }
    const size_t before = out.size();
    for (size_t at = 0; at < utf8.size();) {
        const Decoded decoded = decode(utf8.substr(at));
        const bool valid = decoded.length != 0 && isShortest(decoded) && decoded.code <= kLast &&
                           !isHigh(decoded.code) && !isLow(decoded.code);
        if (!valid) {
            out.resize(before);
            if (position != nullptr) *position = at;
            return false;
        }
        if (decoded.code == 0) {
            out += "\xC0\x80";
        } else if (decoded.code < kFirstSupplementary) {
            out += utf8.substr(at, decoded.length);
        } else {
            const std::uint32_t rest = decoded.code - kFirstSupplementary;
            append(kFirstHigh + (rest >> 10), out);
            append(kFirstLow + (rest & 0x3FF), out);
        }
        at += decoded.length;
    }
    return true;
}

void appendUtf8(std::string_view modified, std::string& out) {
    if (isPlain(modified)) {
        out += modified;
        return;
    }
    for (size_t at = 0; at < modified.size();) {
        const std::string_view rest = modified.substr(at);
        const Decoded decoded = decode(rest);
        const bool isNull = rest.starts_with("\xC0\x80");
        if (decoded.length == 0 || decoded.length == 4 || (!isShortest(decoded) && !isNull) ||
            rest.front() == '\0') {
            append(kReplacement, out);
            ++at;
            continue;
        }
        at += decoded.length;
        if (!isHigh(decoded.code) && !isLow(decoded.code)) {
            append(decoded.code, out);
            continue;
        }
        const Decoded second =
            isHigh(decoded.code) && at < modified.size() ? decode(modified.substr(at)) : Decoded{0, 0};
        if (second.length == 3 && isLow(second.code)) {
            append(kFirstSupplementary + ((decoded.code - kFirstHigh) << 10) + (second.code - kFirstLow),
                   out);
            at += second.length;
        } else {
            append(kReplacement, out);
        }
    }
}

}  // namespace host
