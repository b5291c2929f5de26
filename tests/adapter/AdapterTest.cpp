// The base class' own rules.
#include "adapter/Adapter.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "tests/doubles/FakeToolkit.h"

namespace {

struct PutAdapter : Adapter {
    std::vector<void*> put;
    void* getNext() override { return nullptr; }
    void putNext(void* row) override { put.push_back(row); }
    void stop() override {}
    bool reset() override { return true; }
    bool canDiscover() override { return false; }
};

using Calls = std::vector<std::string>;

TEST(Adapter, StartsEmpty) {
    PutAdapter adapter;
    EXPECT_EQ(adapter.discoveryRowLimit, 10);
    EXPECT_EQ(adapter.callbackReference, nullptr);
    EXPECT_EQ(adapter.connectionErrors, nullptr);
    EXPECT_FALSE(adapter.cacheMode || adapter.discovered || adapter.stopFlag || adapter.stopRequestedFlag);
    EXPECT_EQ(adapter.lastProcessedGDKey, 0);
}

TEST(Adapter, ResetCommonRestoresTheStartValuesAndKeepsTheRest) {
    PutAdapter adapter;
    adapter.badRows = adapter.goodRows = adapter.totalRows = adapter.latency = 5;
    adapter.stopFlag = adapter.gdMode = adapter.pspGDMode = adapter.discovered = adapter.discoveryMode = true;
    adapter.stopRequested();
    adapter.schemaNames = adapter.tableNames = adapter.fieldNames = adapter.fieldTypes = {"x"};
    adapter.fieldKeys = {true};
    adapter.sampleRows = {{"x"}};
    adapter.gdBatchSize = 7;
    adapter.lastProcessedGDKey = 8;
    adapter.resetCommon();
    EXPECT_EQ(adapter.badRows + adapter.goodRows + adapter.totalRows + adapter.latency, 0);
    EXPECT_FALSE(adapter.stopFlag || adapter.stopRequestedFlag || adapter.gdMode || adapter.pspGDMode);
    EXPECT_TRUE(adapter.schemaNames.empty() && adapter.tableNames.empty() && adapter.fieldNames.empty() && adapter.fieldTypes.empty() &&
                adapter.fieldKeys.empty() && adapter.sampleRows.empty());
    EXPECT_TRUE(adapter.cacheMode);
    EXPECT_EQ(adapter.gdBatchSize, 0);
    EXPECT_TRUE(adapter.discovered && adapter.discoveryMode);
    EXPECT_EQ(adapter.lastProcessedGDKey, 8);
}

TEST(Adapter, PutNextBlockTakesTheFirstRowsInOrder) {
    void* rows[] = {fake::handle("a"), fake::handle("b"), fake::handle("c")};
    for (const int count : {-1, 0, 2}) {
        PutAdapter adapter;
        adapter.putNextBlock(rows, count, true);
        EXPECT_EQ(adapter.put, std::vector<void*>(rows, rows + std::max(count, 0))) << count;
    }
}

TEST(Adapter, BaseRefusesDiscoveryAndTables) {
    auto& toolkit = fake::fresh();
    PutAdapter adapter;
    EXPECT_TRUE(adapter.discoverTables());
    EXPECT_TRUE(adapter.discoverTables("schema"));
    EXPECT_FALSE(adapter.discover("table"));
    EXPECT_FALSE(adapter.discover("schema", "table"));
    EXPECT_FALSE(adapter.createTable("s", "t", 0, nullptr, nullptr, nullptr, true, true));
    EXPECT_EQ(toolkit.errors,
              (Calls{"Discovery is not supported for this connection type.", "Discovery is not supported for this connection type.",
                     "Create table is not supported for this connection type."}));
}

TEST(Adapter, ValidatesDatetimeFormats) {
    const std::pair<const char*, bool> kRows[] = {
        {"", false},
        {"YYYY", false},
        {"%%", false},
        {"%x", true},
        {"%Y-%m-%d %H:%M:%S", true},
        {"%d%%", true},
        {"%H:%M", false},
        {"%Y-%q", false},
        {"%Y %", false},
        {"%Y%%", true},
        {"%a", true},
        {"%A%b%B%c%j%m", true},
        {"%U", true},
        {"%w%W", true},
        {"%y", true},
        {"%S%X%p%I", false},
        {"%d trailing text", true},
        {"%d%z", false},
        {"%e", false},
    };
    PutAdapter adapter;
    for (const auto& [format, valid] : kRows) EXPECT_EQ(adapter.validateDatetimeFormat(format), valid) << format;
}

TEST(Adapter, ColumnsSkipTheHiddenPairInPspGdMode) {
    auto& toolkit = fake::fresh();
    PutAdapter adapter;
    adapter.gdKeyColumnName = "Key";
    adapter.opcodeColumnName = "Op";
    toolkit.columns = {{"A", 1, true}, {"KEY", 2, false}, {"op", 3, false}, {"B", 4, true}};
    EXPECT_EQ(adapter.getColumnCount(), 4);
    EXPECT_STREQ(adapter.getColumnName(1), "KEY");
    adapter.pspGDMode = true;
    EXPECT_EQ(adapter.getColumnCount(), 2);
    EXPECT_STREQ(adapter.getColumnName(0), "A");
    EXPECT_STREQ(adapter.getColumnName(1), "B");  // past both, in either order
    EXPECT_EQ(adapter.getColumnDatatype(1), 4U);
    EXPECT_TRUE(adapter.isKeyColumn(1));
    EXPECT_STREQ(adapter.getColumnName(2), "B");  // only the opcode stands at 2
    toolkit.columns = {{"Op"}, {"Key"}, {"A"}};
    EXPECT_STREQ(adapter.getColumnName(0), "A");
    toolkit.columns = {{"Key"}, {"A"}};
    EXPECT_STREQ(adapter.getColumnName(0), "A");
    EXPECT_EQ(adapter.getColumnName(9), nullptr);
}

TEST(Adapter, ReadsTheControlStreamsKey) {
    auto& toolkit = fake::fresh();
    PutAdapter adapter;
    adapter.callbackReference = fake::handle("cb");
    adapter.controlStreamName = "Control";
    toolkit.hasTransaction = false;
    EXPECT_EQ(adapter.getLastProcessedGDKeyFromControlStream(), -1);
    toolkit.hasTransaction = true;
    EXPECT_EQ(adapter.getLastProcessedGDKeyFromControlStream(), 0);
    toolkit.controlRows = {fake::handle("raw")};
    toolkit.takeCalls();
    EXPECT_EQ(adapter.getLastProcessedGDKeyFromControlStream(), -4711);
    EXPECT_EQ(toolkit.takeCalls(), (Calls{"getTransaction(cb,Control)", "getConnectionRawTransSize(trans)",
                                          "getConnectionRawTrans(trans,0)", "createConnectionRow(RowByOrder)", "fromRow(row,raw)",
                                          "getFieldAsStringWithIndex(row,1)", "deleteConnectionRow(row)"}));
}

TEST(Adapter, PostsTheTruncateRecord) {
    auto& toolkit = fake::fresh();
    PutAdapter adapter;
    adapter.callbackReference = fake::handle("cb");
    adapter.controlStreamName = "Control";
    EXPECT_TRUE(adapter.updateTruncateStream(-7, true));
    EXPECT_EQ(toolkit.posted, (Calls{"p 0,-7,true"}));
    EXPECT_EQ(toolkit.takeCalls("postTransactionToStream"), (Calls{"postTransactionToStream(cb,rawTrans,Control)"}));
    toolkit.toRowFails = true;
    EXPECT_FALSE(adapter.updateTruncateStream(1, false));
    EXPECT_TRUE(toolkit.takeCalls("postTransactionToStream").empty());
}

}  // namespace
