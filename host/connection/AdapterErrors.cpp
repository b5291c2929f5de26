#include "host/connection/AdapterErrors.h"

namespace host {

namespace {

thread_local HeardErrors* listening = nullptr;

}  // namespace

HeardErrors::HeardErrors() { listening = this; }
HeardErrors::~HeardErrors() { listening = nullptr; }
HeardErrors* HeardErrors::ofThisThread() { return listening; }

}  // namespace host
