// The type that an adapter finds for a text.
#include "tests/datatypes/Support.h"
#include "tests/doubles/IdleAdapter.h"

namespace {

TEST(ValueTesting, FirstTypeThatReads) {
    IdleAdapter adapter;
    for (const support::Case& row : support::readCases("testing.txt")) {
        const uint32_t type = adapter.testValue(row.pointer(0), row.pointer(1), row.pointer(2), row.pointer(3));
        EXPECT_EQ(DataTypes::typeToString(type), row[4]) << row.where;
    }
}

}  // namespace
