// The sentence that an action fails with.
#pragma once

#include <string>

#include "host/process/Failure.h"

// "none" when it does not fail.
template <typename Action>
std::string failureOf(Action action) {
    try {
        action();
    } catch (const host::Failure& failure) {
        return failure.what();
    }
    return "none";
}
