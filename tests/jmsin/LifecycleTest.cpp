// The receive loop, its counters, stop and commit.
#include <malloc.h>

#include <algorithm>
#include <cstdlib>

#include "tests/jmsin/AdapterFixture.h"

namespace {

using Lifecycle = AdapterFixture;

TEST_F(Lifecycle, CountsWhatItTakes) {
    start("CSV");
    const std::pair<const char*, const char*> kRows[] = {
        {"", "none 0 0 0"},
        {"Trades,u,IBM,100", "u IBM,100 1 1 0"},
        {"Quotes,i,IBM", "none 2 1 1"},
        {nullptr, "none 3 1 2"},                 // nothing can be had
        {"Trades,i,ACME", "i ACME,null 4 2 2"},  // nothing is left over of the message before
        {"Trades,,IBM", "none 5 2 3"},
        {"Trades,i,IBM,1,a field too many", "none 6 2 4"},
    };
    for (const auto& [text, row] : kRows) {
        jvm.answer("receiveTextMessage", {text != nullptr ? fake::string(text) : nullptr});
        EXPECT_EQ(next(), row);
    }
    EXPECT_EQ(platform.errors.size(), 2U);
    ASSERT_TRUE(adapter.reset());
    nextText("");
    EXPECT_EQ(next(), "none 0 0 0");
}

TEST_F(Lifecycle, TakesObjectArraysAndCustomMessages) {
    using Strings = std::vector<std::optional<std::string>>;
    for (const bool isCustom : {false, true}) {
        start(isCustom ? "CUSTOM" : "OBJECTARRAY");
        const auto receive = [&](const Strings& message) {
            jvm.answer(isCustom ? "receiveCustomMessage" : "receiveObjectArrayMessage", {fake::array(message)});
            return next();
        };
        EXPECT_EQ(receive({"Trades", "u", "IBM"}), "u IBM,null 1 1 0");
        EXPECT_EQ(receive({"Quotes", "u", "IBM"}), "none 2 1 1");
        EXPECT_EQ(receive(isCustom ? Strings{std::nullopt, std::nullopt} : Strings{}), "none 2 1 1");
        EXPECT_EQ(platform.logs.back(), isCustom ? "7 300284-7_JMSIN_ADAPTER_ROWBUFSIZE" : "7 300283-7_JMSIN_ADAPTER_GETNEXT");
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
    EXPECT_EQ(receive({"8=FIX.4.2|35=8|55=A|44=1|", "8=FIX.4.4|35=D|55=B|", "8=FIX.4.2|", kOrder}), "i IBM,25.5 4 1 0");
    EXPECT_EQ(receive({"35=8|44=1|", "8=FIX.4.2|35=D|55=ACME|"}), "i ACME,null 6 2 0");  // no field of a skipped one is left over
    EXPECT_EQ(receive({"8=FIX.4.2|35=8|", ""}), "none 7 2 0");
    EXPECT_EQ(receive({"8=FIX|35=D|"}), "none 8 2 1");  // too short to hold a version
    platform.useStrings(adapter, {"Symbol", "NoFieldOfFix"});
    EXPECT_EQ(receive({kOrder}), "none 9 2 2");
    Texts flood(200000, "8=FIX.4.2|35=8|");
    flood.emplace_back("");
    EXPECT_EQ(receive(flood), "none 200009 2 2");
    jvm.answer("receiveTextMessage", {nullptr});
    EXPECT_EQ(next(), "none 200010 2 3");

    setenv("KEL_HOME", "/nonexistent", 1);
    start("FIX", {{"fixVersion", "4.1"}, {"fixMessageType", "D"}});
    EXPECT_EQ(platform.errors, (Texts{"Cannot open file /nonexistent/etc/fix/dictionary4.1.txt"}));
    EXPECT_EQ(receive({"8=FIX.4.1|35=D|"}), "none 1 0 1");
}

// What one large message takes is not kept until the adapter's end.
TEST_F(Lifecycle, GivesBackWhatALargeMessageTook) {
    constexpr size_t kLarge = 8 << 20;
    const std::string x(kLarge, 'x');
    const std::tuple<const char*, std::string, int> kRows[] = {
        {"CSV", "Trades,i," + x, 1},
        {"CSV", "Trades,i,IBM" + std::string(kLarge / 4, ','), 0},
        {"XML", "<Trades Symbol=\"" + x + "\"/>", 1},
        {"FIX",
         "8=FIX.4.2\x01"
         "35=D\x01"
         "55=" +
             x,
         1},
        {"FIX",
         "8=FIX.4.2\x01"
         "35=8\x01"
         "58=" +
             x,
         0},
    };
    const auto inUse = [] {
        const auto heap = mallinfo2();
        return heap.uordblks + heap.hblkhd;
    };
    setenv("KEL_HOME", KEL_SOURCE_DIR, 1);
    for (const auto& [format, text, good] : kRows) {
        start(format, {{"fixVersion", "4.2"}, {"fixMessageType", "D"}});
        nextText("");
        next();
        const size_t before = inUse();
        jvm.script["receiveTextMessage"] = {{fake::string(text)}, {fake::string("")}};
        next();
        EXPECT_EQ(adapter.goodRows, good) << format;
        EXPECT_EQ(adapter.totalRows, 1) << format;
        next();
        EXPECT_LT(inUse(), before + (1 << 20)) << format << " " << text.substr(0, 20);
    }
}

TEST_F(Lifecycle, EndsWithStopAndNotWithARequest) {
    start("CSV");
    nextText("Trades,i,IBM");
    adapter.stopRequested();
    EXPECT_EQ(next(), "i IBM,null 1 1 0");
    jvm.takeCalls();
    adapter.stop();
    EXPECT_TRUE(platform.context.state.exchange(0) == 4);
    EXPECT_EQ(next(), "none 1 1 0");
    EXPECT_EQ(platform.context.state, 4);
    EXPECT_EQ(jvm.takeCalls(), (Texts{"AttachCurrentThread", "disconnect()"}));
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
    next();
    EXPECT_EQ(adapter.commitTransaction(), 0);
    EXPECT_EQ(jvm.takeCalls(), (Texts{"receiveTextMessage()"}));
}

TEST_F(Lifecycle, TracesItsOperationsInOrder) {
    platform.params = params("XML", durable({{"batchsize", "2"}}));
    nextText("<Trades A='1'/>");
    ASSERT_TRUE(adapter.reset());
    for (int message = 0; message < 2; ++message) {
        next();
        adapter.commitTransaction();
    }
    adapter.putNext(nullptr);
    adapter.canDiscover();
    adapter.stop();
    std::string keys;
    for (const std::string& line : platform.logs) keys += line.substr(0, 8) + line.substr(line.find("_ADAPTER_") + 8) + " ";
    EXPECT_EQ(keys,
              "7 300281_RESET 7 300304_GETPARAM 7 300283_GETNEXT 7 300291_PARSEXMLMSG 7 300539_COMMITTRANSACTION "
              "7 300283_GETNEXT 7 300291_PARSEXMLMSG 7 300539_COMMITTRANSACTION "
              "7 300540_COMMITTRANSACTION_DURABLE_SUBSCRIPTION_MODE_COMMIT "
              "7 300285_PUTNEXT 7 300282_CANDISCOVER 7 300286_STOP ");
}

}  // namespace
