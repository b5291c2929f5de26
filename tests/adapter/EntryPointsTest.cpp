// Marshalling of the C entry points, over an adapter whose discovery results the test sets.
#include "adapter/EntryPoints.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <functional>
#include <memory>
#include <tuple>

#include "jmsin/JmsInAdapter.h"
#include "tests/doubles/IdleAdapter.h"
#include "tests/doubles/Platform.h"

namespace {

using fake::Texts;

struct FoundAdapter : IdleAdapter {
    bool found = true;
    std::string called;
    void putNext(void* row) override { called += row == this ? "putNext " : "?"; }
    void start() override { called += "start "; }
    void putStartSync() override { called += "putStartSync "; }
    void putEndSync() override { called += "putEndSync "; }
    void purgePending() override { called += "purgePending "; }
    void cleanup() override { called += "cleanup "; }
    void getStatistics(AdapterStatistics* s) override { addAdapterStatistics(s, "name", "value"); }
    bool createTable(const char* schema, const char* table, unsigned long count, const char** names, const char** types, const bool* keys,
                     bool flag1, bool flag2) override {
        called += schema + std::string(table) + std::to_string(count) + names[0] + types[0] + (keys[0] ? "k" : "") + (flag1 ? "1" : "");
        return flag2;
    }
    using Adapter::discover;
    using Adapter::discoverTables;
    bool discover(std::string table) override { return called = table, found; }
    bool discoverTables() override { return found; }
};

class EntryPoints : public ::testing::Test {
protected:
    fake::Platform platform;
    FoundAdapter adapter;
    void* handle = static_cast<Adapter*>(&adapter);
    EntryPoints() { platform.serve(adapter); }

