// The bridge against a JVM that keeps book: which calls it makes in which order, and that it leaves nothing
// behind, neither a reference nor a buffer nor an exception.
#include "jms/JmsUtils.h"

#include <gtest/gtest.h>

#include <functional>

#include "adapter/Adapter.h"
#include "tests/doubles/FakeJvm.h"
#include "tests/doubles/FakeToolkit.h"
#include "toolkit/kel_java_native.h"

namespace {

using Calls = std::vector<std::string>;
using Optional = std::optional<std::string>;

struct PlainAdapter : Adapter {
    void* getNext() override { return nullptr; }
    void putNext(void*) override {}
    void stop() override {}
    bool reset() override { return true; }
    bool canDiscover() override { return false; }
};

class Bridge : public ::testing::Test {
protected:
    fake::Toolkit& toolkit = fake::fresh();
    fake::Jvm jvm;
    PlainAdapter adapter;
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

TEST_F(Bridge, NeedsAJvm) {
    _globaljvm = nullptr;
    EXPECT_FALSE(init());
    EXPECT_EQ(toolkit.errors, (Calls{"No JVM instance found"}));
    EXPECT_TRUE(jvm.calls.empty());
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
    EXPECT_EQ(jvm.leftOver(1), "");
    ASSERT_TRUE(init(false));  // the connector of before is given up
    EXPECT_EQ(jvm.takeCalls().back(), "connectForOutput()");
    EXPECT_EQ(jvm.leftOver(1), "");
}

TEST_F(Bridge, HandsInTheColumns) {
    toolkit.columns = {{"Symbol", 5}, {"Price", 0x1234501E}, {"Op", 1}};
    columnMap = {{"Price", "px"}, {"op", "case matters"}};
    ASSERT_TRUE(init(true, true));
    EXPECT_EQ(jvm.lookUps, (Calls{"FindClass(com/morvex/kel/connectors/JmsConnector)",
                                  "NewStringUTF(CF)",
                                  "NewStringUTF(ctx)",
                                  "NewStringUTF(url)",
                                  "NewStringUTF(QUEUE)",
                                  "NewStringUTF(Q)",
                                  "NewStringUTF(id)",
                                  "NewStringUTF(sub)",
                                  "NewIntArray",
                                  "FindClass(java/lang/String)",
                                  "NewObjectArray",
                                  "NewObjectArray",
                                  "NewStringUTF(Symbol)",
                                  "NewStringUTF(Price)",
                                  "NewStringUTF(px)",
                                  "NewStringUTF(Op)",
                                  "GetMethodID(<init>)",
                                  "GetMethodID(connectForInput)",
                                  "GetMethodID(sendTextMessage)",
                                  "GetMethodID(sendObjectArrayMessage)",
                                  "GetMethodID(sendCustomMessage)",
                                  "GetMethodID(receiveTextMessage)",
                                  "GetMethodID(receiveObjectArrayMessage)",
                                  "GetMethodID(receiveCustomMessage)",
                                  "GetMethodID(commitTransaction)"}));
    EXPECT_EQ(jvm.takeCalls(),
              (Calls{"AttachCurrentThread", "<init>(CF,QUEUE,Q,true,[5 30 1],[Symbol Price Op],[null px null],ctx,url,id,sub)",
                     "connectForInput(true)"}));
    EXPECT_EQ(jvm.leftOver(1), "");
    toolkit.columns.clear();
    ASSERT_TRUE(init(true, true));
    EXPECT_EQ(jvm.takeCalls()[1], "<init>(CF,QUEUE,Q,true,[],[],[],ctx,url,id,sub)");
}

TEST_F(Bridge, TakesAtMost4096Columns) {
    toolkit.columns.assign(4096, {"c", 1, false});
    EXPECT_TRUE(init(true, true));
    toolkit.columns.push_back({"one more", 1, false});
    EXPECT_FALSE(init(true, true));
    EXPECT_EQ(toolkit.errors, (Calls{"Too many columns for the JMS connector"}));
    EXPECT_EQ(jvm.leftOver(1), "");
}

TEST_F(Bridge, ReportsAThreadThatCannotAttach) {
    jvm.attaches = false;
    EXPECT_FALSE(init());
    EXPECT_EQ(toolkit.errors, (Calls{"Cannot attach thread to JVM"}));
    jvm.attaches = true;
    ASSERT_TRUE(init());
    jvm.attaches = false;
    EXPECT_FALSE(jms.disconnect());
    EXPECT_EQ(toolkit.errors.size(), 2U);
}

TEST_F(Bridge, FailsToInitWithoutLeftovers) {
    struct Row {
        const char* what;
        const char* missing;
        const char* method;
        fake::Answer answer;
        size_t globals;
    };
    const Row kRows[] = {
        {"no class", "com/morvex/kel/connectors/JmsConnector", "", {}, 0},
        {"no constructor", "<init>", "", {}, 0},
        {"constructor throws", "", "<init>", {nullptr, JNI_FALSE, true}, 0},
        {"connect refuses", "", "connectForInput", {nullptr, JNI_FALSE, false}, 1},
        {"connect answers 2", "", "connectForInput", {nullptr, 2, false}, 1},
        {"connect throws", "", "connectForInput", {nullptr, JNI_TRUE, true}, 1},
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
        if (row.globals == 0) {
            EXPECT_FALSE(other.receiveTextMessage(text) || other.disconnect());
        }
    }
}

TEST_F(Bridge, AnInitThatFailsGivesUpTheConnectorOfBefore) {
    ASSERT_TRUE(init());
    _globaljvm = nullptr;
    EXPECT_FALSE(init());
    EXPECT_EQ(jms.jvm, &jvm.vm);
    _globaljvm = &jvm.vm;
    jvm.answer("connectForInput", {nullptr, JNI_FALSE, false});
    EXPECT_FALSE(init());
    std::string text;
    jvm.answer("receiveTextMessage", {fake::string("the ids are there"), JNI_TRUE, false});
    EXPECT_TRUE(jms.receiveTextMessage(text));
    jvm.answer("<init>", {nullptr, JNI_FALSE, true});
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
    for (const int answer : {0, 2}) {
        jvm.answer("initInConverter", {nullptr, static_cast<jboolean>(answer), false});
        jvm.answer("disconnect", {nullptr, static_cast<jboolean>(answer), false});
        EXPECT_FALSE(jms.initConverter("C", "param", true));
        EXPECT_FALSE(jms.disconnect());
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
        jvm.answer(method, {nullptr, JNI_TRUE, true});
        EXPECT_FALSE(use());
        EXPECT_TRUE(jvm.pending);
        EXPECT_TRUE(jms.exceptionOccurred(&jvm.env));
        EXPECT_EQ(jvm.leftOver(1), "");
    }
}

TEST_F(Bridge, JudgesACommitByTheWordThatTheVoidCallLeaves) {
    ASSERT_TRUE(init());
    jvm.answer("commitTransaction", {fake::string("any word"), JNI_TRUE, false});
    EXPECT_TRUE(jms.commitTransaction());
    jvm.answer("commitTransaction", {nullptr, JNI_TRUE, false});
    EXPECT_FALSE(jms.commitTransaction());
    jvm.answer("commitTransaction", {fake::string("any word"), JNI_TRUE, true});
    EXPECT_FALSE(jms.commitTransaction());
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
    struct Row {
        fake::Answer answer;
        bool received;
        const char* text;
    };
    const Row kRows[] = {
        {{fake::string("Trades,i,IBM"), JNI_TRUE, false}, true, "Trades,i,IBM"},
        {{fake::string(""), JNI_TRUE, false}, true, ""},
        {{fake::string("\xED\xA0\xBD\xED\xB8\x80\xC0\x80"), JNI_TRUE, false}, true, "\xED\xA0\xBD\xED\xB8\x80\xC0\x80"},
        {{nullptr, JNI_TRUE, false}, false, "old"},
        {{nullptr, JNI_TRUE, true}, false, "old"},
    };
    for (const Row& row : kRows) {
        std::string text = "old";
        jvm.answer("receiveTextMessage", row.answer);
        EXPECT_EQ(jms.receiveTextMessage(text), row.received);
        EXPECT_EQ(text, row.text);
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
        const char* method = expected.kind == kCustom ? "receiveCustomMessage" : "receiveObjectArrayMessage";
        jvm.answer(method, {fake::array(expected.message), JNI_TRUE, false});
        jvm.takeCalls();
        EXPECT_EQ(expected.kind == kCustom ? jms.receiveCustomMessage("Trades", row)
                                           : jms.receiveObjectArrayMessage("Trades", row, expected.kind == kPrefixed),
                  expected.received);
        EXPECT_EQ(fake::show(*toolkit.row), expected.row);
        EXPECT_EQ(jvm.takeCalls(), (Calls{expected.kind == kCustom     ? "receiveCustomMessage()"
                                          : expected.kind == kPrefixed ? "receiveObjectArrayMessage(true)"
                                                                       : "receiveObjectArrayMessage(false)"}));
        EXPECT_EQ(jvm.leftOver(1), "");
    }
    EXPECT_TRUE(jvm.lookUps.empty());  // this is the hot path
    for (const fake::Answer& failure : {fake::Answer{nullptr, JNI_TRUE, false}, fake::Answer{nullptr, JNI_TRUE, true}}) {
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
    adapter.setFieldAsStringWithIndex(row, 0, "IBM");
    adapter.setFieldAsStringWithIndex(row, 1, nullptr);
    adapter.setFieldAsStringWithIndex(row, 2, "25.5");
    adapter.setOp(row, 'u');
    EXPECT_TRUE(jms.sendTextMessage("body", row));
    EXPECT_TRUE(jms.sendObjectArrayMessage("Trades", row, true));
    EXPECT_TRUE(jms.sendObjectArrayMessage("Trades", row, false));
    EXPECT_TRUE(jms.sendCustomMessage("Trades", row));
    EXPECT_EQ(jvm.takeCalls(), (Calls{"sendTextMessage(body,[IBM null 25.5])", "sendObjectArrayMessage([Trades u IBM null 25.5],true)",
                                      "sendObjectArrayMessage([IBM null 25.5],false)", "sendCustomMessage([Trades u IBM null 25.5])"}));
    for (const char* method : {"sendTextMessage", "sendObjectArrayMessage", "sendCustomMessage"}) {
        jvm.answer(method, {nullptr, 2, false});
    }
    EXPECT_FALSE(jms.sendTextMessage("", row) || jms.sendObjectArrayMessage("", row, false) || jms.sendCustomMessage("", row));
    EXPECT_EQ(jvm.leftOver(1), "");
}

}  // namespace
