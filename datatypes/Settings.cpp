#include "datatypes/Settings.h"

#include <charconv>
#include <cstdlib>
#include <cstring>
#include <system_error>

#include "datatypes/PowersOfTen.h"

namespace DataTypes {

constinit size_t g_legacyMoneyPrecision = 4;
constinit long g_legacyMoneyFactor = 10000;
constinit size_t g_decimalSize = 6;
constinit double g_tolerance = 1e-06;
constinit size_t g_dateSize = 8;
constinit size_t g_timeSize = 8;
constinit const char* g_date_format = kDefaultDateFormat;
constinit const char* g_time_format = kDefaultTimeFormat;
constinit bool g_date_format_allocated = false;

void setLegacyMoneyPrecision(size_t places) {
    if (places >= internal::kPowersOfTen64.size() - 1) return;
    g_legacyMoneyPrecision = places;
    g_legacyMoneyFactor = static_cast<long>(internal::kPowersOfTen64[places]);
}

void setDecimalSize(size_t digits) {
    g_decimalSize = digits;
    // Read from text, so that it is the double nearest to the power.
    char text[32] = "1e-";
    const char* end = std::to_chars(text + 3, text + sizeof text, digits).ptr;
    if (std::from_chars(text, end, g_tolerance).ec != std::errc()) g_tolerance = 0.0;
}

size_t getDecimalSize() { return g_decimalSize; }

void setDateSize(size_t bytes) {
    if (bytes == 4 || bytes == 8) g_dateSize = bytes;
}

void setDateFormat(char* format) {
    char* copy =
        format == nullptr ? nullptr : strdup(format);  // before the release: it may be the present one
    if (copy == nullptr) return;
    if (g_date_format_allocated) free(const_cast<char*>(g_date_format));
    g_date_format = copy;
    g_date_format_allocated = true;
}

}  // namespace DataTypes
