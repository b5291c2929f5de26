#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <algorithm>

#include "host/process/Console.h"
#include "host/process/Failure.h"
#include "host/process/Output.h"
#include "host/rows/Batch.h"
#include "host/rows/KeptRejects.h"
#include "host/rows/RejectFile.h"
#include "host/values/ReplayMark.h"

namespace host {

namespace {

// Keeps two replays of one file apart: each would make rows of what the other makes rows of.
class ReplayLock {
public:
    explicit ReplayLock(const std::string& file) : descriptor_(::open(file.c_str(), O_RDONLY | O_CLOEXEC)) {
        if (descriptor_ >= 0 && ::flock(descriptor_, LOCK_EX | LOCK_NB) != 0) {
            ::close(descriptor_);
            throw Failure("Another process is replaying " + file + "; try again when it has ended.");
        }
    }
    ~ReplayLock() {
        if (descriptor_ >= 0) ::close(descriptor_);
    }
    ReplayLock(const ReplayLock&) = delete;
    ReplayLock& operator=(const ReplayLock&) = delete;

private:
    const int descriptor_;
};

class FileRejects : public KeptRejects, private RowSink {
public:
    FileRejects(const std::string& file, std::unique_ptr<RowSink> rows, bool replays)
        : file_(file),
          lock_(replays ? std::make_unique<ReplayLock>(file) : nullptr),
          all_(readRejectFile(file)),
          rows_(std::move(rows)) {}

    std::vector<KeptReject> list(bool all) override {
        std::vector<KeptReject> found;
        for (const KeptReject& one : all_) {
            if (all || one.replayedAt.empty()) found.push_back(one);
        }
        return found;
    }
    std::optional<KeptReject> load(std::int64_t id) override {
        const auto found =
            std::find_if(all_.begin(), all_.end(), [id](const KeptReject& one) { return one.id == id; });
        return found != all_.end() ? std::optional(*found) : std::nullopt;
    }
    std::string markOf(std::int64_t id) const override { return replayMark(id, {}); }
    RowSink& replaySink() override { return *this; }
    void wasSent(std::int64_t id) override { append(replayedLine(id)); }
    void stop() override {
        if (rows_) rows_->stop();
    }

private:
    Kept keep(Batch& batch) override {
        const std::vector<std::string> marks = batch.envelopes->replayOf();
        const Kept kept = rows_->keep(batch);
        std::string lines;
        for (size_t i = 0; i < batch.messages.size() && i < marks.size(); ++i) {
            const BatchMessage& message = batch.messages[i];
            const std::int64_t id = replayedId(marks[i], {});
            if (message.row) lines += replayedLine(id);
            if (message.reject) say("Reject " + std::to_string(id) + " stays: " + message.reject->text);
        }
        if (!lines.empty()) append(lines);
        return kept;
    }

    void append(const std::string& lines) {
        if (!output_) output_.emplace(file_, &kRejectShape);
        output_->write(lines);
    }

    const std::string file_;
    const std::unique_ptr<ReplayLock> lock_;
    const std::vector<KeptReject> all_;
    const std::unique_ptr<RowSink> rows_;
    std::optional<Output> output_;
};

}  // namespace

std::unique_ptr<KeptRejects> fileRejects(const std::string& file, std::unique_ptr<RowSink> rows,
                                         bool replays) {
    return std::make_unique<FileRejects>(file, std::move(rows), replays);
}

}  // namespace host
