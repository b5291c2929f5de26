// The platform's portability helpers.
#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "toolkit/kel_intl.h"

namespace MORVEX::Kel {

int intl_getenv(const char* name, char* buffer, size_t size) {
    const char* value = std::getenv(name);
    if (value == nullptr) return -1;
    return static_cast<int>(intl_strlcpy(buffer, value, size));
}

size_t intl_strlcpy(char* to, const char* from, size_t size) {
    const size_t length = std::strlen(from);
    if (size > 0) {
        const size_t copied = std::min(length, size - 1);
        std::memcpy(to, from, copied);
        to[copied] = '\0';
    }
    return length;
}

int intl_snprintf(char* to, size_t size, const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    const int length = std::vsnprintf(to, size, format, arguments);
    va_end(arguments);
    return length;
}

}  // namespace MORVEX::Kel
