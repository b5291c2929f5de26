// Conversion to and from the decimal128 interchange format.
#include "datatypes/Coefficient.h"
#include "datatypes/FixedDecimal.h"

namespace DataTypes {
namespace {

constexpr uint64_t kSignBit = uint64_t{1} << 63;
constexpr int kExponentShift = 49;
constexpr int kExponentBias = 6176;
constexpr int kExponents = 3 << 12;  // larger ones, with both top bits set, mean another encoding
constexpr uint64_t kMagnitudeMask = (uint64_t{1} << kExponentShift) - 1;

}  // namespace

bool toBID128(uint64_t high, uint64_t low, int scale, BID_UINT128& out) {
    const internal::Coefficient coefficient(high, low);
    const uint64_t magnitudeHigh = internal::highOf(coefficient.magnitude);
    if (magnitudeHigh > kMagnitudeMask) return false;
    if (scale > kExponentBias || scale <= kExponentBias - kExponents) return false;
    const uint64_t exponent = static_cast<uint64_t>(kExponentBias - scale);
    out.high = (coefficient.negative ? kSignBit : 0) | exponent << kExponentShift | magnitudeHigh;
    out.low = internal::lowOf(coefficient.magnitude);
    return true;
}

bool fromBID128(uint64_t& high, uint64_t& low, const BID_UINT128& in) {
    internal::Coefficient coefficient(in.high & kMagnitudeMask, in.low);
    coefficient.negative = (in.high & kSignBit) != 0;
    coefficient.store(high, low);
    return true;
}

}  // namespace DataTypes
