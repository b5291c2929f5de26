// The base class' own rules, and what of its forwards can be seen in the platform.
#include "adapter/Adapter.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "tests/doubles/IdleAdapter.h"
#include "tests/doubles/Platform.h"

namespace {

using fake::Texts;

struct PutAdapter : IdleAdapter {
    std::vector<void*> put;
    void putNext(void* row) override { put.push_back(row); }
};

class Base : public ::testing::Test {
protected:
    fake::Platform platform;
    PutAdapter adapter;
    Base() { platform.serve(adapter); }

    static std::string textOf(char* text) { return std::unique_ptr<char[]>(text).get(); }
};

TEST_F(Base, ResetCommonRestoresTheStartValuesAndKeepsTheRest) {
    adapter.badRows = adapter.goodRows = adapter.totalRows = adapter.latency = adapter.gdBatchSize = 5;
    adapter.stopFlag = adapter.gdMode = adapter.pspGDMode = adapter.discovered = adapter.discoveryMode = true;
    adapter.cacheMode = false;
    adapter.stopRequested();
    EXPECT_TRUE(adapter.stopRequestedFlag);
    adapter.schemaNames = adapter.tableNames = adapter.fieldNames = adapter.fieldTypes = {"x"};
    adapter.fieldKeys = {true};
    adapter.sampleRows = {{"x"}};
    adapter.lastProcessedGDKey = 8;
    adapter.resetCommon();
    EXPECT_EQ(adapter.badRows + adapter.goodRows + adapter.totalRows + adapter.latency + adapter.gdBatchSize, 0);
    EXPECT_FALSE(adapter.stopFlag || adapter.stopRequestedFlag || adapter.gdMode || adapter.pspGDMode);
    EXPECT_EQ(adapter.schemaNames.size() + adapter.tableNames.size() + adapter.fieldNames.size() + adapter.fieldTypes.size(), 0U);
    EXPECT_TRUE(adapter.fieldKeys.empty() && adapter.sampleRows.empty());
    EXPECT_TRUE(adapter.cacheMode && adapter.discovered && adapter.discoveryMode);
    EXPECT_EQ(adapter.lastProcessedGDKey, 8);
}

TEST_F(Base, PutNextBlockTakesTheFirstRowsInOrder) {
    void* rows[] = {&platform, &adapter, nullptr};
    for (const int count : {-1, 0, 2}) {
        adapter.put.clear();
        adapter.putNextBlock(rows, count, true);
        EXPECT_EQ(adapter.put, std::vector<void*>(rows, rows + std::max(count, 0))) << count;
    }
}

TEST_F(Base, RefusesDiscoveryAndTables) {
    EXPECT_TRUE(adapter.discoverTables() && adapter.discoverTables("schema"));
    EXPECT_FALSE(adapter.discover("table") || adapter.discover("schema", "table"));
    EXPECT_FALSE(adapter.createTable("s", "t", 0, nullptr, nullptr, nullptr, true, true));
    const char* const kNoDiscovery = "Discovery is not supported for this connection type.";
    EXPECT_EQ(platform.errors, (Texts{kNoDiscovery, kNoDiscovery, "Create table is not supported for this connection type."}));
}

TEST_F(Base, ValidatesDatetimeFormats) {
    for (const char* valid :
         {"%x", "%Y-%m-%d %H:%M:%S %I%p%X", "%d%%", "%Y%%", "%a", "%A%b%B%c%j%m", "%U", "%w%W", "%y", "%d trailing text"})
        EXPECT_TRUE(adapter.validateDatetimeFormat(valid)) << valid;
    for (const char* invalid : {"", "YYYY", "%%", "%H:%M", "%S%X%p%I", "%Y-%q", "%Y %", "%d%z", "%e"})
        EXPECT_FALSE(adapter.validateDatetimeFormat(invalid)) << invalid;
}

TEST_F(Base, ColumnsSkipTheHiddenPairInPspGdMode) {
    adapter.gdKeyColumnName = "Key";
    adapter.opcodeColumnName = "Op";
    platform.useColumns(adapter, {{"A", 1, true}, {"KEY", 2, true}, {"op", 3, true}, {"B", 4, false}});
    EXPECT_EQ(adapter.getColumnCount(), 4);
    EXPECT_STREQ(adapter.getColumnName(1), "KEY");
    adapter.pspGDMode = true;
    EXPECT_EQ(adapter.getColumnCount(), 2);
    EXPECT_STREQ(adapter.getColumnName(0), "A");
    EXPECT_STREQ(adapter.getColumnName(1), "B");  // past both, in either order
    EXPECT_TRUE(adapter.getColumnDatatype(0) == 1 && adapter.getColumnDatatype(1) == 4);
    EXPECT_TRUE(adapter.isKeyColumn(0) && !adapter.isKeyColumn(1));
    EXPECT_STREQ(adapter.getColumnName(2), "B");  // only the opcode stands at 2
    for (const Texts& names : {Texts{"Op", "Key", "A"}, {"Key", "A"}}) {
        platform.useStrings(adapter, names);
        EXPECT_STREQ(adapter.getColumnName(0), "A");
    }
    EXPECT_EQ(adapter.getColumnName(9), nullptr);
}

TEST_F(Base, KeepsTheLastKeyInTheControlStream) {
    adapter.controlStreamName = "Control";
    EXPECT_EQ(adapter.getLastProcessedGDKeyFromControlStream(), -1);
    host::Transaction& posted = platform.context.posted["Control"];
    EXPECT_EQ(adapter.getLastProcessedGDKeyFromControlStream(), 0);
    EXPECT_TRUE(adapter.updateTruncateStream(-4711, true));
    EXPECT_EQ(adapter.getLastProcessedGDKeyFromControlStream(), -4711);
    EXPECT_EQ(posted.at(0)->streamName + " " + fake::show(*posted.at(0)), "Control p 0,-4711,true");
    EXPECT_TRUE(adapter.updateTruncateStream(1, false));
    EXPECT_EQ(fake::show(*posted.at(0)), "p 0,1,false");
    void* trans = adapter.getTransaction("Control");
    EXPECT_TRUE(adapter.postTransaction(trans));
    adapter.clearConnectionRawTrans(trans);
    EXPECT_EQ(adapter.getConnectionRawTransSize(trans), 0);
    adapter.callbackReference = nullptr;
    EXPECT_FALSE(adapter.updateTruncateStream(2, false));
    EXPECT_TRUE(fake::rows.empty());
}

// Forwards that no other test needs, by what the platform does.
TEST_F(Base, ForwardsMessagesStateAndParameters) {
    const char* params[] = {"1", "2"};
    EXPECT_EQ(
        (Texts{adapter.getL10NMessageAsString("k"), adapter.getL10NMessageAsString("k", "1"), adapter.getL10NMessageAsString("k", "1", "2"),
               adapter.getL10NMessageAsString("k", "1", "2", "3"), adapter.getL10NMessageAsString("k", "1", "2", "3", "4"),
               adapter.getL10NMessageAsString("k", "1", "2", "3", "4", "5"), adapter.getL10NMessageAsString("k", 2, params)}),
        (Texts{"k", "k 1", "k 1 2", "k 1 2 3", "k 1 2 3 4", "k 1 2 3 4 5", "k 1 2"}));
    adapter.deleteL10NMessage(adapter.getL10NMessage("k"));
    EXPECT_TRUE(adapter.checkErrorSeverity("300288-3_A") == 1 && adapter.getErrorSeverity("300288-7_A") == 7);

    platform.context.adapterName = "name";
    EXPECT_EQ(textOf(adapter.getAdapterName()), "name");
    adapter.callNotifyConnState(2);
    EXPECT_EQ(platform.context.connectionState, 2);
    adapter.activateOutput();
    EXPECT_TRUE(platform.context.outputActive);
    adapter.deactivateOutput();
    EXPECT_FALSE(platform.context.outputActive);
    EXPECT_TRUE(adapter.addLocalSession("s") && !adapter.addLocalSession("s"));
    EXPECT_TRUE(adapter.removeLocalSession("s") && !adapter.removeLocalSession("s"));

    adapter.addConnectionParam(&platform.params, "m", "7");
    adapter.addParam(&platform.params, "n", "8");
    EXPECT_EQ(
        textOf(adapter.getConnectionParamString(&platform.params, "m")) + textOf(adapter.getConnectionParamAsString(&platform.params, "n")),
        "78");
    adapter.addGeneral(adapter.connectionErrors, "t");
    EXPECT_TRUE(adapter.hasError());
    adapter.clearConnectionErrors(adapter.connectionErrors);
    EXPECT_FALSE(adapter.hasError());
}

}  // namespace
