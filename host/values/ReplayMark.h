// What a kept message that is sent again carries, so that it is applied once however often it is sent.
#pragma once

#include <charconv>
#include <cstdint>
#include <string>
#include <string_view>

namespace host {

inline constexpr std::int64_t kNoReplay = 0;

// Of which kept message one is a copy.
struct Replayed {
    std::int64_t id = kNoReplay;
    std::string messageId;  // the kept message's own: a database that was made anew counts from 1 again
};

// The source is who keeps it: a topic's message also reaches others, whose kept messages have numbers too.
inline std::string replayMark(std::int64_t id, std::string_view source, std::string_view messageId) {
    return std::to_string(id).append("@").append(source).append("@").append(messageId);
}

// Its number is kNoReplay where the mark is none, or of another source.
inline Replayed replayedOf(std::string_view mark, std::string_view source) {
    Replayed found;
    const char* const last = mark.data() + mark.size();
    const auto [end, error] = std::from_chars(mark.data(), last, found.id);
    std::string_view rest(end, static_cast<size_t>(last - end));
    const std::string keeper = std::string("@").append(source).append("@");
    if (error != std::errc() || !rest.starts_with(keeper)) return {};
    found.messageId = rest.substr(keeper.size());
    return found;
}

}  // namespace host
