// A JMS input adapter over the fake toolkit and the fake JVM.
#pragma once

#include <gtest/gtest.h>

#include "jmsin/JmsInAdapter.h"
#include "tests/doubles/FakeJvm.h"
#include "tests/doubles/FakeToolkit.h"

class AdapterFixture : public ::testing::Test {
protected:
    using Calls = std::vector<std::string>;
    using Params = std::map<std::string, std::string>;

    fake::Toolkit& toolkit = fake::fresh();
    fake::Jvm jvm;
    std::unique_ptr<JmsInAdapter> owner = std::make_unique<JmsInAdapter>();
    JmsInAdapter& adapter = *owner;

    // Whatever the test did: no reference, buffer, exception or row is left over.
    void TearDown() override {
        owner.reset();
        EXPECT_EQ(jvm.leftOver(jvm.globals.size()), "");
        EXPECT_LE(jvm.globals.size(), connectors);
        EXPECT_EQ(toolkit.liveRows(), 0U);
    }
    size_t connectors = 1;  // how many adapters of the test connected

    AdapterFixture() {
        adapter.setCallbackReference(fake::handle("cb"));
        adapter.setConnectionParams(fake::handle("params"));
        adapter.setConnectionRowType(fake::handle("type"));
        toolkit.columns = {{"Symbol"}, {"Price"}};
    }

    static Params params(const std::string& format, const Params& more = {}) {
        Params all = {
            {"dataFormat", format}, {"delimiter", ","}, {"converterClassName", "Conv"}, {"jndiURL", "url"}, {"jndiContextFactory", "ctx"}};
        for (const auto& [name, value] : more) all[name] = value;
        return all;
    }

    // A connected adapter with an empty book of calls.
    void start(const std::string& format, const Params& more = {}) {
        toolkit.params = params(format, more);
        ASSERT_TRUE(adapter.reset());
        toolkit.takeCalls();
        jvm.takeCalls();
    }

    void nextText(const std::string& text) { jvm.answer("receiveTextMessage", {fake::string(text), JNI_TRUE, false}); }

    std::string counters() const {
        return std::to_string(adapter.totalRows) + " " + std::to_string(adapter.goodRows) + " " + std::to_string(adapter.badRows);
    }
};
