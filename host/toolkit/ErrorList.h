// An adapter's connection errors: the last thousand texts, each also given to the error sink as it is added.
#pragma once

#include <deque>
#include <mutex>
#include <string>

namespace host {

class ErrorList {
public:
    static constexpr size_t kMostTexts = 1000;

    void add(const char* text);
    void clear();
    int count() const;
    std::string all() const;  // in order, one a line

private:
    mutable std::mutex lock_;  // an adapter's stop may add from another thread
    std::deque<std::string> texts_;
};

}  // namespace host
