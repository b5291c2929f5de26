// The receive loop, its counters, stop and commit.
#include <algorithm>
#include <cstdlib>
#include <set>

#include "jmsin/MessageKeys.h"
#include "tests/jmsin/AdapterFixture.h"

namespace {

using Lifecycle = AdapterFixture;

TEST_F(Lifecycle, CountsWhatItTakes) {
    start("CSV");
    struct Row {
        const char* text;  // null: nothing can be had
        bool good;
        const char* counters;  // total, good, bad
    };
    const Row kRows[] = {
        {"", false, "0 0 0"},      {"Trades,i,IBM", true, "1 1 0"}, {"Quotes,i,IBM", false, "2 1 1"},
        {nullptr, false, "3 1 2"}, {"Trades,i", true, "4 2 2"},     {"Trades,,IBM", false, "5 2 3"},
    };
    for (const Row& row : kRows) {
        jvm.answer("receiveTextMessage", {row.text != nullptr ? fake::string(row.text) : nullptr, JNI_TRUE, false});
        EXPECT_EQ(adapter.getNext() != nullptr, row.good);
        EXPECT_EQ(counters(), row.counters);
    }
    EXPECT_EQ(toolkit.takeCalls("toRow"), (Calls{"toRow(row,0,errors)", "toRow(row,3,errors)"}));
    toolkit.toRowFails = true;
    nextText("Trades,i,IBM");
    EXPECT_EQ(adapter.getNext(), nullptr);
    EXPECT_EQ(counters(), "6 2 4");
    ASSERT_TRUE(adapter.reset());
    EXPECT_EQ(counters(), "0 0 0");
    EXPECT_EQ(jvm.leftOver(1), "");
}

TEST_F(Lifecycle, ClearsTheRowBeforeEachMessage) {
    start("CSV");
    nextText("Trades,u,IBM,100");
    adapter.getNext();
    nextText("Trades,i,ACME");
    adapter.getNext();
    EXPECT_EQ(toolkit.posted, (Calls{"u IBM,100", "i ACME"}));
}

TEST_F(Lifecycle, TakesObjectArraysAndCustomMessages) {
    for (const auto& [format, method] :
         std::map<std::string, std::string>{{"OBJECTARRAY", "receiveObjectArrayMessage"}, {"CUSTOM", "receiveCustomMessage"}}) {
        SCOPED_TRACE(format);
        start(format);
        const bool isCustom = format == "CUSTOM";
        using Strings = std::vector<std::optional<std::string>>;
        jvm.answer(method, {fake::array(Strings{"Trades", "u", "IBM"}), JNI_TRUE, false});
        EXPECT_NE(adapter.getNext(), nullptr);
        EXPECT_EQ(toolkit.posted.back(), "u IBM");
        jvm.answer(method, {fake::array(Strings{"Quotes", "u", "IBM"}), JNI_TRUE, false});
        EXPECT_EQ(adapter.getNext(), nullptr);
        EXPECT_EQ(counters(), "2 1 1");
        jvm.answer(method, {fake::array(isCustom ? Strings{std::nullopt, std::nullopt} : Strings{}), JNI_TRUE, false});
        toolkit.takeCalls();
        EXPECT_EQ(adapter.getNext(), nullptr);
        EXPECT_EQ(counters(), "2 1 1");
        Calls logged;
        for (const std::string& call : toolkit.takeCalls("logMessage")) logged.push_back(call.substr(16));
        EXPECT_EQ(logged, isCustom ? (Calls{std::string(keys::kGetNext) + ")", std::string(keys::kRowBufSize) + ")"})
                                   : (Calls{std::string(keys::kGetNext) + ")"}));
    }
}

TEST_F(Lifecycle, TakesFixMessagesOfTheTypeAlone) {
    const auto receive = [&](const std::vector<std::string>& texts) {
        jvm.script["receiveTextMessage"].clear();
        for (std::string text : texts) {
            std::replace(text.begin(), text.end(), '|', '\1');
            jvm.script["receiveTextMessage"].push_back({fake::string(text), JNI_TRUE, false});
        }
        return adapter.getNext() != nullptr;
    };
    setenv("KEL_HOME", KEL_SOURCE_DIR, 1);
    start("FIX", {{"fixVersion", "4.2"}, {"fixMessageType", "D"}});
    const std::string kOrder = "8=FIX.4.2|35=D|55=IBM|44=25.5|";
    EXPECT_TRUE(receive({"8=FIX.4.2|35=8|55=A|44=1|", "8=FIX.4.4|35=D|55=B|", "8=FIX.4.2|", kOrder}));
    EXPECT_EQ(counters(), "4 1 0");
    EXPECT_TRUE(receive({"35=8|44=1|", "8=FIX.4.2|35=D|55=ACME|"}));  // no field of a skipped one is left over
    EXPECT_FALSE(receive({"8=FIX.4.2|35=8|", ""}));
    EXPECT_EQ(counters(), "7 2 0");
    EXPECT_EQ(toolkit.posted, (Calls{"i IBM,25.5", "i ACME,null"}));
    EXPECT_FALSE(receive({"8=FIX|35=D|"}));  // too short to hold a version
    EXPECT_EQ(counters(), "8 2 1");
    toolkit.columns.push_back({"NoFieldOfFix"});
    EXPECT_FALSE(receive({kOrder}));
    EXPECT_EQ(counters(), "9 2 2");
    toolkit.columns.pop_back();
    EXPECT_TRUE(receive({kOrder}));
    EXPECT_EQ(counters(), "10 3 2");
    std::vector<std::string> flood(200000, "8=FIX.4.2|35=8|");
    flood.emplace_back("");
    EXPECT_FALSE(receive(flood));
    EXPECT_EQ(counters(), "200010 3 2");
}

TEST_F(Lifecycle, ADictionaryThatIsNotThereMakesEveryFixMessageBad) {
    setenv("KEL_HOME", "/nonexistent", 1);
    start("FIX", {{"fixVersion", "4.2"}, {"fixMessageType", "D"}});
    EXPECT_EQ(toolkit.errors, (Calls{"Cannot open file /nonexistent/etc/fix/dictionary4.2.txt"}));
    nextText("8=FIX.4.2\00135=D\001");
    EXPECT_EQ(adapter.getNext(), nullptr);
    EXPECT_EQ(counters(), "1 0 1");
}

TEST_F(Lifecycle, EndsWithStopAndNotWithARequest) {
    start("CSV");
    nextText("Trades,i,IBM");
    adapter.stopRequested();
    EXPECT_NE(adapter.getNext(), nullptr);
    jvm.takeCalls();
    adapter.stop();
    EXPECT_EQ(toolkit.state, 4);
    EXPECT_EQ(jvm.takeCalls(), (Calls{"AttachCurrentThread", "disconnect()"}));
    toolkit.state = 0;
    toolkit.takeCalls();
    EXPECT_EQ(adapter.getNext(), nullptr);
    EXPECT_EQ(toolkit.state, 4);
    EXPECT_TRUE(jvm.takeCalls().empty());
    EXPECT_TRUE(toolkit.takeCalls("clearData").empty());
}

TEST_F(Lifecycle, CommitsWholeBatches) {
    const Params kDurable = {{"subscriptionMode", "DURABLE"}, {"clientID", "c"}, {"subscriptionName", "s"}};
    struct Row {
        const char* batchSize;
        Calls answers;  // after each of seven messages; "c": committed
    };
    const Row kRows[] = {
        {"3", {"0", "0", "c", "1", "1", "c", "2"}},
        {"1", {"c", "c", "c", "c", "c", "c", "c"}},
        {"0", {"c", "c", "c", "c", "c", "c", "c"}},
        {"-3", {"0", "0", "c", "-1", "-1", "c", "-2"}},
    };
    for (const Row& row : kRows) {
        Params all = kDurable;
        all["batchsize"] = row.batchSize;
        start("CSV", all);
        jvm.answer("commitTransaction", {fake::string("word"), JNI_TRUE, false});
        nextText("Trades,i,IBM");
        for (const std::string& expected : row.answers) {
            adapter.getNext();
            jvm.takeCalls();
            const int64_t answer = adapter.commitTransaction();
            const bool committed = !jvm.takeCalls().empty();
            EXPECT_EQ(committed ? "c" : std::to_string(answer), expected) << row.batchSize;
            if (committed) {
                EXPECT_EQ(answer, 1);
            }
        }
    }
    start("CSV");  // not durable
    EXPECT_EQ(adapter.commitTransaction(), 0);
    EXPECT_TRUE(jvm.takeCalls().empty());
}

TEST_F(Lifecycle, ACommitThatFailsAndOneBeforeAnyMessage) {
    start("XML", {{"subscriptionMode", "DURABLE"}, {"clientID", "c"}, {"subscriptionName", "s"}, {"batchsize", "2"}});
    jvm.answer("commitTransaction", {nullptr, JNI_TRUE, true});
    EXPECT_EQ(adapter.commitTransaction(), 0);  // zero is a multiple
    EXPECT_EQ(jvm.takeCalls(), (Calls{"commitTransaction()", "ExceptionDescribe"}));
}

// Each operation with the traces that it leaves, in order.
TEST_F(Lifecycle, TracesItsOperations) {
    const auto traces = [&] {
        std::string all;
        for (const std::string& call : toolkit.takeCalls("logMessage")) {
            EXPECT_EQ(call.substr(0, 16), "logMessage(cb,7,");
            all += call.substr(16, call.size() - 17) + " ";
        }
        return all;
    };
    toolkit.params = params("XML", {{"subscriptionMode", "DURABLE"}, {"clientID", "c"}, {"subscriptionName", "s"}, {"batchsize", "2"}});
    ASSERT_TRUE(adapter.reset());
    EXPECT_EQ(traces(), "300281-7_JMSIN_ADAPTER_RESET 300304-7_JMSIN_ADAPTER_GETPARAM ");
    nextText("<Trades A='1'/>");
    EXPECT_EQ(adapter.getNext(), nullptr);
    EXPECT_EQ(traces(), "300283-7_JMSIN_ADAPTER_GETNEXT 300291-7_JMSIN_ADAPTER_PARSEXMLMSG ");
    adapter.commitTransaction();
    EXPECT_EQ(traces(), "300539-7_JMSIN_ADAPTER_COMMITTRANSACTION ");
    nextText("<Trades A=\"1\" KEL_OPS=\"u\"/>");
    EXPECT_NE(adapter.getNext(), nullptr);
    EXPECT_EQ(toolkit.posted.back(), "- A=1,KEL_OPS=u");
    traces();
    adapter.commitTransaction();
    EXPECT_EQ(traces(),
              "300539-7_JMSIN_ADAPTER_COMMITTRANSACTION "
              "300540-7_JMSIN_ADAPTER_COMMITTRANSACTION_DURABLE_SUBSCRIPTION_MODE_COMMIT ");
    adapter.putNext(fake::handle("row"));
    EXPECT_EQ(traces(), "300285-7_JMSIN_ADAPTER_PUTNEXT ");
    adapter.canDiscover();
    EXPECT_EQ(traces(), "300282-7_JMSIN_ADAPTER_CANDISCOVER ");
    adapter.stop();
    EXPECT_EQ(traces(), "300286-7_JMSIN_ADAPTER_STOP ");
    EXPECT_TRUE(toolkit.takeCalls().empty());
}

TEST_F(Lifecycle, ASecondResetReplacesTheRow) {
    start("CSV");
    toolkit.takeCalls();
    ASSERT_TRUE(adapter.reset());
    EXPECT_EQ(toolkit.takeCalls("deleteConnectionRow").size(), 1U);
    EXPECT_EQ(toolkit.liveRows(), 1U);
}

TEST_F(Lifecycle, CanDiscoverSomeFormats) {
    for (const auto& [format, expected] :
         std::map<std::string, bool>{{"CSV", true}, {"XML", true}, {"FIX", false}, {"OBJECTARRAY", true}, {"CUSTOM", false}}) {
        toolkit.params = params(format);
        ASSERT_TRUE(adapter.getParams());
        EXPECT_EQ(adapter.canDiscover(), expected) << format;
    }
}

TEST(MessageKeys, AreWellFormedAndDistinct) {
    std::set<std::string> seen;
    for (const std::string key : keys::kAll) {
        EXPECT_TRUE(seen.insert(key).second) << key;
        EXPECT_EQ(key.find_first_not_of("0123456789"), 6U) << key;
        EXPECT_EQ(key[6], '-');
        EXPECT_TRUE(key[7] == '7' || key[7] == '3') << key;
        EXPECT_EQ(key.compare(8, 15, "_JMSIN_ADAPTER_"), 0) << key;
    }
}

}  // namespace
