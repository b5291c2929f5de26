// Marshalling of the C entry points, over an adapter whose discovery results the test sets.
#include "adapter/EntryPoints.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <functional>
#include <memory>

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
    bool discover(std::string table) override { return asked = table, found; }
    bool discoverTables() override { return found; }
};

class EntryPoints : public ::testing::Test {
protected:
    fake::Toolkit& toolkit = fake::fresh();
    FoundAdapter adapter;
    void* handle = static_cast<Adapter*>(&adapter);

    // What an entry point hands out, which is released, behind what it answers.
    static Strings taken(const std::function<int(char***)>& use) {
        char** values = nullptr;
        const int count = use(&values);
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
    EXPECT_EQ(taken([this](char*** v) { return getSchemaNames(handle, v); }), adapter.schemaNames);
    for (const char* schema : {static_cast<const char*>(nullptr), "schema"})
        EXPECT_EQ(taken([&](char*** v) { return getTableNames(handle, v, schema); }), adapter.tableNames);
    EXPECT_EQ(taken([this](char*** v) { return getFieldNames(handle, v, "table", nullptr); }), adapter.fieldNames);
    EXPECT_EQ(adapter.asked, "table");
    EXPECT_EQ(taken([this](char*** v) { return getFieldTypes(handle, v, nullptr, nullptr); }), adapter.fieldTypes);
    EXPECT_EQ(adapter.asked, "");
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
    EXPECT_EQ(values, &untouched);
    EXPECT_EQ(flags, &flag);
}

TEST_F(EntryPoints, ReadTheAdaptersFields) {
    using Number = std::pair<int64_t Adapter::*, int64_t (*)(void*)>;
    using Flag = std::pair<bool Adapter::*, bool (*)(void*)>;
    for (const auto& [field, read] : {Number(&Adapter::totalRows, getTotalRowsProcessed), Number(&Adapter::goodRows, getNumberOfGoodRows),
                                      Number(&Adapter::badRows, getNumberOfBadRows), Number(&Adapter::latency, getLatency),
                                      Number(&Adapter::lastProcessedGDKey, getLastProcessedRecordGDKey)}) {
        adapter.*field = 1LL << 40;
        EXPECT_EQ(read(handle), 1LL << 40);
        adapter.*field = 0;
    }
    for (const auto& [field, read] : {Flag(&Adapter::cacheMode, isCacheModeEnabled), Flag(&Adapter::gdMode, isGDModeEnabled),
                                      Flag(&Adapter::pspGDMode, isPSPGDModeEnabled), Flag(&Adapter::outputAdapter, isOutBase)}) {
        EXPECT_FALSE(read(handle));
        adapter.*field = true;
        EXPECT_TRUE(read(handle));
        adapter.*field = false;
    }
    adapter.gdBatchSize = 4;
    EXPECT_EQ(getGDBatchSize(handle), 4);
    adapter.gdKeyColumnName = "Key";
    char* name = nullptr;
    getGDKeyColumnName(handle, &name);
    EXPECT_STREQ(name, "Key");
    delete[] name;
    stopRequested(handle);
    setDiscovery(handle);
    EXPECT_TRUE(adapter.stopRequestedFlag && adapter.discoveryMode);
    void* given[] = {fake::handle("cb"), fake::handle("type"), fake::handle("params")};
    setCallBackReference(handle, given[0]);
    setConnectionRowType(handle, given[1]);
    setConnectionParams(handle, given[2]);
    EXPECT_TRUE(adapter.callbackReference == given[0] && adapter.connectionRowType == given[1] && adapter.connectionParams == given[2]);
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
        const std::unique_ptr<char*[]> owner(values);  // both are of array new
        EXPECT_STREQ(std::unique_ptr<char[]>(values[0]).get(), "false");
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
