// Messages out through the bridge: which calls of the connector they become.
#include "host/Sender.h"

#include <gtest/gtest.h>

#include "host/Console.h"
#include "tests/doubles/FakeJvm.h"

namespace {

using Calls = std::vector<std::string>;

class Sending : public ::testing::Test {
protected:
    fake::Jvm jvm;
    host::Context context;
    host::RowType type{"Trades", {{"Symbol", 5, true}, {"Shares", 1, false}}};
    host::Parameters parameters{
        {"dataFormat", "CSV"},        {"connectionFactory", "CF"}, {"jndiContextFactory", "ctx"},   {"jndiURL", "url"},
        {"destinationType", "TOPIC"}, {"destinationName", "D"},    {"subscriptionMode", "DURABLE"}, {"clientID", "me"},
        {"subscriptionName", "sub"}};
    host::Sender sender{context, type, parameters};

    std::string failureOf(const std::string& text) {
        try {
            sender.send(text);
        } catch (const host::Failure& failure) {
            return failure.what();
        }
        return "none";
    }
};

TEST_F(Sending, TextsGoOutOneByOne) {
    ASSERT_TRUE(sender.reset());
    // The receiver's client ID must stay its own.
    EXPECT_EQ(jvm.takeCalls().at(1), "<init>(CF,TOPIC,D,false,[5 1],[Symbol Shares],[null null],ctx,url,,)");
    sender.send("Trades,i,IBM");
    sender.send("");
    sender.send("\xF0\x9F\x98\x80");
    EXPECT_EQ(jvm.takeCalls(),
              (Calls{"sendTextMessage(Trades,i,IBM,[])", "sendTextMessage(,[])", "sendTextMessage(\xED\xA0\xBD\xED\xB8\x80,[])"}));
    EXPECT_EQ(failureOf("ab\xFF"), "this is no UTF-8, at byte 2.");
    EXPECT_TRUE(jvm.takeCalls().empty());
    EXPECT_EQ(jvm.leftOver(1), "");
}

TEST_F(Sending, ArraysGoOutAsTheyStand) {
    parameters["dataFormat"] = "OBJECTARRAY";
    ASSERT_TRUE(sender.reset());
    jvm.takeCalls();
    sender.send(R"(["Trades", "i", null, "a\u0000\ud83d\ude00", null])");
    sender.send(" [ ] ");
    EXPECT_EQ(jvm.takeCalls(), (Calls{"sendObjectArrayMessage([Trades i null a\xC0\x80\xED\xA0\xBD\xED\xB8\x80 null],false)",
                                      "sendObjectArrayMessage([],false)"}));
    for (const char* text : {"", "[", "[1]", "[\"a\",[]]", "{}", "[\"a\"] x", "\"a\"", "[true]"}) {
        EXPECT_TRUE(failureOf(text).starts_with("this is no JSON array of strings and nulls")) << text;
    }
    for (const std::string& text : {std::string("[null]\0[]", 9), std::string("[null\0]", 7)})
        EXPECT_TRUE(failureOf(text).ends_with(", at byte " + std::to_string(text.find('\0')) + ".")) << failureOf(text);
    EXPECT_TRUE(jvm.takeCalls().empty());
}

TEST_F(Sending, AFailureLeavesNoJavaExceptionBehind) {
    ASSERT_TRUE(sender.reset());
    for (const bool throws : {false, true}) {
        jvm.answer("sendTextMessage", {nullptr, JNI_FALSE, throws});
        EXPECT_EQ(failureOf("x"), "the message could not be sent; the connector's warning above says why.");
        EXPECT_EQ(jvm.leftOver(1), "");
    }
}

}  // namespace
