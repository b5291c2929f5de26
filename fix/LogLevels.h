// The log levels of the FIX helper.
#pragma once

namespace fix {

inline constexpr int kTrace = 7;
inline constexpr int kProgress = 6;
inline constexpr int kWarning = 4;
inline constexpr int kError = 3;

}  // namespace fix
