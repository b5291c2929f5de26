// What the adapter reports while a message is read.
#pragma once

#include <string>
#include <vector>

namespace host {

// Texts are in modified UTF-8.
struct AdapterError {
    std::string text;
    bool isOfRow = false;  // found while the row was typed, not by the adapter
    std::string column;    // "": no column is to blame
};

// Says it on standard error.
void tellError(const char* text);

// While it lives, errors that are reported on its thread are kept here instead of going to standard error;
// one at a time a thread.
class HeardErrors {
public:
    HeardErrors();
    ~HeardErrors();
    HeardErrors(const HeardErrors&) = delete;
    HeardErrors& operator=(const HeardErrors&) = delete;

    std::vector<AdapterError> errors;
    std::vector<std::string> logged;  // as errors; these go to standard error as well

    static HeardErrors* ofThisThread();  // null: nobody listens
};

}  // namespace host
