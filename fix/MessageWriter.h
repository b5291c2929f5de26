// A message that grows in its receiver's string to both sides: in front of the body stands its length.
#pragma once

#include <algorithm>
#include <cstddef>
#include <string>
#include <string_view>

namespace fix {

// The string is the message, no more and no less, once the writer is gone.
class MessageWriter {
public:
    // `front`: characters to keep free for all that will be prepended.
    MessageWriter(std::string& text, size_t front, char separator)
        : text_(text), begin_(front), end_(front), separator_(separator) {
        text_.resize(std::max(text_.capacity(), front));
    }
    ~MessageWriter() {
        text_.resize(end_);
        text_.erase(0, begin_);
    }
    MessageWriter(const MessageWriter&) = delete;
    MessageWriter& operator=(const MessageWriter&) = delete;

    std::string_view message() const { return {text_.data() + begin_, end_ - begin_}; }

    void append(std::string_view tag, std::string_view value) {
        const size_t end = end_ + lengthOf(tag, value);
        if (end > text_.size()) text_.resize(2 * end);
        write(end_, tag, value);
        end_ = end;
    }

    void prepend(std::string_view tag, std::string_view value) {
        begin_ -= lengthOf(tag, value);
        write(begin_, tag, value);
    }

    // The characters that a field takes.
    static size_t lengthOf(std::string_view tag, std::string_view value) {
        return tag.size() + 1 + value.size() + 1;
    }

private:
    void write(size_t at, std::string_view tag, std::string_view value) {
        char* to = text_.data() + at;
        for (const char c : tag) *to++ = c;  // two or three: less than a call of memcpy costs
        *to++ = '=';
        to = std::copy(value.begin(), value.end(), to);
        *to = separator_;
    }

    std::string& text_;
    size_t begin_;
    size_t end_;
    const char separator_;
};

}  // namespace fix
