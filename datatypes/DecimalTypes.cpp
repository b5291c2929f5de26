// Fixed decimals at the level of type codes.
#include <algorithm>

#include "datatypes/DecimalShape.h"
#include "datatypes/FixedDecimal.h"
#include "datatypes/TypeCodes.h"

namespace DataTypes {
namespace {

bool take(unsigned int& result, int precision, int scale) {
    if (precision > kMaxDecimalPrecision) return false;
    result = createFixedDecimal(precision, scale);
    return true;
}

}  // namespace

bool getFixedDecimalAdditionResultType(unsigned int& result, const unsigned int& a, const unsigned int& b) {
    const int scale = std::max(scaleOf(a), scaleOf(b));
    const int integerDigits = std::max(precisionOf(a) - scaleOf(a), precisionOf(b) - scaleOf(b));
    return take(result, integerDigits + scale + 1, scale);
}

bool getFixedDecimalSubtractionResultType(unsigned int& result, const unsigned int& a,
                                          const unsigned int& b) {
    return getFixedDecimalAdditionResultType(result, a, b);
}

bool getFixedDecimalMultiplicationResultType(unsigned int& result, const unsigned int& a,
                                             const unsigned int& b) {
    return take(result, precisionOf(a) + precisionOf(b) + 1, scaleOf(a) + scaleOf(b));
}

bool getFixedDecimalDivisionResultType(unsigned int& result, const unsigned int& a, const unsigned int& b) {
    return take(result, precisionOf(a) + precisionOf(b) + scaleOf(b) + 1, precisionOf(b) + scaleOf(a) + 1);
}

void maximizeTypeToFixedDecimal(unsigned int& code) {
    const internal::DecimalShape shape = internal::decimalShapeOf(code);
    code = kindOf(code) >= kDecimal ? kDecimal : createFixedDecimal(shape.digits, shape.scale);
}

}  // namespace DataTypes
