// Messages out: lines from files and from pipes that stay open, and which calls of the connector they become.
#include "host/connection/Sender.h"
#include "host/process/Failure.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <array>
#include <filesystem>
#include <fstream>
#include <thread>

#include "host/connection/StoppableReset.h"
#include "host/process/Console.h"
#include "host/process/LineSource.h"
#include "tests/doubles/FakeJvm.h"

namespace {

using Calls = std::vector<std::string>;

TEST(LineSource, GivesLinesAsTheyStandAndStartsOver) {
    const std::string file = testing::TempDir() + "lines";
    const std::string longLine(200'000, 'x');
    std::ofstream(file) << "a\r\n\n" << longLine << "\nlast";
    host::LineSource source(file);
    std::string line;
    for (int round = 0; round < 2; ++round) {
        for (const std::string& expected : Calls{"a\r", "", longLine, "last"}) {
            ASSERT_TRUE(source.next(line));
            EXPECT_EQ(line, expected);
        }
        EXPECT_EQ(source.place(), file + ":4");
        EXPECT_FALSE(source.next(line));
        source.rewind();
    }
    EXPECT_TRUE(source.rest(line));
    EXPECT_EQ(line, "a\r\n\n" + longLine + "\nlast");
    EXPECT_THROW(host::LineSource{testing::TempDir()}, host::Failure);
}

TEST(LineSource, TakesNoMoreForAMessageThanTheConnectorDoes) {
    constexpr off_t kMost = 64 << 20;
    const std::string file = testing::TempDir() + "long lines";
    std::ofstream(file) << "first\n";
    std::string text;
    for (const off_t size : {kMost, kMost + 1}) {
        std::filesystem::resize_file(file, 6 + size);
        const bool isTooLong = size > kMost;
        const auto check = [&](const std::string& place, auto read) {
            try {
                read();
                EXPECT_FALSE(isTooLong);
                EXPECT_EQ(text.size(), kMost);
            } catch (const host::Failure& failure) {
                EXPECT_TRUE(isTooLong);
                EXPECT_EQ(failure.what(), place + ": this is longer than 67108864 bytes, the most that is sent as one message.");
            }
        };
        host::LineSource lines(file), rest(file);
        ASSERT_TRUE(lines.next(text) && rest.next(text));
        check(file + ":2", [&] { lines.next(text); });
        check(file, [&] { rest.rest(text); });
    }
    std::filesystem::remove(file);
}

TEST(LineSource, AStopEndsTheWaitForAPipe) {
    std::array<int, 2> ends;
    ASSERT_EQ(::pipe(ends.data()), 0);
    ASSERT_EQ(::write(ends[1], "a\nb", 3), 3);
    host::LineSource source("/dev/fd/" + std::to_string(ends[0]));
    std::string line;
    ASSERT_TRUE(source.next(line));
    EXPECT_EQ(line, "a");
    EXPECT_THROW(source.rewind(), host::Failure);
    std::thread stopper([&] {
        std::this_thread::sleep_for(std::chrono::milliseconds(30));
        source.stop();
    });
    EXPECT_FALSE(source.next(line)) << "half a line is none";
    stopper.join();
    EXPECT_FALSE(source.rest(line));
    ::close(ends[0]);
    ::close(ends[1]);
}

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
    for (const bool throws : {false, true}) {
        jvm.answer("sendTextMessage", {nullptr, JNI_FALSE, throws});
        EXPECT_EQ(failureOf("x"), "the message could not be sent; the reason stands above.");
        EXPECT_EQ(jvm.leftOver(1), "");
    }
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

// The adapter forgets a stop that comes as its reset begins.
TEST(StoppableReset, AStopEndsAResetWheneverItComes) {
    host::StoppableReset connecting;
    std::atomic<int> stops{0};
    std::thread stopper;
    const bool isReady = connecting.run([&] {
        stopper = std::thread([&] { connecting.stop([&] { ++stops; }); });
        while (stops == 0) std::this_thread::yield();
        stops = 0;  // forgotten
        while (stops == 0) std::this_thread::yield();
        return true;
    });
    stopper.join();
    EXPECT_FALSE(isReady);
    EXPECT_TRUE(connecting.isStopped());
    EXPECT_FALSE(connecting.run([] { return ADD_FAILURE(), true; }));
}

}  // namespace
