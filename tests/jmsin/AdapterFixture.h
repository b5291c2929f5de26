// A JMS input adapter over the stand-in's platform library and the fake JVM.
#pragma once

#include <gtest/gtest.h>

#include "jmsin/JmsInAdapter.h"
#include "tests/doubles/FakeJvm.h"
#include "tests/doubles/Platform.h"

class AdapterFixture : public ::testing::Test {
protected:
    using Texts = fake::Texts;
    using Params = host::Parameters;

    fake::Platform platform;
    fake::Jvm jvm;
    std::unique_ptr<JmsInAdapter> owner = std::make_unique<JmsInAdapter>();
    JmsInAdapter& adapter = *owner;

    AdapterFixture() { platform.serve(adapter); }

    // Whatever the test did: no reference, buffer, exception or row is left over.
    void TearDown() override {
        owner.reset();
        EXPECT_EQ(jvm.leftOver(jvm.globals.empty() ? 0 : 1), "");
        EXPECT_TRUE(fake::rows.empty());
    }

    static Params params(const std::string& format, Params more = {}) {
        more.insert({{"dataFormat", format},
                     {"delimiter", ","},
                     {"converterClassName", "Conv"},
                     {"jndiURL", "url"},
                     {"jndiContextFactory", "ctx"}});
        return more;
    }
    static Params durable(Params more = {}) {
        more.insert({{"subscriptionMode", "DURABLE"}, {"clientID", "id"}, {"subscriptionName", "sub"}});
        return more;
    }

    // A connected adapter with empty books.
    void start(const std::string& format, const Params& more = {}) {
        platform.params = params(format, more);
        platform.errors.clear();
        ASSERT_TRUE(adapter.reset());
        platform.takeLogs();
        jvm.takeCalls();
    }

    void nextText(const std::string& text) { jvm.answer("receiveTextMessage", {fake::string(text)}); }

    // The next row, or "none", then the counters: total, good, bad.
    std::string next() {
        std::string text = fake::taken(adapter.getNext());
        for (const int64_t count : {adapter.totalRows, adapter.goodRows, adapter.badRows}) text += " " + std::to_string(count);
        return text;
    }
};
