// Fixed decimals: types, rescaling, numbers in and out.
#include "datatypes/FixedDecimal.h"

#include <cmath>

#include "tests/datatypes/Support.h"

namespace DataTypes {
namespace {

using support::coefficientOf;
using support::decimal;
using support::powerOfTen;
using support::toText;

const __int128_t kMost = ~(__int128_t{1} << 127);
const __int128_t kLeast = -kMost - 1;
const FixedDecimalValue kBefore = decimal(-77, 9, 1);  // what a refusal must leave

void expectSame(const FixedDecimalValue& a, const FixedDecimalValue& b) {
    EXPECT_TRUE(a.high == b.high && a.low == b.low && a.shape == b.shape)
        << toText(coefficientOf(a)) << "/" << a.shape << " for " << toText(coefficientOf(b)) << "/" << b.shape;
}

// What setting gives: the value, or as before when it refuses.
template <typename Number>
void expectSet(int precision, int scale, Number number, bool taken, const FixedDecimalValue& expected) {
    FixedDecimalValue value = kBefore;
    EXPECT_EQ(value.setDecimalValue(precision, scale, number), taken);
    expectSame(value, taken ? expected : kBefore);
}

TEST(DecimalTypes, ResultsOfOperations) {
    struct Operation {
        bool (*onTypes)(unsigned int&, const unsigned int&, const unsigned int&);
        bool (FixedDecimalValue::*onValues)(const FixedDecimalValue&);
    };
    const Operation operations[] = {{getFixedDecimalAdditionResultType, &FixedDecimalValue::toAdditionResultType},
                                    {getFixedDecimalSubtractionResultType, &FixedDecimalValue::toSubtractionResultType},
                                    {getFixedDecimalMultiplicationResultType, &FixedDecimalValue::toMultiplicationResultType},
                                    {getFixedDecimalDivisionResultType, &FixedDecimalValue::toDivisionResultType}};
    for (const support::Case& row : support::readCases("results.txt")) {
        const unsigned int a = stringToType(row[0]), b = stringToType(row[1]);
        for (size_t i = 0; i < 4; ++i) {
            SCOPED_TRACE(row.where + " operation " + std::to_string(i));
            const std::string& name = row[i + 2];
            const bool allowed = name != "-";
            unsigned int result = 77;
            EXPECT_EQ(operations[i].onTypes(result, a, b), allowed);
            EXPECT_EQ(result, allowed ? stringToType(name) : 77);
            // The same of values, which keep their number.
            FixedDecimalValue value = decimal(-7, precisionOf(a), scaleOf(a)), expected = value;
            if (allowed) expected = decimal(-7 * powerOfTen(scaleOf(result) - scaleOf(a)), precisionOf(result), scaleOf(result));
            EXPECT_EQ((value.*operations[i].onValues)(decimal(9, precisionOf(b), scaleOf(b))), allowed);
            expectSame(value, expected);
        }
    }
    unsigned int code = createFixedDecimal(10, 2);
    maximizeTypeToFixedDecimal(code);
    EXPECT_EQ(code, 30u);
    FixedDecimalValue large = decimal(kMost / 10, 10, 1);
    EXPECT_FALSE(large.toAdditionResultType(decimal(0, 10, 3)));
    expectSame(large, decimal(kMost / 10, 10, 1));
}

TEST(LongDivision, RefusesZeroAndLeavesTheRest) {
    uint64_t words[4] = {1, 2, 3, 4};
    uint16_t number[2] = {5, 6}, quotient[2] = {7, 8};
    const uint16_t zero[2] = {};
    EXPECT_FALSE(longdivmod128(9, 9, 0, 0, words[0], words[1], words[2], words[3]) || longdivmod(number, 2, zero, 2, quotient));
    EXPECT_TRUE(words[0] == 1 && words[3] == 4 && number[0] == 5 && quotient[0] == 7);
    EXPECT_TRUE(longdivmod128(1, 1, 0, 10, words[0], words[1], words[2], words[3]));  // 2^64 + 1
    EXPECT_TRUE(words[0] == 0 && words[1] == 1844674407370955161 && words[2] == 0 && words[3] == 7);
    EXPECT_EQ(divmod1(number, 2, 10), 1);  // 6 * 65536 + 5 = 393221
    EXPECT_EQ(mul1(number, 2, 10), 0);
    EXPECT_TRUE(number[0] == 4 && number[1] == 6);
}

TEST(FixedDecimal, FromWholeNumbers) {
    for (const support::Case& row : support::readCases("wholes.txt")) {
        SCOPED_TRACE(row.where);
        const int precision = row.number(0), scale = row.number(1);
        const long number = std::stol(row[2]);
        const bool taken = row[3] == "fits";
        const FixedDecimalValue expected = taken ? decimal(number * powerOfTen(scale), precision, scale) : kBefore;
        expectSet(precision, scale, number, taken, expected);
        if (number == static_cast<int>(number)) expectSet(precision, scale, static_cast<int>(number), taken, expected);
    }
}

TEST(FixedDecimal, PrecisionOverflowAndSign) {
    for (int precision = 0; precision <= 38; ++precision) {
        const __int128_t beyond = powerOfTen(precision);
        for (const __int128_t number : {beyond, -beyond}) EXPECT_TRUE(decimal(number, precision, 0).checkPrecisionOverflow()) << precision;
        for (const __int128_t number : {beyond - 1, 1 - beyond})
            EXPECT_FALSE(decimal(number, precision, 0).checkPrecisionOverflow()) << precision;
    }
    EXPECT_TRUE(decimal(kLeast, 38, 0).checkPrecisionOverflow());
    EXPECT_FALSE(decimal(kLeast, 39, 0).checkPrecisionOverflow());
    EXPECT_TRUE(decimal(kLeast, 1, 0).isNegative() && decimal(-1, 1, 0).isNegative());
    EXPECT_FALSE(decimal(0, 1, 0).isNegative() || decimal(kMost, 1, 0).isNegative());
}

TEST(FixedDecimal, FromTextsAndDoubles) {
    for (const support::Case& row : support::readCases("decimals.txt")) {
        SCOPED_TRACE(row.where);
        const int precision = row.number(0), scale = row.number(1);
        const bool fits = row[3] != "refused";
        const FixedDecimalValue expected = fits ? decimal(support::toNumber(row[3]), precision, scale) : kBefore;
        expectSet(precision, scale, row.pointer(2), fits, expected);
        // "double": so with the double that the text is
        if (row.fields.size() > 4) expectSet(precision, scale, std::strtod(row.pointer(2), nullptr), fits, expected);
    }
    for (const double number : {HUGE_VAL, -HUGE_VAL, std::nan("")}) expectSet(10, 2, number, false, kBefore);
    expectSet(35, 0, 1.0, false, kBefore);
}

TEST(FixedDecimal, ToWholeNumbers) {
    for (const support::Case& row : support::readCases("quotients.txt")) {
        SCOPED_TRACE(row.where);
        const FixedDecimalValue value = decimal(support::toNumber(row[0]), 34, 0);
        const bool isInt = row[2] == "int", isLong = row[2] != "refused";
        const long expected = isLong ? std::stol(row[3]) : -77;
        int narrow = -77;
        long wide = -77, date = -77;
        EXPECT_EQ(decimal_getInt(value.high, value.low, row.number(1), narrow), isInt);
        EXPECT_EQ(decimal_getInt64(value.high, value.low, row.number(1), wide), isLong);
        EXPECT_EQ(decimal_getDate(value.high, value.low, row.number(1), date), isLong);
        EXPECT_EQ(narrow, isInt ? expected : -77);
        EXPECT_TRUE(wide == expected && date == expected);
    }
    uint64_t high = 1, low = 2;
    EXPECT_TRUE(decimal_setFromInt(high, low, -3, 2));
    EXPECT_FALSE(decimal_setFromInt64(high, low, INT64_MAX, 20));
    EXPECT_EQ(toText(coefficientOf({high, low, 0})), "-300");
}

TEST(FixedDecimal, ToADoubleAtTheScalesOfTypes) {
    double number = -77;
    EXPECT_FALSE(decimal_getDouble(0, 1, -1, number) || decimal_getDouble(0, 1, 64, number));
    EXPECT_EQ(number, -77);
    EXPECT_TRUE(decimal_getDouble(0, 1, 63, number));
    EXPECT_EQ(number, 1e-63);
}

TEST(FixedDecimal, ToACommonScale) {
    for (const bool swapped : {false, true}) {
        FixedDecimalValue a = decimal(-15, 5, 1), b = decimal(2, 7, 3), large = decimal(kMost / 10, 34, 1);
        EXPECT_EQ(swapped ? FixedDecimalValue::toMaxScale(b, a) : FixedDecimalValue::toMaxScale(a, b), 3u);
        expectSame(a, decimal(-1500, 5, 3));
        EXPECT_EQ(swapped ? FixedDecimalValue::toMaxScale(b, large) : FixedDecimalValue::toMaxScale(large, b), 4294967295u);
        expectSame(large, decimal(kMost / 10, 34, 1));
        expectSame(b, decimal(2, 7, 3));
        EXPECT_TRUE(b.toSameScale(large) && large.toSameScale(large));  // cuts digits off
        expectSame(b, decimal(0, 7, 1));
    }
}

TEST(Bid128, BothWays) {
    for (const support::Case& row : support::readCases("bid128.txt")) {
        SCOPED_TRACE(row.where);
        const FixedDecimalValue value = decimal(support::toNumber(row[0]), 34, 0);
        const bool fits = row[2] != "refused";
        BID_UINT128 bid{7, 8};
        EXPECT_EQ(toBID128(value.high, value.low, row.number(1), bid), fits);
        EXPECT_EQ(bid.high, fits ? std::stoull(row[2], nullptr, 16) : 7u);
        EXPECT_EQ(bid.low, fits ? std::stoull(row[3], nullptr, 16) : 8u);
        FixedDecimalValue back = kBefore;
        EXPECT_TRUE(fromBID128(back.high, back.low, bid));
        EXPECT_EQ(toText(coefficientOf(back)), fits ? row[0] : "129127208515966861320");
    }
}

}  // namespace
}  // namespace DataTypes
