// The bridge against a JVM that keeps book: which calls it makes in which order, and that it leaves nothing
// behind, neither a reference nor a buffer nor an exception.
#include "jms/JmsUtils.h"

#include <gtest/gtest.h>

#include <functional>

#include "tests/doubles/FakeJvm.h"
#include "tests/doubles/IdleAdapter.h"
#include "tests/doubles/Platform.h"
#include "toolkit/kel_java_native.h"

namespace {

using fake::Texts;

const fake::Answer kNull{nullptr}, kFalse{nullptr, JNI_FALSE}, kTwo{nullptr, 2}, kThrows{nullptr, JNI_TRUE, true};

class Bridge : public ::testing::Test {
protected:
    fake::Platform platform;
    fake::Jvm jvm;
    IdleAdapter adapter;
    JmsUtils jms;
    std::map<std::string, std::string> columnMap;
    void* row = createConnectionRow("RowByOrder");

    Bridge() {
        platform.serve(adapter);
        jms.reset(&adapter);
    }
    ~Bridge() override {
        deleteConnectionRow(row);
        EXPECT_EQ(jvm.leftOver(jms.connector != nullptr ? 1 : 0), "");
    }

    bool init(bool forInput = true, bool bindSchema = false) {
        return jms.init("CF", "QUEUE", "Q", true, forInput, bindSchema, columnMap, "ctx", "url", "id", "sub");
    }
    // One that is known to work, with empty books.
    void start() {
        ASSERT_TRUE(init());
        jvm.takeCalls();
        jvm.lookUps = 0;
    }
};

TEST_F(Bridge, NeedsAJvmAndAThreadThatAttaches) {
    _globaljvm = nullptr;
    EXPECT_FALSE(init());
    EXPECT_TRUE(jvm.calls.empty());
    _globaljvm = &jvm.vm;
    jvm.attaches = false;
    EXPECT_FALSE(init());
    EXPECT_EQ(platform.errors, (Texts{"No JVM instance found", "Cannot attach thread to JVM"}));
    jvm.attaches = true;
    start();
    _globaljvm = nullptr;
    EXPECT_FALSE(init());
    EXPECT_EQ(jms.jvm, &jvm.vm);
    jvm.attaches = false;
    EXPECT_FALSE(jms.disconnect());
    EXPECT_EQ(platform.errors.size(), 4U);
}

TEST_F(Bridge, DoesNothingBeforeInit) {
    std::string text = "old";
    EXPECT_FALSE(jms.receiveTextMessage(text) || jms.receiveObjectArrayMessage("s", row, true) || jms.receiveCustomMessage("s", row) ||
                 jms.sendTextMessage("t", row) || jms.sendObjectArrayMessage("s", row, true) || jms.sendCustomMessage("s", row) ||
                 jms.commitTransaction() || jms.disconnect() || jms.initConverter("c", "p", true));
    EXPECT_EQ(text, "old");
    EXPECT_TRUE(jvm.calls.empty() && platform.errors.empty());
}

TEST_F(Bridge, HandsInTheColumns) {
    platform.useColumns(adapter, {{"Symbol", 5, true}, {"Price", 0x1234501E, false}, {"Op", 1, false}});
    columnMap = {{"Price", "px"}, {"op", "case matters"}};
    ASSERT_TRUE(init(true, true));
    EXPECT_EQ(jvm.takeCalls(),
              (Texts{"AttachCurrentThread", "<init>(CF,QUEUE,Q,true,[5 30 1],[Symbol Price Op],[null px null],ctx,url,id,sub)",
                     "connectForInput(true)"}));
    for (const size_t count : {0U, 4096U, 4097U}) {
        platform.useStrings(adapter, Texts(count, "c"));
        EXPECT_EQ(init(true, true), count <= 4096);
    }
    EXPECT_EQ(platform.errors, (Texts{"Too many columns for the JMS connector"}));
}

TEST_F(Bridge, FailsToInitWithoutLeftovers) {
    // With a connector afterwards: a new one, or without a class of connectors still that of before.
    const std::tuple<std::string, std::string, fake::Answer, bool> kRows[] = {
        {"com/morvex/kel/connectors/JmsConnector", "", {}, true},
        {"<init>", "", {}, false},
        {"", "<init>", kThrows, false},
        {"", "connectForInput", kFalse, true},
        {"", "connectForInput", kTwo, true},
        {"", "connectForInput", kThrows, true},
        {"receiveCustomMessage", "", {}, true},
        {"connectForInput", "", {}, true},
    };
    for (const auto& [missing, method, answer, hasConnector] : kRows) {
        SCOPED_TRACE(missing + method);
        start();
        jvm.missing = missing;
        jvm.answer(method, answer);
        EXPECT_FALSE(init());
        EXPECT_EQ(jvm.leftOver(hasConnector), "");
        std::string text;
        jvm.takeCalls();
        jvm.answer("receiveTextMessage", {fake::string("the ids are there")});
        EXPECT_EQ(jms.receiveTextMessage(text), hasConnector);
        EXPECT_EQ(jvm.takeCalls().size(), hasConnector);
        jvm.missing = "";
        jvm.script.clear();
    }
}

TEST_F(Bridge, TellsByTheResultAndLeavesAnExceptionToOthers) {
    start();
    ASSERT_TRUE(init(false));  // the connector of before is given up
    EXPECT_EQ(jvm.calls.back(), "connectForOutput()");
    int column = 0;
    for (const char* value : {"IBM", static_cast<const char*>(nullptr), "25.5"}) adapter.setFieldAsStringWithIndex(row, column++, value);
    adapter.setOp(row, 'u');
    const std::pair<std::string, std::function<bool()>> kOperations[] = {
        {"initInConverter(C,param)", [&] { return jms.initConverter("C", "param", true); }},
        {"initOutConverter(C,param)", [&] { return jms.initConverter("C", "param", false); }},
        {"sendTextMessage(body,[IBM null 25.5])", [&] { return jms.sendTextMessage("body", row); }},
        {"sendObjectArrayMessage([Trades u IBM null 25.5],true)", [&] { return jms.sendObjectArrayMessage("Trades", row, true); }},
        {"sendObjectArrayMessage([IBM null 25.5],false)", [&] { return jms.sendObjectArrayMessage("Trades", row, false); }},
        {"sendCustomMessage([Trades u IBM null 25.5])", [&] { return jms.sendCustomMessage("Trades", row); }},
        {"disconnect()", [&] { return jms.disconnect(); }},
    };
    for (const auto& [call, use] : kOperations) {
        SCOPED_TRACE(call);
        EXPECT_TRUE(use());
        EXPECT_EQ(jvm.takeCalls().back(), call);
        for (const fake::Answer& failure : {kFalse, kTwo, kThrows}) {
            jvm.answer(call.substr(0, call.find('(')), failure);
            EXPECT_FALSE(use());
        }
        EXPECT_TRUE(jvm.pending && jms.exceptionOccurred(&jvm.env));
        jvm.script.clear();
    }
}

TEST_F(Bridge, JudgesACommitByTheWordThatTheVoidCallLeaves) {
    start();
    jvm.answer("commitTransaction", {fake::string("any word")});
    EXPECT_TRUE(jms.commitTransaction());
    for (const fake::Answer& failure : {kNull, fake::Answer{fake::string("any word"), JNI_TRUE, true}}) {
        jvm.answer("commitTransaction", failure);
        EXPECT_FALSE(jms.commitTransaction());
    }
}

TEST_F(Bridge, DisconnectsOnAnEnvironmentOfItsOwn) {
    start();
    JNIEnv ofInit = jvm.env;  // another one than the attaching thread gets
    jms.env = &ofInit;
    EXPECT_TRUE(jms.disconnect());
    EXPECT_EQ(jvm.takeCalls(), (Texts{"AttachCurrentThread", "disconnect()"}));
    EXPECT_EQ(jms.env, &ofInit);
}

// The thread that stops the adapter is in disconnect while the other one resets it.
TEST_F(Bridge, DisconnectsAConnectorThatIsReplacedMeanwhile) {
    start();
    jvm.meanwhile["disconnect"] = [this] { EXPECT_TRUE(init()); };
    EXPECT_TRUE(jms.disconnect());
    EXPECT_EQ(jvm.leftOver(1), "");
    // A failed start leaves none; what comes next has nothing to disconnect.
    jvm.meanwhile["<init>"] = [this] { EXPECT_TRUE(jms.disconnect()); };
    jvm.answer("<init>", kThrows);
    EXPECT_FALSE(init());
    jvm.takeCalls();
    EXPECT_FALSE(jms.disconnect());
    EXPECT_TRUE(jvm.calls.empty());
}

TEST_F(Bridge, ReceivesText) {
    start();
    for (const std::string expected : {"Trades,i,IBM", "", "\xED\xA0\xBD\xED\xB8\x80\xC0\x80"}) {
        std::string text = "old";
        jvm.answer("receiveTextMessage", {fake::string(expected)});
        EXPECT_TRUE(jms.receiveTextMessage(text));
        for (const fake::Answer& failure : {kNull, kThrows}) {
            jvm.answer("receiveTextMessage", failure);
            EXPECT_FALSE(jms.receiveTextMessage(text));
            EXPECT_EQ(text, expected);
        }
    }
}

TEST_F(Bridge, LaysArraysIntoTheRow) {
    start();
    const std::optional<std::string> null;
    const std::tuple<std::string, std::vector<std::optional<std::string>>, bool, const char*> kRows[] = {
        {"receiveObjectArrayMessage(false)", {"IBM", null, ""}, true, "o IBM,null,"},
        {"receiveObjectArrayMessage(false)", {}, true, "o"},
        {"receiveObjectArrayMessage(true)", {"Trades", "insert", "IBM", null}, true, "i IBM,null"},
        {"receiveObjectArrayMessage(true)", {"Trades", "u"}, true, "u"},
        {"receiveObjectArrayMessage(true)", {"Trades", null, "IBM"}, true, "o IBM"},
        {"receiveObjectArrayMessage(true)", {"Quotes", "u", "IBM"}, false, "o"},
        {"receiveObjectArrayMessage(true)", {null, "u", "IBM"}, false, "o"},
        {"receiveObjectArrayMessage(true)", {}, true, "o"},
        {"receiveObjectArrayMessage(true)", {"Trades"}, false, "o"},
        {"receiveCustomMessage()", {"Trades", "d", "IBM"}, true, "d IBM"},
        {"receiveCustomMessage()", {null, "d", "IBM"}, true, "d IBM"},
        {"receiveCustomMessage()", {"Trades", null, "IBM"}, true, "p IBM"},
        {"receiveCustomMessage()", {null, null}, true, "p"},
        {"receiveCustomMessage()", {"trades", "d", "IBM"}, false, "o"},
        {"receiveCustomMessage()", {"Trades"}, false, "o"},
        {"receiveCustomMessage()", {}, false, "o"},
    };
    for (const auto& [call, message, received, fields] : kRows) {
        SCOPED_TRACE(call + " " + fields);
        adapter.clearData(row);
        adapter.setOp(row, 'o');
        const bool isCustom = call == "receiveCustomMessage()";
        const auto receive = [&, prefixed = call.ends_with("(true)")] {
            return isCustom ? jms.receiveCustomMessage("Trades", row) : jms.receiveObjectArrayMessage("Trades", row, prefixed);
        };
        for (const fake::Answer& answer : {kNull, kThrows, fake::Answer{fake::array(message)}}) {
            jvm.takeCalls();
            jvm.answer(call.substr(0, call.find('(')), answer);
            EXPECT_EQ(receive(), received && answer.object);
        }
        EXPECT_EQ(fake::show(row), fields);
        EXPECT_EQ(jvm.calls, Texts{call});
    }
    EXPECT_EQ(jvm.lookUps, 0);  // this is the hot path
}

// A null result counts as no message, a null message or element as an empty one; results are appended.
TEST_F(Bridge, BrowsingTakesWhatTheConnectorMayNotGive) {
    start();
    Texts texts = {"first"};
    std::vector<Texts> rows;
    EXPECT_TRUE(jms.browseTextMessages(texts) && jms.browseObjectArrayMessages(rows));
    jvm.answer("browseTextMessages", {fake::array(std::vector<std::optional<std::string>>{"a", std::nullopt})});
    jvm.answer("browseCustomMessages", {fake::array(std::vector<fake::Value>{nullptr, fake::array(std::vector<fake::Value>{})})});
    EXPECT_TRUE(jms.browseTextMessages(texts) && jms.browseCustomMessages(rows));
    EXPECT_EQ(texts, (Texts{"first", "a", ""}));
    EXPECT_EQ(rows, std::vector<Texts>(2));
    jvm.missing = "browseObjectArrayMessages";
    EXPECT_FALSE(jms.browseObjectArrayMessages(rows));
}

}  // namespace
