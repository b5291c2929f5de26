// An adapter's connection errors: the last thousand texts, fewer where they are long, because an error may
// hold a whole message. Each is also given to the error sink as it is added.
#pragma once

#include <deque>
#include <mutex>
#include <string>

namespace host {

struct RowFault;

class ErrorList {
public:
    static constexpr size_t kMostTexts = 1000;
    static constexpr size_t kMostBytes = 16 << 20;  // of all texts together; the last one always stays

    void add(const char* text, const RowFault* fault = nullptr);
    void clear();
    int count() const;
    std::string all() const;  // in order, one a line

private:
    mutable std::mutex lock_;  // an adapter's stop may add from another thread
    std::deque<std::string> texts_;
    size_t bytes_ = 0;
};

}  // namespace host
