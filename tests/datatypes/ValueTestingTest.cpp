// The type that an adapter finds for a text.
#include "adapter/Adapter.h"
#include "tests/datatypes/Support.h"

namespace {

struct IdleAdapter : Adapter {
    void* getNext() override { return nullptr; }
    void putNext(void*) override {}
    void stop() override {}
    bool reset() override { return true; }
    bool canDiscover() override { return false; }
};

TEST(ValueTesting, FirstTypeThatReads) {
    IdleAdapter adapter;
    for (const support::Case& row : support::readCases("testing.txt")) {
        const uint32_t type = adapter.testValue(row.pointer(0), row.pointer(1), row.pointer(2), row.pointer(3));
        EXPECT_EQ(DataTypes::typeToString(type), row[4]) << row.where;
    }
}

}  // namespace
