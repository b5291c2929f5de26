#include "datatypes/TypeWidening.h"

#include <algorithm>
#include <initializer_list>

#include "datatypes/DecimalShape.h"
#include "datatypes/Settings.h"
#include "datatypes/TypeCodes.h"

namespace DataTypes {
namespace {

constexpr int kLongDigits = 19;  // of a 64-bit number

struct WholeDigits {
    unsigned int kind;
    int digits;
};

// Int16 is not among them: it adds nothing to a decimal.
constexpr WholeDigits kWholeDigits[] = {
    {kInteger, 10},           {kLong, kLongDigits},        {kDate, kLongDigits}, {kTimestamp, kLongDigits},
    {kInterval, kLongDigits}, {kBigdatetime, kLongDigits}, {kTime, kLongDigits}, {kBoolean, 1},
};

}  // namespace

namespace internal {

int moneyPlaces(unsigned int kind) {
    return kind == kMoney ? static_cast<int>(g_legacyMoneyPrecision) : numberedMoneyPlaces(kind);
}

DecimalShape decimalShapeOf(const unsigned int& code) {
    const unsigned int kind = kindOf(code);
    if (kind == kDecimal) return {precisionOf(code), scaleOf(code)};
    if (kind == kMoney || isNumberedMoney(kind)) return {kLongDigits, moneyPlaces(kind)};
    for (const WholeDigits& row : kWholeDigits) {
        if (row.kind == kind) return {row.digits, 0};
    }
    return {0, 0};
}

}  // namespace internal

namespace {

// An integer takes 10 of the 19 digits of a money value's 64-bit count.
constexpr int kMostPlacesForInteger = 9;

bool either(unsigned int kind, const unsigned int& target, const unsigned int& other) {
    return kindOf(target) == kind || kindOf(other) == kind;
}

// Sets the target to the first kind that one of the two has; false when there is none.
bool takeFirst(std::initializer_list<unsigned int> kinds, unsigned int& target, const unsigned int& other) {
    for (const unsigned int kind : kinds) {
        if (!either(kind, target, other)) continue;
        target = kind;
        return true;
    }
    return false;
}

// The decimal with the more integer digits and the more places of the two; places give way at 34 digits.
unsigned int mergedDecimal(const unsigned int& a, const unsigned int& b) {
    const internal::DecimalShape first = internal::decimalShapeOf(a);
    const internal::DecimalShape second = internal::decimalShapeOf(b);
    const int integerDigits = std::max(first.digits - first.scale, second.digits - second.scale);
    const int scale = std::max(first.scale, second.scale);
    if (integerDigits + scale > kMaxDecimalPrecision) {
        return createFixedDecimal(kMaxDecimalPrecision, kMaxDecimalPrecision - integerDigits);
    }
    return createFixedDecimal(integerDigits + scale, scale);
}

// Money with money keeps the fewer places, so that no value grows out of 64 bits; the narrowing is wanted.
bool mergeMoney(unsigned int& target, const unsigned int& other) {
    const unsigned int targetKind = kindOf(target);
    const unsigned int otherKind = kindOf(other);
    const int legacyPlaces = internal::moneyPlaces(kMoney);
    if (targetKind == kMoney && isNumberedMoney(otherKind)) {
        if (legacyPlaces >= numberedMoneyPlaces(otherKind)) target = other;
        return true;
    }
    if (isNumberedMoney(targetKind) && otherKind == kMoney) {
        if (numberedMoneyPlaces(targetKind) > legacyPlaces) target = kMoney;
        return true;
    }
    if (takeFirst({kMoney}, target, other)) return true;
    for (unsigned int kind = kMoney1; kind <= kMoney15; ++kind) {
        if (takeFirst({kind}, target, other)) return true;
    }
    return false;
}

bool holdsBesideMoney(unsigned int kind, int places) {
    return kind == kBoolean || (kind == kInteger && places <= kMostPlacesForInteger);
}

bool isMoney(unsigned int kind) { return kind == kMoney || isNumberedMoney(kind); }

// A money kind strictly combines with boolean and, when its places leave room, with integer. Plain money is
// looked at before the numbered kinds.
bool maximizeMoney(unsigned int& target, const unsigned int& other) {
    const unsigned int targetKind = kindOf(target);
    const unsigned int otherKind = kindOf(other);
    if (isMoney(targetKind)) return holdsBesideMoney(otherKind, internal::moneyPlaces(targetKind));
    if (!holdsBesideMoney(targetKind, internal::moneyPlaces(otherKind))) return false;
    target = other;
    return true;
}

}  // namespace

void maximizeAnyType(unsigned int& target, const unsigned int& other) {  // strongest first
    if (takeFirst({kBinary, kString, kFloat}, target, other)) return;
    if (either(kDecimal, target, other)) {
        target = mergedDecimal(target, other);
        return;
    }
    if (takeFirst({kBigdatetime, kTimestamp, kDate, kTime, kInterval, kLong}, target, other)) return;
    if (mergeMoney(target, other)) return;
    takeFirst({kInteger, kInt16, kBoolean, kUntyped}, target, other);
}

bool maximizeType(unsigned int& target, const unsigned int& other) {
    if (either(kReserved, target, other)) return false;
    if (kindOf(other) == kUntyped) return true;
    if (kindOf(target) == kUntyped) {
        target = other;
        return true;
    }
    if (either(kString, target, other) || either(kBinary, target, other)) return target == other;
    if (takeFirst({kFloat}, target, other)) return true;
    if (either(kDecimal, target, other)) {
        target = mergedDecimal(target, other);
        return true;
    }
    if (target == other) return true;
    if (isMoney(kindOf(target)) || isMoney(kindOf(other))) return maximizeMoney(target, other);
    if (takeFirst({kBigdatetime, kTimestamp, kDate, kTime, kInterval, kLong, kInteger}, target, other))
        return true;
    return kindOf(target) == kBoolean;  // with int16; the other way round is refused on purpose
}

}  // namespace DataTypes
