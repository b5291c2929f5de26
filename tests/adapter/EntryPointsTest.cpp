// Marshalling of the C entry points, over an adapter whose discovery results the test sets.
#include "adapter/EntryPoints.h"

#include <gtest/gtest.h>

#include <cstdlib>

#include "jmsin/JmsInAdapter.h"
#include "tests/doubles/FakeJvm.h"
#include "tests/doubles/FakeToolkit.h"

namespace {

using Strings = std::vector<std::string>;

struct FoundAdapter : Adapter {
    bool found = true;
    std::string asked;
    std::string called;
    void* getNext() override { return called = "getNext", fake::handle("row"); }
    void putNext(void* row) override { called = row == fake::handle("row") ? "putNext" : "?"; }
    void start() override { called = "start"; }
    void stop() override { called = "stop"; }
    bool reset() override { return called = "reset", true; }
    bool canDiscover() override { return called = "canDiscover", true; }
    int64_t commitTransaction() override { return called = "commitTransaction", 1LL << 40; }
    void putStartSync() override { called = "putStartSync"; }
    void putEndSync() override { called = "putEndSync"; }
    void purgePending() override { called = "purgePending"; }
    void cleanup() override { called = "cleanup"; }
    void getStatistics(AdapterStatistics* s) override { called = s == fake::handle("s") ? "getStatistics" : "?"; }
    bool createTable(const char* schema, const char* table, unsigned long count, const char** names, const char** types, const bool* keys,
                     bool flag1, bool flag2) override {
        called = std::string(schema) + table + std::to_string(count) + names[0] + types[0] + std::to_string(keys[0]) +
                 std::to_string(flag1) + std::to_string(flag2);
        return true;
    }
    using Adapter::discover;
    using Adapter::discoverTables;
    bool discover(std::string table) override {
        asked = table;
        return found;
    }
    bool discoverTables() override { return found; }
};

class EntryPoints : public ::testing::Test {
protected:
    fake::Toolkit& toolkit = fake::fresh();
    FoundAdapter adapter;
    void* handle = static_cast<Adapter*>(&adapter);

