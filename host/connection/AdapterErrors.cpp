#include "host/connection/AdapterErrors.h"

#include "host/process/Console.h"

namespace host {

namespace {

thread_local HeardErrors* listening = nullptr;

}  // namespace

HeardErrors::HeardErrors() { listening = this; }
HeardErrors::~HeardErrors() {
    listening = nullptr;
    for (const AdapterError& error : errors) tellError(error.text.c_str());
}
void tellError(const char* text) { sayModified("error: ", text); }

HeardErrors* HeardErrors::ofThisThread() { return listening; }

}  // namespace host
