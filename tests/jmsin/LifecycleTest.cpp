// The receive loop, its counters, stop and commit.
#include <algorithm>
#include <cstdlib>
#include <functional>

#include "tests/jmsin/AdapterFixture.h"

namespace {

using Lifecycle = AdapterFixture;

TEST_F(Lifecycle, CountsWhatItTakes) {
    start("CSV");
    const struct {
        const char* text;  // null: nothing can be had
        const char* row;
        const char* counters;  // total, good, bad
    } kRows[] = {
        {"", "none", "0 0 0"},
        {"Trades,u,IBM,100", "u IBM,100", "1 1 0"},
        {"Quotes,i,IBM", "none", "2 1 1"},
        {nullptr, "none", "3 1 2"},
        {"Trades,i,ACME", "i ACME,null", "4 2 2"},  // nothing is left over of the message before
        {"Trades,,IBM", "none", "5 2 3"},
        {"Trades,i,IBM,1,a field too many", "none", "6 2 4"},
    };
    for (const auto& row : kRows) {
        jvm.answer("receiveTextMessage", {row.text != nullptr ? fake::string(row.text) : nullptr});
        EXPECT_EQ(next(), row.row);
        EXPECT_EQ(counters(), row.counters);
    }
    EXPECT_EQ(platform.errors.size(), 2U);
    ASSERT_TRUE(adapter.reset());
    EXPECT_EQ(counters(), "0 0 0");
}

TEST_F(Lifecycle, TakesObjectArraysAndCustomMessages) {
    using Strings = std::vector<std::optional<std::string>>;
    for (const bool isCustom : {false, true}) {
        start(isCustom ? "CUSTOM" : "OBJECTARRAY");
        const auto receive = [&](const Strings& message) {
            jvm.answer(isCustom ? "receiveCustomMessage" : "receiveObjectArrayMessage", {fake::array(message)});
            return next();
        };
        EXPECT_EQ(receive({"Trades", "u", "IBM"}), "u IBM,null");
        EXPECT_EQ(receive({"Quotes", "u", "IBM"}), "none");
        EXPECT_EQ(counters(), "2 1 1");
        platform.takeLogs();
        EXPECT_EQ(receive(isCustom ? Strings{std::nullopt, std::nullopt} : Strings{}), "none");
        EXPECT_EQ(counters(), "2 1 1");
        EXPECT_EQ(platform.takeLogs().back(), isCustom ? "7 300284-7_JMSIN_ADAPTER_ROWBUFSIZE" : "7 300283-7_JMSIN_ADAPTER_GETNEXT");
    }
}

TEST_F(Lifecycle, TakesFixMessagesOfTheTypeAlone) {
    const auto receive = [&](const Texts& texts) {
        jvm.script["receiveTextMessage"].clear();
        for (std::string text : texts) {
            std::replace(text.begin(), text.end(), '|', '\1');
            jvm.script["receiveTextMessage"].push_back({fake::string(text)});
        }
        return next();
    };
    setenv("KEL_HOME", KEL_SOURCE_DIR, 1);
    start("FIX", {{"fixVersion", "4.2"}, {"fixMessageType", "D"}});
    const std::string kOrder = "8=FIX.4.2|35=D|55=IBM|44=25.5|";
    EXPECT_EQ(receive({"8=FIX.4.2|35=8|55=A|44=1|", "8=FIX.4.4|35=D|55=B|", "8=FIX.4.2|", kOrder}), "i IBM,25.5");
    EXPECT_EQ(counters(), "4 1 0");
    EXPECT_EQ(receive({"35=8|44=1|", "8=FIX.4.2|35=D|55=ACME|"}), "i ACME,null");  // no field of a skipped one is left over
    EXPECT_EQ(receive({"8=FIX.4.2|35=8|", ""}), "none");
    EXPECT_EQ(counters(), "7 2 0");
    EXPECT_EQ(receive({"8=FIX|35=D|"}), "none");  // too short to hold a version
    EXPECT_EQ(counters(), "8 2 1");
    platform.useStrings(adapter, {"Symbol", "NoFieldOfFix"});
    EXPECT_EQ(receive({kOrder}), "none");
    EXPECT_EQ(counters(), "9 2 2");
    Texts flood(200000, "8=FIX.4.2|35=8|");
    flood.emplace_back("");
    EXPECT_EQ(receive(flood), "none");
    EXPECT_EQ(counters(), "200009 2 2");

    setenv("KEL_HOME", "/nonexistent", 1);
    start("FIX", {{"fixVersion", "4.1"}, {"fixMessageType", "D"}});
    EXPECT_EQ(platform.errors, (Texts{"Cannot open file /nonexistent/etc/fix/dictionary4.1.txt"}));
    EXPECT_EQ(receive({"8=FIX.4.1|35=D|"}), "none");
    EXPECT_EQ(counters(), "1 0 1");
}

TEST_F(Lifecycle, EndsWithStopAndNotWithARequest) {
    start("CSV");
    nextText("Trades,i,IBM");
    adapter.stopRequested();
    EXPECT_EQ(next(), "i IBM,null");
    jvm.takeCalls();
    adapter.stop();
    EXPECT_EQ(jvm.takeCalls(), (Texts{"AttachCurrentThread", "disconnect()"}));
    for (int reading = 0; reading < 2; ++reading) {
        EXPECT_EQ(platform.context.state, 4);
        platform.context.state = 0;
        EXPECT_EQ(next(), "none");
    }
    EXPECT_TRUE(jvm.takeCalls().empty());
    EXPECT_EQ(counters(), "1 1 0");
}

TEST_F(Lifecycle, CommitsWholeBatches) {
    const std::pair<const char*, const char*> kRows[] = {
        // What is answered after each of seven messages; "c": 1, for a commit.
        {"3", "0 0 c 1 1 c 2 "},
        {"1", "c c c c c c c "},
        {"0", "c c c c c c c "},
        {"-3", "0 0 c -1 -1 c -2 "},
    };
    for (const auto& [batchSize, expected] : kRows) {
        start("CSV", durable({{"batchsize", batchSize}}));
        jvm.answer("commitTransaction", {fake::string("word")});
        nextText("Trades,i,IBM");
        std::string answers;
        for (int message = 0; message < 7; ++message) {
            next();
            jvm.takeCalls();
            const int64_t answer = adapter.commitTransaction();
            const bool committed = !jvm.takeCalls().empty();
            answers += committed && answer == 1 ? "c " : std::to_string(answer) + " ";
        }
        EXPECT_EQ(answers, expected) << batchSize;
    }
    jvm.answer("commitTransaction", {nullptr, JNI_TRUE, true});
    start("CSV", durable({{"batchsize", "2"}}));
    EXPECT_EQ(adapter.commitTransaction(), 0);  // zero is a multiple
    EXPECT_EQ(jvm.takeCalls(), (Texts{"commitTransaction()", "ExceptionDescribe"}));
    start("CSV");  // not durable
    EXPECT_EQ(adapter.commitTransaction(), 0);
    EXPECT_TRUE(jvm.takeCalls().empty());
}

// Each operation with the traces that it leaves, in order.
TEST_F(Lifecycle, TracesItsOperations) {
    platform.params = params("XML", durable({{"batchsize", "2"}}));
    nextText("<Trades A='1'/>");
    const std::pair<std::function<void()>, Texts> kOperations[] = {
        {[&] { EXPECT_TRUE(adapter.reset()); }, {"7 300281-7_JMSIN_ADAPTER_RESET", "7 300304-7_JMSIN_ADAPTER_GETPARAM"}},
        {[&] { EXPECT_EQ(next(), "none"); }, {"7 300283-7_JMSIN_ADAPTER_GETNEXT", "7 300291-7_JMSIN_ADAPTER_PARSEXMLMSG"}},
        {[&] { adapter.commitTransaction(); }, {"7 300539-7_JMSIN_ADAPTER_COMMITTRANSACTION"}},
        {[&] { EXPECT_EQ(next(), "none"); }, {"7 300283-7_JMSIN_ADAPTER_GETNEXT", "7 300291-7_JMSIN_ADAPTER_PARSEXMLMSG"}},
        {[&] { adapter.commitTransaction(); },
         {"7 300539-7_JMSIN_ADAPTER_COMMITTRANSACTION", "7 300540-7_JMSIN_ADAPTER_COMMITTRANSACTION_DURABLE_SUBSCRIPTION_MODE_COMMIT"}},
        {[&] { adapter.putNext(nullptr); }, {"7 300285-7_JMSIN_ADAPTER_PUTNEXT"}},
        {[&] { adapter.canDiscover(); }, {"7 300282-7_JMSIN_ADAPTER_CANDISCOVER"}},
        {[&] { adapter.stop(); }, {"7 300286-7_JMSIN_ADAPTER_STOP"}},
    };
    for (const auto& [operate, traces] : kOperations) {
        operate();
        EXPECT_EQ(platform.takeLogs(), traces);
    }
}

}  // namespace
