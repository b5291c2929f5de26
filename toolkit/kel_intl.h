// The server's portability helpers, part of libkel_adapter_util_lib: declarations only.
#pragma once

#include <cstddef>

namespace MORVEX::Kel {

// The length of the variable's value, copied into the buffer; below 1 when it is unset or empty.
int intl_getenv(const char* name, char* buffer, size_t size);

// Copies at most size - 1 characters and always terminates when size > 0; returns the length of `from`.
size_t intl_strlcpy(char* to, const char* from, size_t size);

int intl_snprintf(char* to, size_t size, const char* format, ...) __attribute__((format(printf, 3, 4)));

}  // namespace MORVEX::Kel
