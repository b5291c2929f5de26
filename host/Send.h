// kel-adapter-host send: puts messages on the configured destination.
#pragma once

#include <cstdint>
#include <string>

#include "host/Session.h"

namespace host {

struct SendOptions {
    SessionOptions session;
    std::string file = "-";   // "-": standard input
    std::int64_t repeat = 1;  // how often the file is sent
    bool whole = false;       // the file is one message, else each line is one
    std::string soh;          // the character that stands for FIX' separator in the file; empty: none does
};

// Throws Failure for a broker inside the process that uses it, which no other process sees; `instead` ends
// the sentence.
void refuseInJvmBroker(const Settings& settings, const std::string& instead);

// The exit code. Throws Failure.
int sendMessages(const SendOptions& options);

}  // namespace host