    // What an entry point hands out, which is released.
    static Texts taken(const std::function<int(char***)>& use) {
        char** values = nullptr;
        const int count = use(&values);
        Texts texts;
        for (int i = 0; i < count; ++i) texts.emplace_back(std::unique_ptr<char[]>(values[i]).get());
        free(values);
        return texts;
    }
};

TEST_F(EntryPoints, HandOutTheDiscoveryResults) {
    adapter.schemaNames = {"s"};
    adapter.tableNames = {"t1", ""};
    adapter.fieldNames = {"a", "b"};
    adapter.fieldTypes = {"integer", "string"};
    adapter.fieldKeys = {true, false};
    adapter.sampleRows = {{"1", "x"}, {}};
    EXPECT_EQ(taken([this](char*** v) { return getSchemaNames(handle, v); }), adapter.schemaNames);
    for (const char* schema : {static_cast<const char*>(nullptr), "schema"})
        EXPECT_EQ(taken([&](char*** v) { return getTableNames(handle, v, schema); }), adapter.tableNames);
    EXPECT_EQ(taken([this](char*** v) { return getFieldNames(handle, v, "table", nullptr); }), adapter.fieldNames);
    EXPECT_EQ(adapter.called, "table");
    EXPECT_EQ(taken([this](char*** v) { return getFieldTypes(handle, v, nullptr, nullptr); }), adapter.fieldTypes);
    EXPECT_EQ(adapter.called, "");
    for (const int row : {0, 1})
        EXPECT_EQ(taken([&](char*** v) { return getSampleRow(handle, v, "t", nullptr, row); }), adapter.sampleRows[row]);
    bool* flags = nullptr;
    ASSERT_EQ(getFieldKeys(handle, &flags, "t", nullptr), 2);
    EXPECT_TRUE(flags[0] && !flags[1]);
    free(flags);
}

TEST_F(EntryPoints, LeaveTheOutParameterAloneWhenThereIsNothingToHandOut) {
    char* untouched = nullptr;
    char** values = &untouched;
    bool flag = false;
    bool* flags = &flag;
    EXPECT_EQ(getSampleRow(handle, &values, "t", nullptr, 0), 0);
    adapter.found = false;
    EXPECT_EQ((std::vector{getSchemaNames(handle, &values), getTableNames(handle, &values, nullptr),
                           getFieldNames(handle, &values, "t", nullptr), getFieldTypes(handle, &values, "t", nullptr),
                           getFieldKeys(handle, &flags, "t", nullptr), getSampleRow(handle, &values, "t", nullptr, 0)}),
              std::vector(6, -1));
    adapter.found = true;  // the form with a schema is the base's, which refuses
    EXPECT_EQ(getFieldNames(handle, &values, "t", "schema"), -1);
    EXPECT_TRUE(values == &untouched && flags == &flag);
    char* text = nullptr;
    EXPECT_EQ(getError(handle, &text), 1);
    EXPECT_STREQ(std::unique_ptr<char[]>(text).get(), "Discovery is not supported for this connection type.");
}

TEST_F(EntryPoints, ReadTheAdaptersFields) {
    std::tie(adapter.totalRows, adapter.goodRows, adapter.badRows, adapter.latency, adapter.gdBatchSize) = std::tuple(1, 2, 3, 4, 6);
    adapter.lastProcessedGDKey = 1LL << 40;
    EXPECT_EQ((std::vector<int64_t>{getTotalRowsProcessed(handle), getNumberOfGoodRows(handle), getNumberOfBadRows(handle),
                                    getLatency(handle), getLastProcessedRecordGDKey(handle), getGDBatchSize(handle)}),
              (std::vector<int64_t>{1, 2, 3, 4, 1LL << 40, 6}));
    for (bool Adapter::*flag : {&Adapter::cacheMode, &Adapter::gdMode, &Adapter::pspGDMode, &Adapter::outputAdapter}) {
        adapter.cacheMode = adapter.gdMode = adapter.pspGDMode = adapter.outputAdapter = false;
        adapter.*flag = true;
        EXPECT_EQ((std::vector{isCacheModeEnabled(handle), isGDModeEnabled(handle), isPSPGDModeEnabled(handle), isOutBase(handle)}),
                  (std::vector{adapter.cacheMode, adapter.gdMode, adapter.pspGDMode, adapter.outputAdapter}));
    }
    adapter.gdKeyColumnName = "Key";
    char* name = nullptr;
    getGDKeyColumnName(handle, &name);
    EXPECT_STREQ(std::unique_ptr<char[]>(name).get(), "Key");
    stopRequested(handle);
    setDiscovery(handle);
    EXPECT_TRUE(adapter.stopRequestedFlag && adapter.discoveryMode);
}

TEST_F(EntryPoints, ReachTheirOperations) {
    for (const auto& operate : {start, putStartSync, putEndSync, purgePending, cleanup}) operate(handle);
    putNext(handle, &adapter);
    const char* names[] = {"n"};
    const char* types[] = {"y"};
    const bool keys[] = {true};
    EXPECT_EQ(createTable(handle, "s", "t", 7, names, types, keys, true, false), 0);
    EXPECT_EQ(createTable(handle, "s", "t", 7, names, types, keys, false, true), 1);
    EXPECT_EQ(adapter.called, "start putStartSync putEndSync purgePending cleanup putNext st7nyk1st7nyk");
    AdapterStatistics statistics;
    getStatistics(handle, &statistics);
    EXPECT_EQ(statistics.values["name"], "value");
    setState(handle, 5);
    EXPECT_TRUE(getState(handle) == 5 && platform.context.state == 5);
    char** values = nullptr;
    ASSERT_EQ(getCapability(handle, nullptr, &values), 1);
    const std::unique_ptr<char*[]> owner(values);  // both are of array new
    EXPECT_STREQ(std::unique_ptr<char[]>(values[0]).get(), "false");
}

TEST(EntryPointsOfTheJmsAdapter, AreHarmlessBeforeReset) {
    fake::Platform platform;
    void* adapter = createAdapter();
    setCallBackReference(adapter, &platform.context);
    EXPECT_EQ(getNext(adapter), nullptr);
    stop(adapter);
    EXPECT_EQ(platform.context.state, 4);
    EXPECT_EQ(getNext(adapter), nullptr);
    EXPECT_FALSE(hasError(adapter));
    deleteAdapter(adapter);
    deleteAdapter(nullptr);
}

}  // namespace
