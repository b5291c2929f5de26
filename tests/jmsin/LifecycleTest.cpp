// The receive loop, its counters, stop and commit.
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
        jvm.answer("receiveTextMessage",
                   {row.text != nullptr ? fake::string(row.text) : nullptr, JNI_TRUE, false});
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
    nextText("Trades,i,HP");
    adapter.getNext();
    EXPECT_EQ(toolkit.posted, (Calls{"u IBM,100", "i HP"}));
}

TEST_F(Lifecycle, TakesObjectArraysAndCustomMessages) {
    for (const auto& [format, method] : std::map<std::string, std::string>{
             {"OBJECTARRAY", "receiveObjectArrayMessage"}, {"CUSTOM", "receiveCustomMessage"}}) {
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
        jvm.answer(method, {fake::array(isCustom ? Strings{std::nullopt, std::nullopt} : Strings{}), JNI_TRUE,
                            false});
        toolkit.takeCalls();
        EXPECT_EQ(adapter.getNext(), nullptr);
        EXPECT_EQ(counters(), "2 1 1");
        Calls logged;
        for (const std::string& call : toolkit.takeCalls("logMessage")) logged.push_back(call.substr(16));
        EXPECT_EQ(logged,
                  isCustom ? (Calls{std::string(keys::kGetNext) + ")", std::string(keys::kRowBufSize) + ")"})
                           : (Calls{std::string(keys::kGetNext) + ")"}));
    }
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

TEST_F(Lifecycle, OnlyLogsRowsPutIntoIt) {
    toolkit.takeCalls();
    adapter.putNext(fake::handle("row"));
    EXPECT_EQ(toolkit.takeCalls("logMessage"),
              (Calls{std::string("logMessage(cb,7,") + keys::kPutNext + ")"}));
}

TEST_F(Lifecycle, CanDiscoverSomeFormats) {
    for (const auto& [format, expected] : std::map<std::string, bool>{
             {"CSV", true}, {"XML", true}, {"FIX", false}, {"OBJECTARRAY", true}, {"CUSTOM", false}}) {
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
