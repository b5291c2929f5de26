// What a kept message that is sent again carries, so that it is applied once however often it is sent.
#pragma once

#include <charconv>
#include <cstdint>
#include <string>
#include <string_view>

namespace host {

inline constexpr std::int64_t kNoReplay = 0;

// The source is who keeps it: a topic's message also reaches others, whose kept messages have numbers too.
inline std::string replayMark(std::int64_t id, std::string_view source) {
    return std::to_string(id).append("@").append(source);
}

// The number of the kept message; kNoReplay for none, or for one of another source.
inline std::int64_t replayedId(std::string_view mark, std::string_view source) {
    std::int64_t id = kNoReplay;
    const char* const last = mark.data() + mark.size();
    const auto [end, error] = std::from_chars(mark.data(), last, id);
    const std::string_view rest(end, static_cast<size_t>(last - end));
    const bool isOurs = error == std::errc() && rest.starts_with('@') && rest.substr(1) == source;
    return isOurs ? id : kNoReplay;
}

}  // namespace host
