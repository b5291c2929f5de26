// What must hold of the keys of [host] that concern which messages come, and how they are settled.
#pragma once

#include "host/configuration/Rules.h"

namespace host {

// Adds their problems and notes.
void checkSettling(const Settings& settings, CheckResult& result);

}  // namespace host
