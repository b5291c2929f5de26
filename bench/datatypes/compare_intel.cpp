// compare_intel [NUMBERS [SEED]]: decimals against Intel's decimal floating-point library: texts of up to 34
// digits, rescaling, the decimal128 encoding and text again.
#include <bid_conf.h>
#include <bid_functions.h>

#include <cstdlib>

#include "datatypes/DataTypes.h"
#include "fuzz/datatypes/Comparison.h"

namespace {

using comparison::Random;
using comparison::Tally;
using Intel = ::BID_UINT128;

constexpr unsigned int kToEven = 0;
constexpr unsigned int kTowardZero = 3;
constexpr int kBias = 6176;

Intel atScale(uint64_t coefficient, int scale) {
    return {{coefficient, static_cast<uint64_t>(kBias - scale) << 49}};
}

std::string show(uint64_t high, uint64_t low) { return std::to_string(high) + ":" + std::to_string(low); }

// Intel's text "+123E-2" as the digits with their point.
std::string pointPlaced(const char* text) {
    const std::string number = text;
    const size_t e = number.find('E');
    std::string digits = number.substr(1, e - 1);
    const int exponent = std::atoi(number.c_str() + e + 1);
    if (exponent < 0) {
        const auto scale = static_cast<size_t>(-exponent);
        if (digits.size() <= scale) digits.insert(0, scale + 1 - digits.size(), '0');
        digits.insert(digits.size() - scale, ".");
    }
    return (number[0] == '-' && digits.find_first_not_of("0.") != std::string::npos ? "-" : "") + digits;
}

struct Comparison {
    Tally parsing{"texts with bid128_from_string"};
    Tally rescaling{"rescaling with bid128_quantize"};
    Tally encoding{"encoding with bid128_from_string"};
    Tally formatting{"text with bid128_to_string"};

    void next(Random& random) {
        const size_t fraction = random.below(35);
        std::string text = (random.oneIn(2) ? "-" : "") + random.digits(34 - fraction) + "0.";
        if (text.size() > 35 - fraction) text.erase(1, text.size() - (35 - fraction));
        for (size_t i = 0; i < fraction; ++i) text += random.of(i % 7 == 0 ? "05" : "0123456789");
        const int scale = static_cast<int>(random.below(fraction + 2));
        DataTypes::FixedDecimalValue value{};
        const bool taken = scale <= 34 && value.setDecimalValue(34, scale, text.c_str());

        unsigned int flags = 0;
        Intel exact = __bid128_from_string(text.data(), kToEven, &flags);
        Intel rounded = __bid128_quantize(exact, atScale(1, scale), kToEven, &flags);
        const bool fits = scale <= 34 && (flags & BID_INVALID_EXCEPTION) == 0;
        DataTypes::BID_UINT128 bid{};
        toBID128(value.high, value.low, scale, bid);
        // A zero has no sign here.
        const uint64_t theirHigh =
            rounded.w[0] == 0 && rounded.w[1] << 15 == 0 ? rounded.w[1] & ~(uint64_t{1} << 63) : rounded.w[1];
        const std::string input = text + " at scale " + std::to_string(scale);
        parsing.compare(input, taken ? show(bid.high, bid.low) : "refused",
                        fits ? show(theirHigh, rounded.w[0]) : "refused");
        if (!taken || !fits) return;
        encoding.compare(input, backAgain(bid), show(value.high, value.low));

        char theirText[64];
        __bid128_to_string(theirText, rounded, &flags);
        char ourText[64];
        DataTypes::DataValue holder;
        holder.decimalValue = value;
        holder.isNull = false;
        convertToString(DataTypes::kDecimal, false, false, holder, ourText, sizeof ourText);
        formatting.compare(input, ourText, pointPlaced(theirText));

        const int target = static_cast<int>(random.below(35));
        flags = 0;
        Intel moved = __bid128_quantize(rounded, atScale(1, target), kTowardZero, &flags);
        const bool theirFits = (flags & BID_INVALID_EXCEPTION) == 0;
        uint64_t high = value.high, low = value.low;
        // Beyond 34 digits only the 128-bit coefficient goes on.
        if (!theirFits) return;
        const bool shifted = DataTypes::decimal_shift(high, low, target - scale);
        DataTypes::fromBID128(value.high, value.low, {moved.w[1], moved.w[0]});
        rescaling.compare(input + " to " + std::to_string(target), shifted ? show(high, low) : "refused",
                          show(value.high, value.low));
    }

    std::string backAgain(const DataTypes::BID_UINT128& bid) {
        uint64_t high = 0, low = 0;
        fromBID128(high, low, bid);
        return show(high, low);
    }

    bool finish() const {
        bool same = true;
        for (const Tally* tally : {&parsing, &rescaling, &encoding, &formatting})
            same = tally->finish() && same;
        return same;
    }
};

}  // namespace

int main(int count, char** arguments) {
    const long numbers = count > 1 ? std::atol(arguments[1]) : 2000000;
    Random random(count > 2 ? std::strtoull(arguments[2], nullptr, 10) : 20240229);
    Comparison comparison;
    for (long i = 0; i < numbers; ++i) comparison.next(random);
    return comparison.finish() ? 0 : 1;
}
