// Where rows go: what a file holds after a full disk or a kill, and readers that do not read.
#include "host/process/Failure.h"
#include "host/process/Output.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <fstream>
#include <memory>
#include <sstream>
#include <thread>
#include <vector>

#include "host/rows/RowFormat.h"
#include "tests/host/FailureOf.h"

namespace {

class Output : public ::testing::Test {
protected:
    // An output takes standard output for its own; `descriptor` for it, and the test's own back afterwards.
    std::unique_ptr<host::Output> standardOutput(int descriptor) {
        ::dup2(descriptor, STDOUT_FILENO);
        return std::make_unique<host::Output>("", &host::kJsonShape);
    }
    ~Output() override {
        ::dup2(own_, STDOUT_FILENO);
        ::close(own_);
    }
    std::string content() const {
        std::stringstream text;
        text << std::ifstream(file).rdbuf();
        return text.str();
    }
    const std::string file = testing::TempDir() + "output-test-rows";

private:
    const int own_ = ::dup(STDOUT_FILENO);
};

TEST_F(Output, ContinuesAFileBehindItsLastWholeRow) {
    const std::string row = R"({"stream":"S"})";
    const std::string heading = "op,seq,a\n";
    const std::string far = R"({"stream":")" + std::string(200'000, 'x');
    const struct {
        const host::RowShape* shape;
        std::string whole;
        std::string torn;
        bool isRefused = false;
    } rows[] = {
        {&host::kJsonShape, row + "\n", ""},
        {&host::kJsonShape, row + "\n" + row + "\n", R"({"str)"},
        {&host::kJsonShape, "", R"({"stream":"S","op")"},
        {&host::kJsonShape, far + "\n", far},
        {&host::kJsonShape, "", "somebody's", true},
        {&host::kCsvShape, "", "op,se"},
        {&host::kCsvShape, heading + "i,0,\"x\ny\"\"\n\"\n", ""},
        {&host::kCsvShape, heading, "i,0,\"x\ny"},
        {&host::kCsvShape, heading, "i,0,\"x\"\"\n"},
        {&host::kCsvShape, heading, "u,10"},
        {&host::kCsvShape, "i,0,5\" pipe\ni,1,\"\"\n", "p,2,\"a\nb\"\"\n"},  // a quote within a field is none
        {&host::kCsvShape, "", row, true},
        {&host::kTableShape, "op  seq       a\n--  --------  --------\n", "u          7  \xC3"},
    };
    for (const auto& [shape, whole, torn, isRefused] : rows) {
        std::ofstream(file) << whole << torn;
        const std::string text = failureOf([&, shape = shape] {
            host::Output output(file, shape);
            EXPECT_EQ(output.isAtStart(), content().empty());
            output.write("next\n");
        });
        EXPECT_EQ(text.find("no row in the form") != std::string::npos, isRefused) << text;
        EXPECT_EQ(content(), isRefused ? torn : whole + "next\n") << shape->form;
    }
}

TEST_F(Output, AFailedWriteLeavesNothingOfItsRow) {
    std::signal(SIGXFSZ, SIG_IGN);
    for (const bool isRedirected : {false, true}) {
        std::ofstream(file) << "";
        const int descriptor = ::open(file.c_str(), O_WRONLY | O_CLOEXEC);
        const auto output = isRedirected ? standardOutput(descriptor) : std::make_unique<host::Output>(file, &host::kJsonShape);
        output->write("first\n");
        rlimit before;
        ::getrlimit(RLIMIT_FSIZE, &before);
        const rlimit small{10, before.rlim_max};
        ::setrlimit(RLIMIT_FSIZE, &small);
        const std::string text = failureOf([&] { output->write("second\n"); });
        ::setrlimit(RLIMIT_FSIZE, &before);
        EXPECT_NE(text.find("File too large; the row's message comes again."), std::string::npos) << text;
        output->write("third\n");
        EXPECT_EQ(content(), "first\nthird\n");
        ::close(descriptor);
    }
}

TEST_F(Output, WaitsForAReaderAndAfterAStopOnlyShortly) {
    std::array<int, 2> blocking, quick, sockets;
    ASSERT_TRUE(::pipe(blocking.data()) == 0 && ::pipe2(quick.data(), O_NONBLOCK) == 0);
    ASSERT_EQ(::socketpair(AF_UNIX, SOCK_STREAM, 0, sockets.data()), 0);
    const std::string row(1'000'000, 'x');
    std::vector<std::unique_ptr<host::Output>> outputs;
    std::vector<std::thread> writers;
    for (const auto& [reader, writer] : {blocking, quick, sockets}) {
        outputs.push_back(standardOutput(writer));
        writers.emplace_back([&row, output = outputs.back().get()] {
            output->write(row);
            const std::string text = failureOf([&] { output->write(row); });
            EXPECT_EQ(text, "The reader of standard output took nothing for 3 s after the stop; the row's message comes again.");
        });
        ::fcntl(reader, F_SETFL, 0);
        std::string taken(row.size(), ' ');
        for (size_t done = 0; done < taken.size();) done += static_cast<size_t>(::read(reader, &taken[done], taken.size() - done));
        EXPECT_EQ(taken, row);
    }
    for (const auto& output : outputs) output->stop();
    for (std::thread& writer : writers) writer.join();
    for (const auto& pair : {blocking, quick, sockets}) {
        for (const int end : pair) ::close(end);
    }
}

}  // namespace
