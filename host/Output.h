// Where rows go: a file or standard output, written through at once.
#pragma once

#include <string>

namespace host {

class Output {
public:
    // "" is standard output, which from then on is this object's alone: whatever else this process prints
    // there, such as the JVM, comes out on standard error. A file is appended to, because a run that takes up
    // a durable subscription continues it. Throws Failure.
    explicit Output(const std::string& file);
    ~Output();
    Output(const Output&) = delete;
    Output& operator=(const Output&) = delete;

    // All of it is handed to the system when this returns. Throws Failure.
    void write(const std::string& text);

    bool isAtStart() const;  // nothing stands in the file yet
    bool isTerminal() const;

private:
    std::string name_;
    int descriptor_;
};

}  // namespace host
