// Lines from files and from pipes that stay open.
#include "host/LineSource.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <fstream>
#include <thread>

#include "host/Console.h"

namespace {

TEST(LineSource, GivesLinesAsTheyStandAndStartsOver) {
    const std::string file = testing::TempDir() + "lines";
    const std::string longLine(200'000, 'x');
    std::ofstream(file) << "a\r\n\n" << longLine << "\nlast";
    host::LineSource source(file);
    std::string line;
    for (int round = 0; round < 2; ++round) {
        for (const std::string& expected : {std::string("a\r"), std::string(), longLine, std::string("last")}) {
            ASSERT_TRUE(source.next(line));
            EXPECT_EQ(line, expected);
        }
        EXPECT_EQ(source.place(), file + ":4");
        EXPECT_FALSE(source.next(line));
        source.rewind();
    }
    EXPECT_TRUE(source.rest(line));
    EXPECT_EQ(line, "a\r\n\n" + longLine + "\nlast");
    EXPECT_THROW(host::LineSource(file + ".absent"), host::Failure);
    EXPECT_THROW(host::LineSource{testing::TempDir()}, host::Failure);
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

}  // namespace
