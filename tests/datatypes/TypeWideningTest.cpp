// Every ordered pair of kinds under both widening rules.
#include "datatypes/TypeWidening.h"

#include "tests/datatypes/Support.h"

namespace DataTypes {
namespace {

using Widening = support::SettingsRestored;

TEST_F(Widening, EveryPairOfKinds) {
    const std::string letters = support::readCases("widening.txt", "kinds")[0][0];
    const auto any = support::readCases("widening.txt", "any");
    const auto strict = support::readCases("widening.txt", "strict");
    ASSERT_TRUE(letters.size() == kKinds && any.size() == kKinds && strict.size() == kKinds);
    for (unsigned int target = 0; target < kKinds; ++target) {
        for (unsigned int other = 0; other < kKinds; ++other) {
            SCOPED_TRACE(std::string("target ") + letters[target] + ", other " + letters[other]);
            unsigned int widened = target;
            maximizeAnyType(widened, other);
            EXPECT_EQ(letters[kindOf(widened)], any[target][0][other]);

            widened = target;
            const bool possible = maximizeType(widened, other);
            EXPECT_EQ(possible ? letters[kindOf(widened)] : '.', strict[target][0][other]);
            EXPECT_TRUE(possible || widened == target);
        }
    }
}

TEST_F(Widening, MoneyFollowsTheLegacyPrecision) {
    for (const support::Case& row : support::readCases("widening.txt", "legacy")) {
        SCOPED_TRACE(row.where);
        setLegacyMoneyPrecision(static_cast<size_t>(row.number(0)));
        const unsigned int other = stringToType(row[2]);
        unsigned int any = stringToType(row[1]), strict = any;
        maximizeAnyType(any, other);
        EXPECT_EQ(typeToString(any), row[3]);
        EXPECT_EQ(maximizeType(strict, other), row[4] != "-");
        EXPECT_EQ(typeToString(strict), row[4] != "-" ? row[4] : row[1]);
    }
}

TEST_F(Widening, MergedDecimals) {
    for (const support::Case& row : support::readCases("widening.txt", "merged")) {
        SCOPED_TRACE(row.where);
        for (const size_t first : {0u, 1u}) {
            const unsigned int other = stringToType(row[1 - first]);
            unsigned int any = stringToType(row[first]), strict = any;
            maximizeAnyType(any, other);
            EXPECT_EQ(typeToString(any), row[2]);
            EXPECT_TRUE(maximizeType(strict, other));
            EXPECT_EQ(strict, any);
        }
    }
    setLegacyMoneyPrecision(15);
    unsigned int target = kMoney;
    maximizeAnyType(target, createFixedDecimal(10, 2));
    EXPECT_EQ(typeToString(target), "decimal(23,15)");
    maximizeAnyType(target, kUntyped);
    EXPECT_EQ(typeToString(target), "decimal(23,15)");
}

}  // namespace
}  // namespace DataTypes
