// The bridge against a JVM that keeps book: which calls it makes in which order, and that it leaves nothing
// behind, neither a reference nor a buffer nor an exception.
#include "jms/JmsUtils.h"

#include <gtest/gtest.h>

#include <functional>

#include "tests/doubles/FakeJvm.h"
#include "tests/doubles/FakeToolkit.h"
#include "tests/doubles/IdleAdapter.h"
#include "toolkit/kel_java_native.h"

namespace {

using Calls = std::vector<std::string>;
using Optional = std::optional<std::string>;

const fake::Answer kNull{nullptr, JNI_TRUE, false}, kFalse{nullptr, JNI_FALSE, false}, kTwo{nullptr, 2, false},
    kThrows{nullptr, JNI_TRUE, true};

fake::Answer answering(const fake::Value& value) { return {value, JNI_TRUE, false}; }

class Bridge : public ::testing::Test {
protected:
    fake::Toolkit& toolkit = fake::fresh();
    fake::Jvm jvm;
    IdleAdapter adapter;
    JmsUtils jms;
    std::map<std::string, std::string> columnMap;

    Bridge() { jms.reset(&adapter); }
    ~Bridge() override {
        if (toolkit.row != nullptr) adapter.deleteConnectionRow(toolkit.row);
    }

    bool init(bool forInput = true, bool bindSchema = false) {
        return jms.init("CF", "QUEUE", "Q", true, forInput, bindSchema, columnMap, "ctx", "url", "id", "sub");
    }
    void* newRow() { return adapter.createConnectionRow("RowByOrder"); }
};

TEST_F(Bridge, NeedsAJvmAndAThreadThatAttaches) {
    _globaljvm = nullptr;
    EXPECT_FALSE(init());
    EXPECT_TRUE(jvm.calls.empty());
    _globaljvm = &jvm.vm;
    jvm.attaches = false;
    EXPECT_FALSE(init());
    EXPECT_EQ(toolkit.errors, (Calls{"No JVM instance found", "Cannot attach thread to JVM"}));
    jvm.attaches = true;
    ASSERT_TRUE(init());
    jvm.attaches = false;
    EXPECT_FALSE(jms.disconnect());
    EXPECT_EQ(toolkit.errors.size(), 3U);
}

TEST_F(Bridge, DoesNothingBeforeInit) {
    std::string text = "old";
    void* row = newRow();
    EXPECT_FALSE(jms.receiveTextMessage(text) || jms.receiveObjectArrayMessage("s", row, true) || jms.receiveCustomMessage("s", row) ||
                 jms.sendTextMessage("t", row) || jms.sendObjectArrayMessage("s", row, true) || jms.sendCustomMessage("s", row) ||
                 jms.commitTransaction() || jms.disconnect() || jms.initConverter("c", "p", true));
    EXPECT_EQ(text, "old");
    EXPECT_TRUE(jvm.calls.empty() && toolkit.errors.empty());
}

TEST_F(Bridge, ConnectsWithoutASchema) {
    ASSERT_TRUE(init());
    EXPECT_EQ(jvm.takeCalls(),
              (Calls{"AttachCurrentThread", "<init>(CF,QUEUE,Q,true,null,null,null,ctx,url,id,sub)", "connectForInput(false)"}));
    ASSERT_TRUE(init(false));  // the connector of before is given up
    EXPECT_EQ(jvm.takeCalls().back(), "connectForOutput()");
    EXPECT_EQ(jvm.leftOver(1), "");
}

TEST_F(Bridge, HandsInTheColumns) {
    toolkit.columns = {{"Symbol", 5}, {"Price", 0x1234501E}, {"Op", 1}};
    columnMap = {{"Price", "px"}, {"op", "case matters"}};
    ASSERT_TRUE(init(true, true));
    std::string lookUps;
    for (const std::string& lookUp : jvm.lookUps) lookUps += lookUp + " ";
    EXPECT_EQ(lookUps,
              "FindClass(com/morvex/kel/connectors/JmsConnector) NewStringUTF(CF) NewStringUTF(ctx) NewStringUTF(url) "
              "NewStringUTF(QUEUE) NewStringUTF(Q) NewStringUTF(id) NewStringUTF(sub) NewIntArray FindClass(java/lang/String) "
              "NewObjectArray NewObjectArray NewStringUTF(Symbol) NewStringUTF(Price) NewStringUTF(px) NewStringUTF(Op) "
              "GetMethodID(<init>) GetMethodID(connectForInput) GetMethodID(sendTextMessage) GetMethodID(sendObjectArrayMessage) "
              "GetMethodID(sendCustomMessage) GetMethodID(receiveTextMessage) GetMethodID(receiveObjectArrayMessage) "
              "GetMethodID(receiveCustomMessage) GetMethodID(commitTransaction) ");
    EXPECT_EQ(jvm.takeCalls(),
              (Calls{"AttachCurrentThread", "<init>(CF,QUEUE,Q,true,[5 30 1],[Symbol Price Op],[null px null],ctx,url,id,sub)",
                     "connectForInput(true)"}));
    EXPECT_EQ(jvm.leftOver(1), "");
    toolkit.columns.clear();
    ASSERT_TRUE(init(true, true));
    EXPECT_EQ(jvm.takeCalls()[1], "<init>(CF,QUEUE,Q,true,[],[],[],ctx,url,id,sub)");
}

TEST_F(Bridge, TakesAtMost4096Columns) {
    for (const size_t count : {4096U, 4097U}) {
        toolkit.columns.assign(count, {"c", 1, false});
        EXPECT_EQ(init(true, true), count == 4096);
        EXPECT_EQ(jvm.leftOver(1), "");
    }
    EXPECT_EQ(toolkit.errors, (Calls{"Too many columns for the JMS connector"}));
}

TEST_F(Bridge, FailsToInitWithoutLeftovers) {
    struct Row {
        const char *what, *missing, *method;
        fake::Answer answer;
        size_t globals;
    };
    const Row kRows[] = {
        {"no class", "com/morvex/kel/connectors/JmsConnector", "", {}, 0},
        {"no constructor", "<init>", "", {}, 0},
        {"constructor throws", "", "<init>", kThrows, 0},
        {"connect refuses", "", "connectForInput", kFalse, 1},
        {"connect answers 2", "", "connectForInput", kTwo, 1},
        {"connect throws", "", "connectForInput", kThrows, 1},
        {"a method is missing", "receiveCustomMessage", "", {}, 1},
        {"connect is missing", "connectForInput", "", {}, 1},
    };
    for (const Row& row : kRows) {
        SCOPED_TRACE(row.what);
        JmsUtils other;
        fake::Jvm fresh;
        other.reset(&adapter);
        fresh.missing = row.missing;
        if (*row.method != '\0') fresh.answer(row.method, row.answer);
        EXPECT_FALSE(other.init("CF", "QUEUE", "Q", true, true, false, columnMap, "ctx", "url", "id", "sub"));
        EXPECT_EQ(fresh.leftOver(row.globals), "");
        std::string text;
        EXPECT_FALSE(row.globals == 0 && (other.receiveTextMessage(text) || other.disconnect()));
    }
}

TEST_F(Bridge, AnInitThatFailsGivesUpTheConnectorOfBefore) {
    ASSERT_TRUE(init());
    _globaljvm = nullptr;
    EXPECT_FALSE(init());
    EXPECT_EQ(jms.jvm, &jvm.vm);
    _globaljvm = &jvm.vm;
    jvm.answer("connectForInput", kFalse);
    EXPECT_FALSE(init());
    std::string text;
    jvm.answer("receiveTextMessage", answering(fake::string("the ids are there")));
    EXPECT_TRUE(jms.receiveTextMessage(text));
    jvm.answer("<init>", kThrows);
    EXPECT_FALSE(init());
    jvm.takeCalls();
    EXPECT_FALSE(jms.receiveTextMessage(text) || jms.disconnect());
    EXPECT_TRUE(jvm.takeCalls().empty());
    EXPECT_EQ(jvm.leftOver(0), "");
}

TEST_F(Bridge, InitialisesTheConverter) {
    ASSERT_TRUE(init());
    jvm.takeCalls();
    EXPECT_TRUE(jms.initConverter("C", "param", true));
    EXPECT_TRUE(jms.initConverter("C", "param", false));
    EXPECT_EQ(jvm.takeCalls(), (Calls{"initInConverter(C,param)", "initOutConverter(C,param)"}));
    for (const fake::Answer& refusal : {kFalse, kTwo}) {
        jvm.answer("initInConverter", refusal);
        jvm.answer("disconnect", refusal);
        EXPECT_FALSE(jms.initConverter("C", "param", true) || jms.disconnect());
    }
    EXPECT_EQ(jvm.leftOver(1), "");
}

// Only the operations that are to look for an exception do; one that others meet stays for those.
TEST_F(Bridge, LeavesAnExceptionWhereItDoesNotLook) {
    ASSERT_TRUE(init());
    void* row = newRow();
    const std::pair<const char*, std::function<bool()>> kOperations[] = {
        {"initInConverter", [&] { return jms.initConverter("C", "p", true); }},
        {"disconnect", [&] { return jms.disconnect(); }},
        {"sendTextMessage", [&] { return jms.sendTextMessage("t", row); }},
        {"sendObjectArrayMessage", [&] { return jms.sendObjectArrayMessage("s", row, true); }},
        {"sendCustomMessage", [&] { return jms.sendCustomMessage("s", row); }},
    };
    for (const auto& [method, use] : kOperations) {
        SCOPED_TRACE(method);
        jvm.answer(method, kThrows);
        EXPECT_FALSE(use());
        EXPECT_TRUE(jvm.pending);
        EXPECT_TRUE(jms.exceptionOccurred(&jvm.env));
        EXPECT_EQ(jvm.leftOver(1), "");
    }
}

TEST_F(Bridge, JudgesACommitByTheWordThatTheVoidCallLeaves) {
    ASSERT_TRUE(init());
    jvm.answer("commitTransaction", answering(fake::string("any word")));
    EXPECT_TRUE(jms.commitTransaction());
    for (const fake::Answer& failure : {kNull, fake::Answer{fake::string("any word"), JNI_TRUE, true}}) {
        jvm.answer("commitTransaction", failure);
        EXPECT_FALSE(jms.commitTransaction());
    }
    EXPECT_EQ(jvm.leftOver(1), "");
}

TEST_F(Bridge, DisconnectsOnAnEnvironmentOfItsOwn) {
    ASSERT_TRUE(init());
    jvm.takeCalls();
    JNIEnv ofInit = jvm.env;  // another one than the attaching thread gets
    jms.env = &ofInit;
    EXPECT_TRUE(jms.disconnect());
    EXPECT_EQ(jvm.takeCalls(), (Calls{"AttachCurrentThread", "disconnect()"}));
    EXPECT_EQ(jms.env, &ofInit);
    EXPECT_EQ(jvm.leftOver(1), "");
}

TEST_F(Bridge, ReceivesText) {
    ASSERT_TRUE(init());
    for (const std::string expected : {"Trades,i,IBM", "", "\xED\xA0\xBD\xED\xB8\x80\xC0\x80"}) {
        std::string text = "old";
        jvm.answer("receiveTextMessage", answering(fake::string(expected)));
        EXPECT_TRUE(jms.receiveTextMessage(text));
        EXPECT_EQ(text, expected);
        for (const fake::Answer& failure : {kNull, kThrows}) {
            jvm.answer("receiveTextMessage", failure);
            EXPECT_FALSE(jms.receiveTextMessage(text));
            EXPECT_EQ(text, expected);
        }
        EXPECT_EQ(jvm.leftOver(1), "");
    }
}

TEST_F(Bridge, LaysArraysIntoTheRow) {
    ASSERT_TRUE(init());
    enum Kind { kPlain, kPrefixed, kCustom };
    struct Row {
        Kind kind;
        std::vector<Optional> message;
        bool received;
        const char* row;  // the row had the opcode 'o' before
    };
    const Row kRows[] = {
        {kPlain, {"IBM", std::nullopt, ""}, true, "o IBM,null,"},
        {kPlain, {}, true, "o"},
        {kPrefixed, {"Trades", "insert", "IBM", std::nullopt}, true, "i IBM,null"},
        {kPrefixed, {"Trades", "u"}, true, "u"},
        {kPrefixed, {"Trades", std::nullopt, "IBM"}, true, "o IBM"},
        {kPrefixed, {"Quotes", "u", "IBM"}, false, "o"},
        {kPrefixed, {std::nullopt, "u", "IBM"}, false, "o"},
        {kPrefixed, {}, true, "o"},
        {kPrefixed, {"Trades"}, false, "o"},
        {kCustom, {"Trades", "d", "IBM"}, true, "d IBM"},
        {kCustom, {std::nullopt, "d", "IBM"}, true, "d IBM"},
        {kCustom, {"Trades", std::nullopt, "IBM"}, true, "p IBM"},
        {kCustom, {std::nullopt, std::nullopt}, true, "p"},
        {kCustom, {"trades", "d", "IBM"}, false, "o"},
        {kCustom, {"Trades"}, false, "o"},
        {kCustom, {}, false, "o"},
    };
    void* row = newRow();
    jvm.lookUps.clear();
    for (const Row& expected : kRows) {
        SCOPED_TRACE(testing::Message() << expected.kind << " " << expected.row);
        adapter.clearData(row);
        adapter.setOp(row, 'o');
        const bool isCustom = expected.kind == kCustom, isPrefixed = expected.kind == kPrefixed;
        jvm.answer(isCustom ? "receiveCustomMessage" : "receiveObjectArrayMessage", answering(fake::array(expected.message)));
        jvm.takeCalls();
        EXPECT_EQ(isCustom ? jms.receiveCustomMessage("Trades", row) : jms.receiveObjectArrayMessage("Trades", row, isPrefixed),
                  expected.received);
        EXPECT_EQ(fake::show(*toolkit.row), expected.row);
        const std::string prefixed = isPrefixed ? "true" : "false";
        EXPECT_EQ(jvm.takeCalls(), Calls{isCustom ? "receiveCustomMessage()" : "receiveObjectArrayMessage(" + prefixed + ")"});
        EXPECT_EQ(jvm.leftOver(1), "");
    }
    EXPECT_TRUE(jvm.lookUps.empty());  // this is the hot path
    for (const fake::Answer& failure : {kNull, kThrows}) {
        jvm.answer("receiveObjectArrayMessage", failure);
        jvm.answer("receiveCustomMessage", failure);
        EXPECT_FALSE(jms.receiveObjectArrayMessage("Trades", row, true) || jms.receiveCustomMessage("Trades", row));
        EXPECT_EQ(jvm.leftOver(1), "");
    }
}

TEST_F(Bridge, SendsTheRow) {
    ASSERT_TRUE(init(false));
    jvm.takeCalls();
    void* row = newRow();
    int column = 0;
    for (const char* value : {"IBM", static_cast<const char*>(nullptr), "25.5"}) adapter.setFieldAsStringWithIndex(row, column++, value);
    adapter.setOp(row, 'u');
    EXPECT_TRUE(jms.sendTextMessage("body", row) && jms.sendObjectArrayMessage("Trades", row, true) &&
                jms.sendObjectArrayMessage("Trades", row, false) && jms.sendCustomMessage("Trades", row));
    EXPECT_EQ(jvm.takeCalls(), (Calls{"sendTextMessage(body,[IBM null 25.5])", "sendObjectArrayMessage([Trades u IBM null 25.5],true)",
                                      "sendObjectArrayMessage([IBM null 25.5],false)", "sendCustomMessage([Trades u IBM null 25.5])"}));
    for (const char* method : {"sendTextMessage", "sendObjectArrayMessage", "sendCustomMessage"}) jvm.answer(method, kTwo);
    EXPECT_FALSE(jms.sendTextMessage("", row) || jms.sendObjectArrayMessage("", row, false) || jms.sendCustomMessage("", row));
    EXPECT_EQ(jvm.leftOver(1), "");
}

}  // namespace
