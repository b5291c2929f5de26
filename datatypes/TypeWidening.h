// The type that a column takes when values of two types must share it.
//
// Both operations rewrite `target` and only read `other`; they depend on the legacy money precision
// (Settings.h).
#pragma once

namespace DataTypes {

// Widens by the lenient rule, which never fails: the wider type wins, up to string and binary, which hold
// anything. Money kinds go to the one with fewer places. Types that do not combine leave the target as it is.
void maximizeAnyType(unsigned int& target, const unsigned int& other);

// Widens by the strict rule: false, with `target` untouched, when the two types cannot share a column: string
// or binary with any other type; a money kind with anything but itself, boolean, float, a decimal and, up to
// 9 places, integer; int16 as the target with boolean; the reserved kind with anything. The untyped kind
// gives way.
bool maximizeType(unsigned int& target, const unsigned int& other);

}  // namespace DataTypes
