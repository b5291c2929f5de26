// Every ordered pair of kinds under both widening rules.
#include "datatypes/TypeWidening.h"

#include "tests/datatypes/Support.h"

namespace DataTypes {
namespace {

using Widening = support::SettingsRestored;

TEST_F(Widening, EveryPairOfKinds) {
    const std::vector<support::Case> rows = support::readCases("widening.txt");
    ASSERT_EQ(rows.size(), kKinds);
    for (unsigned int target = 0; target < kKinds; ++target) {
        for (unsigned int other = 0; other < kKinds; ++other) {
            SCOPED_TRACE("target " + rows[target][0] + ", other " + rows[other][0]);
            unsigned int any = target, strict = target;
            maximizeAnyType(any, other);
            EXPECT_EQ(rows[kindOf(any)][0][0], rows[target][1].at(other));
            const bool possible = maximizeType(strict, other);
            EXPECT_EQ(possible ? rows[kindOf(strict)][0][0] : '.', rows[target][2].at(other));
            EXPECT_TRUE(possible || strict == target);
        }
    }
}

TEST_F(Widening, DecimalsAndLegacyMoney) {
    for (const support::Case& row : support::readCases("combined.txt")) {
        setLegacyMoneyPrecision(static_cast<size_t>(row.number(0)));
        const unsigned int other = stringToType(row[2]);
        unsigned int any = stringToType(row[1]), strict = any;
        maximizeAnyType(any, other);
        EXPECT_EQ(typeToString(any), row[3]) << row.line;
        EXPECT_EQ(maximizeType(strict, other) ? typeToString(strict) : "-", row[4]) << row.line;
    }
}

}  // namespace
}  // namespace DataTypes