    static Strings takeArray(char** values, int count) {
        Strings texts;
        for (int i = 0; i < count; ++i) {
            texts.emplace_back(values[i]);
            delete[] values[i];
        }
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
    char** values = nullptr;
    int count = getSchemaNames(handle, &values);
    EXPECT_EQ(takeArray(values, count), adapter.schemaNames);
    count = getTableNames(handle, &values, nullptr);
    EXPECT_EQ(takeArray(values, count), adapter.tableNames);
    count = getTableNames(handle, &values, "schema");
    EXPECT_EQ(takeArray(values, count), adapter.tableNames);
    count = getFieldNames(handle, &values, "table", nullptr);
    EXPECT_EQ(takeArray(values, count), adapter.fieldNames);
    EXPECT_EQ(adapter.asked, "table");
    count = getFieldTypes(handle, &values, nullptr, nullptr);
    EXPECT_EQ(takeArray(values, count), adapter.fieldTypes);
    EXPECT_EQ(adapter.asked, "");
    count = getSampleRow(handle, &values, "t", nullptr, 0);
    EXPECT_EQ(takeArray(values, count), adapter.sampleRows[0]);
    count = getSampleRow(handle, &values, "t", nullptr, 1);
    EXPECT_EQ(takeArray(values, count), Strings{});
    bool* flags = nullptr;
    ASSERT_EQ(getFieldKeys(handle, &flags, "t", nullptr), 2);
    EXPECT_TRUE(flags[0]);
    EXPECT_FALSE(flags[1]);
    free(flags);
}

TEST_F(EntryPoints, LeaveTheOutParameterAloneWhenThereIsNothingToHandOut) {
    char* untouched = nullptr;
    char** values = &untouched;
    bool flag = false;
    bool* flags = &flag;
    EXPECT_EQ(getSampleRow(handle, &values, "t", nullptr, 0), 0);
    adapter.found = false;
    EXPECT_EQ(getSchemaNames(handle, &values), -1);
    EXPECT_EQ(getTableNames(handle, &values, nullptr), -1);
    EXPECT_EQ(getFieldNames(handle, &values, "t", nullptr), -1);
    EXPECT_EQ(getFieldTypes(handle, &values, "t", nullptr), -1);
    EXPECT_EQ(getFieldKeys(handle, &flags, "t", nullptr), -1);
    EXPECT_EQ(getSampleRow(handle, &values, "t", nullptr, 0), -1);
    adapter.found = true;  // the form with a schema is the base's, which refuses
    EXPECT_EQ(getFieldNames(handle, &values, "t", "schema"), -1);
    EXPECT_EQ(values, &untouched);
    EXPECT_EQ(flags, &flag);
}

TEST_F(EntryPoints, ReadTheAdaptersFields) {
    adapter.totalRows = 3;
    adapter.goodRows = 2;
    adapter.badRows = 1;
    adapter.latency = 9;
    adapter.gdBatchSize = 4;
    adapter.lastProcessedGDKey = 5;
    adapter.gdKeyColumnName = "Key";
    EXPECT_EQ(getTotalRowsProcessed(handle), 3);
    EXPECT_EQ(getNumberOfGoodRows(handle), 2);
    EXPECT_EQ(getNumberOfBadRows(handle), 1);
    EXPECT_EQ(getLatency(handle), 9);
    EXPECT_EQ(getGDBatchSize(handle), 4);
    EXPECT_EQ(getLastProcessedRecordGDKey(handle), 5);
    for (bool Adapter::*flag : {&Adapter::cacheMode, &Adapter::gdMode, &Adapter::pspGDMode, &Adapter::outputAdapter}) {
        adapter.*flag = true;
        EXPECT_EQ(isCacheModeEnabled(handle), adapter.cacheMode);
        EXPECT_EQ(isGDModeEnabled(handle), adapter.gdMode);
        EXPECT_EQ(isPSPGDModeEnabled(handle), adapter.pspGDMode);
        EXPECT_EQ(isOutBase(handle), adapter.outputAdapter);
        adapter.*flag = false;
    }
    char* name = nullptr;
    getGDKeyColumnName(handle, &name);
    EXPECT_STREQ(name, "Key");
    delete[] name;
    stopRequested(handle);
    setDiscovery(handle);
    EXPECT_TRUE(adapter.stopRequestedFlag && adapter.discoveryMode);
    setCallBackReference(handle, fake::handle("cb"));
    setConnectionRowType(handle, fake::handle("type"));
    setConnectionParams(handle, fake::handle("params"));
    EXPECT_EQ(adapter.callbackReference, fake::handle("cb"));
    EXPECT_EQ(adapter.connectionRowType, fake::handle("type"));
    EXPECT_EQ(adapter.connectionParams, fake::handle("params"));
}

TEST_F(EntryPoints, ReachTheirOperations) {
    const std::pair<const char*, void (*)(void*)> kVoid[] = {
        {"start", start},
        {"stop", stop},
        {"putStartSync", putStartSync},
        {"putEndSync", putEndSync},
        {"purgePending", purgePending},
        {"cleanup", cleanup},
        {"putNext", [](void* a) { putNext(a, fake::handle("row")); }},
        {"getStatistics", [](void* a) { getStatistics(a, static_cast<AdapterStatistics*>(fake::handle("s"))); }},
        {"reset", [](void* a) { EXPECT_TRUE(reset(a)); }},
        {"canDiscover", [](void* a) { EXPECT_TRUE(canDiscover(a)); }},
        {"getNext", [](void* a) { EXPECT_EQ(getNext(a), fake::handle("row")); }},
        {"commitTransaction", [](void* a) { EXPECT_EQ(commitTransaction(a), 1LL << 40); }},
    };
    for (const auto& [name, use] : kVoid) {
        use(handle);
        EXPECT_EQ(adapter.called, name);
    }
    const char* names[] = {"n"};
    const char* types[] = {"y"};
    const bool keyFlags[] = {true};
    EXPECT_EQ(createTable(handle, "s", "t", 7, names, types, keyFlags, false, true), 1);
    EXPECT_EQ(adapter.called, "st7ny101");
    setState(handle, 5);
    EXPECT_EQ(getState(handle), 5);
    char* text = nullptr;
    EXPECT_EQ(getError(handle, &text), 7);
    delete[] text;
}

TEST_F(EntryPoints, AnswerFalseForEveryCapability) {
    for (const char* name : {"ADAPTER_CAPS_SUPPORTS_KEYS", "unknown", static_cast<const char*>(nullptr)}) {
        char** values = nullptr;
        ASSERT_EQ(getCapability(handle, name, &values), 1);
        EXPECT_STREQ(values[0], "false");
        delete[] values[0];
        delete[] values;
    }
}

TEST(EntryPointsOfTheJmsAdapter, AreHarmlessBeforeReset) {
    auto& toolkit = fake::fresh();
    void* handle = createAdapter();
    EXPECT_EQ(getNext(handle), nullptr);
    EXPECT_EQ(getTotalRowsProcessed(handle), 0);
    stop(handle);
    EXPECT_EQ(toolkit.state, 4);
    EXPECT_EQ(getNext(handle), nullptr);
    EXPECT_FALSE(hasError(handle));
    char** values = nullptr;
    EXPECT_EQ(getTableNames(handle, &values, nullptr), 0);
    free(values);
    deleteAdapter(handle);
    deleteAdapter(nullptr);
    EXPECT_EQ(toolkit.takeCalls("deleteConnectionErrors").size(), 1U);
}

}  // namespace
