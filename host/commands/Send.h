// kel-adapter-host send: puts messages on the configured destination.
#pragma once

#include <cstdint>
#include <string>

#include "host/connection/Session.h"

namespace host {

struct SendOptions {
    SessionOptions session;
    std::string file = "-";   // "-": standard input
    std::int64_t repeat = 1;  // how often the file is sent
    bool whole = false;       // the file is one message, else each line is one
    std::string soh;          // the character that stands for FIX' separator in the file; empty: none does
};

// The exit code. Throws Failure.
int sendMessages(const SendOptions& options);

}  // namespace host
