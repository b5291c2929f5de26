// strptime over a text that need not end with a NUL. For the library's own files.
#pragma once

#include <ctime>

namespace DataTypes::internal {

const char* scanDate(const char* text, const char* end, const char* format, tm& result);

}  // namespace DataTypes::internal
