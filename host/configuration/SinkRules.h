// What a sink must keep to beyond the form of its section.
#pragma once

#include "host/configuration/Rules.h"

namespace host {

// Adds the problems and notes of a configuration that has a sink.
void checkSink(const Settings& settings, CheckResult& result);

}  // namespace host
