// Fixed decimals: types, rescaling, numbers in and out.
#include "datatypes/FixedDecimal.h"

#include "tests/datatypes/Support.h"

namespace DataTypes {
namespace {

using support::decimal;
using support::show;

const std::string kTenthOfMost = "17014118346046923173168730371588410572";  // of the coefficients

// Of types, and of values, which keep their number.
TEST(DecimalTypes, ResultsOfOperations) {
    for (const support::Case& row : support::readCases("results.txt")) {
        SCOPED_TRACE(row.line);
        const auto check = [&row](size_t column, auto onTypes, auto onValues) {
            const unsigned int a = stringToType(row[0]), b = stringToType(row[1]);
            unsigned int result = a;
            EXPECT_EQ(onTypes(result, a, b) ? typeToString(result) : "-", row[column]);
            FixedDecimalValue value = decimal("-7", precisionOf(a), scaleOf(a));
            EXPECT_EQ((value.*onValues)(decimal("9", precisionOf(b), scaleOf(b))), row[column] != "-");
            const std::string number = "-7" + std::string(scaleOf(result) - scaleOf(a), '0');
            EXPECT_EQ(show(value), show(decimal(number, precisionOf(result), scaleOf(result))));
        };
        check(2, getFixedDecimalAdditionResultType, &FixedDecimalValue::toAdditionResultType);
        check(3, getFixedDecimalSubtractionResultType, &FixedDecimalValue::toSubtractionResultType);
        check(4, getFixedDecimalMultiplicationResultType, &FixedDecimalValue::toMultiplicationResultType);
        check(5, getFixedDecimalDivisionResultType, &FixedDecimalValue::toDivisionResultType);
    }
    FixedDecimalValue large = decimal(kTenthOfMost, 10, 1);
    EXPECT_FALSE(large.toAdditionResultType(decimal("0", 10, 3)));
    EXPECT_EQ(show(large), kTenthOfMost + "/10,1");
}

TEST(LongDivision, RefusesZeroAndCarries) {
    uint64_t words[4] = {1, 2, 3, 4};
    uint16_t digits[3] = {0, 6, 7};
    EXPECT_FALSE(longdivmod128(9, 9, 0, 0, words[0], words[1], words[2], words[3]) || longdivmod(digits + 1, 1, digits, 1, digits + 2));
    EXPECT_TRUE(words[0] == 1 && words[3] == 4 && digits[1] == 6 && digits[2] == 7);
    EXPECT_EQ(mul1(digits + 1, 2, 0x8000), 3);  // the carry
}

// Of fewer digits setting whole numbers tells.
TEST(FixedDecimal, PrecisionOverflow) {
    const std::string power = "-1" + std::string(37, '0'), least = "-" + kTenthOfMost + "8";
    EXPECT_TRUE(decimal(power, 37, 0).checkPrecisionOverflow() && decimal(least, 38, 0).checkPrecisionOverflow());
    EXPECT_FALSE(decimal(power, 38, 0).checkPrecisionOverflow() || decimal(least, 39, 0).checkPrecisionOverflow());
}

TEST(FixedDecimal, FromTextsAndNumbers) {
    for (const support::Case& row : support::readCases("decimals.txt")) {
        SCOPED_TRACE(row.line);
        const auto check = [&row](auto number) {
            FixedDecimalValue value = decimal("-77", 9, 1);
            const bool taken = value.setDecimalValue(row.number(0), row.number(1), number);
            EXPECT_EQ(show(value), taken ? row[3] + "/" + row[0] + "," + row[1] : "-77/9,1");
            EXPECT_EQ(taken, row[3] != "refused");
        };
        const std::string& number = row.fields.back();
        check(row.pointer(2));
        if (number == "double") check(std::strtod(row.pointer(2), nullptr));
        if (number == "long" || number == "int") check(std::stol(row[2]));
        if (number == "int") check(row.number(2));
    }
}

TEST(FixedDecimal, ToAndFromNumbers) {
    for (const support::Case& row : support::readCases("quotients.txt")) {
        SCOPED_TRACE(row.line);
        const auto get = [&row](auto function, auto number) {
            const FixedDecimalValue value = decimal(row[0], 34, 0);
            const bool fits = function(value.high, value.low, row.number(1), number);
            return fits ? std::to_string(number) : number == -77 ? "refused" : "changed";
        };
        EXPECT_EQ(get(decimal_getInt, -77), row[2]);
        EXPECT_EQ(get(decimal_getInt64, -77l), row[3]);
        EXPECT_EQ(get(decimal_getDate, -77l), row[3]);
    }
    FixedDecimalValue value{};
    EXPECT_TRUE(decimal_setFromInt(value.high, value.low, -3, 2) && !decimal_setFromInt64(value.high, value.low, INT64_MAX, 20));
    EXPECT_EQ(show(value), "-300/0,0");
    double number = -77;
    EXPECT_FALSE(decimal_getDouble(0, 1, -1, number) || decimal_getDouble(0, 1, 64, number) || number != -77);
    EXPECT_TRUE(decimal_getDouble(0, 1, 63, number) && number == 1e-63);
}

TEST(FixedDecimal, ToACommonScale) {
    for (const bool swapped : {false, true}) {
        FixedDecimalValue a = decimal("-15", 5, 1), b = decimal("2", 7, 3), large = decimal(kTenthOfMost, 34, 1);
        EXPECT_EQ(swapped ? FixedDecimalValue::toMaxScale(b, a) : FixedDecimalValue::toMaxScale(a, b), 3u);
        EXPECT_EQ(swapped ? FixedDecimalValue::toMaxScale(b, large) : FixedDecimalValue::toMaxScale(large, b), 4294967295u);
        EXPECT_EQ(show(a) + " " + show(b) + " " + show(large), "-1500/5,3 2/7,3 " + kTenthOfMost + "/34,1");
        EXPECT_TRUE(b.toSameScale(large) && large.toSameScale(large));
        EXPECT_EQ(show(b), "0/7,1");  // digits are cut off
    }
}

TEST(Bid128, BothWays) {
    for (const support::Case& row : support::readCases("bid128.txt")) {
        SCOPED_TRACE(row.line);
        const FixedDecimalValue value = decimal(row[0], 34, 0);
        BID_UINT128 bid{7, 8};
        EXPECT_EQ(toBID128(value.high, value.low, row.number(1), bid), row[4] == row[0]);
        EXPECT_TRUE(bid.high == std::stoull(row[2], nullptr, 16) && bid.low == std::stoull(row[3], nullptr, 16)) << bid.high;
        FixedDecimalValue back{};
        EXPECT_TRUE(fromBID128(back.high, back.low, bid));
        EXPECT_EQ(show(back), row[4] + "/0,0");
    }
}

}  // namespace
}  // namespace DataTypes
