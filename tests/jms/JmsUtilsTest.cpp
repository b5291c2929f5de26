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
    ~Bridge() override { deleteConnectionRow(row); }

    bool init(bool forInput = true, bool bindSchema = false) {
        return jms.init("CF", "QUEUE", "Q", true, forInput, bindSchema, columnMap, "ctx", "url", "id", "sub");
    }
    // One that is known to work, with empty books.
    void start() {
        ASSERT_TRUE(init());
        jvm.takeCalls();
        jvm.lookUps.clear();
    }
    void answerAll(const Texts& methods, const fake::Answer& answer) {
        for (const std::string& method : methods) jvm.answer(method, answer);
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
    jvm.attaches = false;
    EXPECT_FALSE(jms.disconnect());
    EXPECT_EQ(platform.errors.size(), 3U);
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
        EXPECT_EQ(jvm.leftOver(1), "");
    }
    EXPECT_EQ(platform.errors, (Texts{"Too many columns for the JMS connector"}));
}

TEST_F(Bridge, FailsToInitWithoutLeftovers) {
    const struct {
        const char *missing, *method;
        fake::Answer answer;
        size_t globals;
    } kRows[] = {
        {"com/morvex/kel/connectors/JmsConnector", "", {}, 0},
        {"<init>", "", {}, 0},
        {"", "<init>", kThrows, 0},
        {"", "connectForInput", kFalse, 1},
        {"", "connectForInput", kTwo, 1},
        {"", "connectForInput", kThrows, 1},
        {"receiveCustomMessage", "", {}, 1},
        {"connectForInput", "", {}, 1},
    };
    for (const auto& failure : kRows) {
        SCOPED_TRACE(failure.missing + std::string(failure.method));
        JmsUtils other;
        fake::Jvm fresh;
        other.reset(&adapter);
        fresh.missing = failure.missing;
        fresh.answer(failure.method, failure.answer);
        EXPECT_FALSE(other.init("CF", "QUEUE", "Q", true, true, false, columnMap, "ctx", "url", "id", "sub"));
        EXPECT_EQ(fresh.leftOver(failure.globals), "");
        std::string text;
        EXPECT_FALSE(failure.globals == 0 && (other.receiveTextMessage(text) || other.disconnect()));
    }
}

TEST_F(Bridge, AnInitThatFailsGivesUpTheConnectorOfBefore) {
    start();
    _globaljvm = nullptr;
    EXPECT_FALSE(init());
    EXPECT_EQ(jms.jvm, &jvm.vm);
    _globaljvm = &jvm.vm;
    jvm.answer("connectForInput", kFalse);
    EXPECT_FALSE(init());
    std::string text;
    jvm.answer("receiveTextMessage", {fake::string("the ids are there")});
    EXPECT_TRUE(jms.receiveTextMessage(text));
    jvm.answer("<init>", kThrows);
    EXPECT_FALSE(init());
    jvm.takeCalls();
    EXPECT_FALSE(jms.receiveTextMessage(text) || jms.disconnect());
    EXPECT_TRUE(jvm.takeCalls().empty());
    EXPECT_EQ(jvm.leftOver(0), "");
}

TEST_F(Bridge, InitialisesTheConverter) {
    start();
    EXPECT_TRUE(jms.initConverter("C", "param", true) && jms.initConverter("C", "param", false));
    EXPECT_EQ(jvm.takeCalls(), (Texts{"initInConverter(C,param)", "initOutConverter(C,param)"}));
    for (const fake::Answer& refusal : {kFalse, kTwo}) {
        answerAll({"initInConverter", "disconnect"}, refusal);
        EXPECT_FALSE(jms.initConverter("C", "param", true) || jms.disconnect());
    }
    EXPECT_EQ(jvm.leftOver(1), "");
}

