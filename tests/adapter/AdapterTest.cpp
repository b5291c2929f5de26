// The base class' own rules.
#include "adapter/Adapter.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "tests/doubles/FakeToolkit.h"
#include "tests/doubles/IdleAdapter.h"

namespace {

struct PutAdapter : IdleAdapter {
    std::vector<void*> put;
    void putNext(void* row) override { put.push_back(row); }
};

using Calls = std::vector<std::string>;

TEST(Adapter, ResetCommonRestoresTheStartValuesAndKeepsTheRest) {
    PutAdapter adapter;
    EXPECT_EQ(adapter.discoveryRowLimit, 10);
    EXPECT_TRUE(adapter.callbackReference == nullptr && adapter.connectionErrors == nullptr);
    EXPECT_FALSE(adapter.cacheMode || adapter.discovered || adapter.stopFlag || adapter.stopRequestedFlag);
    adapter.badRows = adapter.goodRows = adapter.totalRows = adapter.latency = adapter.gdBatchSize = 5;
    adapter.stopFlag = adapter.gdMode = adapter.pspGDMode = adapter.discovered = adapter.discoveryMode = true;
    adapter.stopRequested();
    adapter.schemaNames = adapter.tableNames = adapter.fieldNames = adapter.fieldTypes = {"x"};
    adapter.fieldKeys = {true};
    adapter.sampleRows = {{"x"}};
    adapter.lastProcessedGDKey = 8;
    adapter.resetCommon();
    for (const int64_t n : {adapter.badRows, adapter.goodRows, adapter.totalRows, adapter.latency, int64_t{adapter.gdBatchSize}})
        EXPECT_EQ(n, 0);
    EXPECT_FALSE(adapter.stopFlag || adapter.stopRequestedFlag || adapter.gdMode || adapter.pspGDMode);
    for (const Calls* names : {&adapter.schemaNames, &adapter.tableNames, &adapter.fieldNames, &adapter.fieldTypes})
        EXPECT_TRUE(names->empty());
    EXPECT_TRUE(adapter.fieldKeys.empty() && adapter.sampleRows.empty());
    EXPECT_TRUE(adapter.cacheMode && adapter.discovered && adapter.discoveryMode);
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
    EXPECT_TRUE(adapter.discoverTables() && adapter.discoverTables("schema"));
    EXPECT_FALSE(adapter.discover("table") || adapter.discover("schema", "table"));
    EXPECT_FALSE(adapter.createTable("s", "t", 0, nullptr, nullptr, nullptr, true, true));
    const char* const kNoDiscovery = "Discovery is not supported for this connection type.";
    EXPECT_EQ(toolkit.errors, (Calls{kNoDiscovery, kNoDiscovery, "Create table is not supported for this connection type."}));
}

TEST(Adapter, ValidatesDatetimeFormats) {
    PutAdapter adapter;
    for (const char* valid : {"%x", "%Y-%m-%d %H:%M:%S", "%d%%", "%Y%%", "%a", "%A%b%B%c%j%m", "%U", "%w%W", "%y", "%d trailing text"})
        EXPECT_TRUE(adapter.validateDatetimeFormat(valid)) << valid;
    for (const char* invalid : {"", "YYYY", "%%", "%H:%M", "%S%X%p%I", "%Y-%q", "%Y %", "%d%z", "%e"})
        EXPECT_FALSE(adapter.validateDatetimeFormat(invalid)) << invalid;
}

TEST(Adapter, ColumnsSkipTheHiddenPairInPspGdMode) {
    auto& toolkit = fake::fresh();
    PutAdapter adapter;
    adapter.gdKeyColumnName = "Key";
    adapter.opcodeColumnName = "Op";
    toolkit.columns = {{"A", 1, true}, {"KEY", 2, true}, {"op", 3, true}, {"B", 4, false}};
    EXPECT_EQ(adapter.getColumnCount(), 4);
    EXPECT_STREQ(adapter.getColumnName(1), "KEY");
    adapter.pspGDMode = true;
    EXPECT_EQ(adapter.getColumnCount(), 2);
    EXPECT_STREQ(adapter.getColumnName(0), "A");
    EXPECT_STREQ(adapter.getColumnName(1), "B");  // past both, in either order
    EXPECT_TRUE(adapter.getColumnDatatype(0) == 1 && adapter.getColumnDatatype(1) == 4);
    EXPECT_TRUE(adapter.isKeyColumn(0) && !adapter.isKeyColumn(1));
    EXPECT_STREQ(adapter.getColumnName(2), "B");  // only the opcode stands at 2
    for (const std::vector<fake::Column>& columns : {std::vector<fake::Column>{{"Op"}, {"Key"}, {"A"}}, {{"Key"}, {"A"}}}) {
        toolkit.columns = columns;
        EXPECT_STREQ(adapter.getColumnName(0), "A");
    }
    EXPECT_EQ(adapter.getColumnName(9), nullptr);
}

TEST(Adapter, ReadsAndTruncatesTheControlStream) {
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
    EXPECT_TRUE(adapter.updateTruncateStream(-7, true));
    EXPECT_EQ(toolkit.posted, (Calls{"p 0,-7,true"}));
    EXPECT_EQ(toolkit.takeCalls("postTransactionToStream"), (Calls{"postTransactionToStream(cb,rawTrans,Control)"}));
    toolkit.toRowFails = true;
    EXPECT_FALSE(adapter.updateTruncateStream(1, false));
    EXPECT_TRUE(toolkit.takeCalls("postTransactionToStream").empty());
}

}  // namespace
