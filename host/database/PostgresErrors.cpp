#include "host/database/PostgresErrors.h"

#include <algorithm>
#include <iterator>
#include <string_view>

#include "host/values/Text.h"

namespace host {

namespace {

// A code, or how a class of codes begins, and what is said in place of the server's text; null: that.
struct Passing {
    const char* code;
    const char* reason;
};
constexpr Passing kPassing[] = {
    {"08", nullptr},  // the connection
    {"25006", "it takes no changes now"},
    {"25P03", "it ended a transaction that stood still"},
    {"40001", nullptr},  // serialization
    {"40P01", nullptr},  // deadlock
    {"53100", "its disk is full"},
    {"53", nullptr},  // resources
    {"55P03", "a lock is held by somebody else"},
    {"57014", "a statement took too long"},
    {"57P01", nullptr},
    {"57P02", nullptr},
    {"57P03", nullptr},
    {"57P05", nullptr},
    {"58", nullptr},  // input and output
};

// Values, constraints, keys too long for an index, views with a check, and what triggers and their functions
// raise.
constexpr const char* kOfRow[] = {"21", "22", "23", "27", "38", "39", "44", "45", "54", "P0"};

}  // namespace

bool isPassing(const std::string& code) {
    return std::any_of(std::begin(kPassing), std::end(kPassing),
                       [&code](const Passing& one) { return code.starts_with(one.code); });
}

bool isOfRow(const std::string& code) {
    return std::any_of(std::begin(kOfRow), std::end(kOfRow),
                       [&code](const char* one) { return code.starts_with(one); });
}

std::string reasonOf(const std::string& code, const std::string& text) {
    const auto* found = std::find_if(std::begin(kPassing), std::end(kPassing),
                                     [&code](const Passing& one) { return code.starts_with(one.code); });
    return code.empty() || found == std::end(kPassing) || found->reason == nullptr ? text : found->reason;
}

std::string plainMessage(const char* message) {
    std::string text = message;
    text = text.substr(0, text.find('\n'));
    for (const std::string_view before : {"FATAL:  ", "ERROR:  ", "PANIC:  ", " failed: "}) {
        const size_t at = text.find(before);
        if (at == std::string::npos) continue;
        text.erase(0, at + before.size());
        text.front() = lowerCase(text.front());
        break;
    }
    return text;
}

}  // namespace host