// Only the operations that are to look for an exception do; one that others meet stays for those.
TEST_F(Bridge, LeavesAnExceptionWhereItDoesNotLook) {
    start();
    answerAll({"initInConverter", "disconnect", "sendTextMessage", "sendObjectArrayMessage", "sendCustomMessage"}, kThrows);
    const std::function<bool()> kOperations[] = {
        [&] { return jms.initConverter("C", "p", true); }, [&] { return jms.disconnect(); }, [&] { return jms.sendTextMessage("t", row); },
        [&] { return jms.sendObjectArrayMessage("s", row, true); }, [&] { return jms.sendCustomMessage("s", row); }};
    for (const auto& use : kOperations) {
        EXPECT_FALSE(use());
        EXPECT_TRUE(jvm.pending && jms.exceptionOccurred(&jvm.env));
        EXPECT_EQ(jvm.leftOver(1), "") << jvm.calls.back();
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
    EXPECT_EQ(jvm.leftOver(1), "");
}

TEST_F(Bridge, DisconnectsOnAnEnvironmentOfItsOwn) {
    start();
    JNIEnv ofInit = jvm.env;  // another one than the attaching thread gets
    jms.env = &ofInit;
    EXPECT_TRUE(jms.disconnect());
    EXPECT_EQ(jvm.takeCalls(), (Texts{"AttachCurrentThread", "disconnect()"}));
    EXPECT_EQ(jms.env, &ofInit);
    EXPECT_EQ(jvm.leftOver(1), "");
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
        EXPECT_EQ(jvm.leftOver(1), "");
    }
}

TEST_F(Bridge, LaysArraysIntoTheRow) {
    start();
    const std::optional<std::string> null;
    const struct {
        const char* call;
        std::vector<std::optional<std::string>> message;
        bool received;
        const char* row;  // the row had the opcode 'o' before
    } kRows[] = {
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
    const Texts kMethods = {"receiveObjectArrayMessage", "receiveCustomMessage"};
    for (const auto& expected : kRows) {
        const std::string call = expected.call;
        SCOPED_TRACE(call + " " + expected.row);
        adapter.clearData(row);
        adapter.setOp(row, 'o');
        answerAll(kMethods, {fake::array(expected.message)});
        EXPECT_EQ(call == "receiveCustomMessage()" ? jms.receiveCustomMessage("Trades", row)
                                                   : jms.receiveObjectArrayMessage("Trades", row, call.ends_with("(true)")),
                  expected.received);
        EXPECT_EQ(fake::show(row), expected.row);
        EXPECT_EQ(jvm.takeCalls(), Texts{call});
        EXPECT_EQ(jvm.leftOver(1), "");
    }
    for (const fake::Answer& failure : {kNull, kThrows}) {
        answerAll(kMethods, failure);
        EXPECT_FALSE(jms.receiveObjectArrayMessage("Trades", row, true) || jms.receiveCustomMessage("Trades", row));
        EXPECT_EQ(jvm.leftOver(1), "");
    }
    EXPECT_TRUE(jvm.lookUps.empty());  // this is the hot path
}

TEST_F(Bridge, SendsTheRow) {
    start();
    ASSERT_TRUE(init(false));  // the connector of before is given up
    EXPECT_EQ(jvm.takeCalls().back(), "connectForOutput()");
    int column = 0;
    for (const char* value : {"IBM", static_cast<const char*>(nullptr), "25.5"}) adapter.setFieldAsStringWithIndex(row, column++, value);
    adapter.setOp(row, 'u');
    EXPECT_TRUE(jms.sendTextMessage("body", row) && jms.sendObjectArrayMessage("Trades", row, true) &&
                jms.sendObjectArrayMessage("Trades", row, false) && jms.sendCustomMessage("Trades", row));
    EXPECT_EQ(jvm.takeCalls(), (Texts{"sendTextMessage(body,[IBM null 25.5])", "sendObjectArrayMessage([Trades u IBM null 25.5],true)",
                                      "sendObjectArrayMessage([IBM null 25.5],false)", "sendCustomMessage([Trades u IBM null 25.5])"}));
    answerAll({"sendTextMessage", "sendObjectArrayMessage", "sendCustomMessage"}, kTwo);
    EXPECT_FALSE(jms.sendTextMessage("", row) || jms.sendObjectArrayMessage("", row, false) || jms.sendCustomMessage("", row));
    EXPECT_EQ(jvm.leftOver(1), "");
}

}  // namespace
