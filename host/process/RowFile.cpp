#include "host/process/RowFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <system_error>

#include "host/process/Console.h"
#include "host/process/Failure.h"

namespace host {

namespace {

constexpr off_t kChunk = 1 << 16;

bool isBeginOfRow(std::string_view text, const RowShape& shape) {
    return std::any_of(shape.beginnings.begin(), shape.beginnings.end(), [text](std::string_view one) {
        return text.starts_with(one) || one.starts_with(text);
    });
}

class Reader {
public:
    // The descriptor itself may be for writing alone.
    Reader(int descriptor, std::string name)
        : name_(std::move(name)),
          file_(::open(("/proc/self/fd/" + std::to_string(descriptor)).c_str(), O_RDONLY | O_CLOEXEC)) {
        if (file_ < 0 || ::fstat(file_, &status_) != 0) fail();
    }
    ~Reader() { ::close(file_); }
    Reader(const Reader&) = delete;
    Reader& operator=(const Reader&) = delete;

    off_t size() const { return status_.st_size; }

    // A chunk, or what there is of it.
    std::string_view read(off_t begin, off_t end) {
        buffer_.resize(static_cast<size_t>(std::min(end - begin, kChunk)));
        const ssize_t count = ::pread(file_, buffer_.data(), buffer_.size(), begin);
        if (count < 0) fail();
        return std::string_view(buffer_).substr(0, static_cast<size_t>(count));
    }

private:
    [[noreturn]] void fail() const {
        throw Failure("The end of " + name_ + " cannot be read: " + std::generic_category().message(errno) +
                      "; rows are appended only behind a whole one.");
    }

    const std::string name_;
    const int file_;
    struct stat status_ {};
    std::string buffer_;
};

off_t endOfLines(Reader& file) {
    for (off_t end = file.size(); end > 0;) {
        const off_t begin = std::max<off_t>(0, end - kChunk);
        const size_t found = file.read(begin, end).rfind('\n');
        if (found != std::string_view::npos) return begin + static_cast<off_t>(found) + 1;
        end = begin;
    }
    return 0;
}

// A line feed within quotes ends no record, and whether there are quotes is known from the file's begin only.
class CsvEnd {
public:
    void add(std::string_view text) {
        for (const char c : text) {
            ++read_;
            if (state_ == kQuoted) {
                if (c == '"') state_ = kAfterQuote;
            } else if (c == '"' && state_ != kPlain) {
                state_ = kQuoted;  // again, where it is a quote that stands twice
            } else {
                state_ = c == ',' || c == '\n' ? kFieldBegin : kPlain;
                if (c == '\n') end_ = read_;
            }
        }
    }
    off_t end() const { return end_; }

private:
    enum State { kFieldBegin, kPlain, kQuoted, kAfterQuote } state_ = kFieldBegin;
    off_t read_ = 0;
    off_t end_ = 0;
};

off_t endOfCsv(Reader& file) {
    CsvEnd records;
    for (off_t at = 0; at < file.size();) {
        const std::string_view text = file.read(at, file.size());
        if (text.empty()) break;
        records.add(text);
        at += static_cast<off_t>(text.size());
    }
    return records.end();
}

}  // namespace

void cutTornRow(int descriptor, const std::string& name, const RowShape& shape) {
    Reader file(descriptor, name);
    const off_t whole = shape.lineFeeds == LineFeeds::kInQuotesToo ? endOfCsv(file) : endOfLines(file);
    if (whole == file.size()) return;
    if (!isBeginOfRow(file.read(whole, file.size()), shape))
        throw Failure("The file " + name + " ends in the middle of a line that is no row in the form " +
                      shape.form + "; end that line, or name another file.");
    if (::ftruncate(descriptor, whole) != 0)
        throw Failure("The torn row at the end of " + name + " cannot be cut off: " +
                      std::generic_category().message(errno) + "; cut it off, or name another file.");
    say("The last " + std::to_string(file.size() - whole) + " bytes of " + name +
        " were a row that was not written whole and are cut off; its message comes again.");
}

}  // namespace host
