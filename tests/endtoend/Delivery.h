// Numbered messages, the rows that a host makes of them, and what is missing or came twice.
//
// KEL_SOAK=1 in the environment (tools/soak sets it) makes the numbers large.
#pragma once

#include <iostream>
#include <random>

#include "tests/endtoend/Support.h"

namespace endtoend {

inline const bool kSoak = std::getenv("KEL_SOAK") != nullptr;

// Messages whose column Shares counts from first to last.
inline std::string numbered(int first, int last) {
    std::string lines;
    for (int i = first; i <= last; ++i) lines += "Trades,i,S," + std::to_string(i) + ",0.5\n";
    return lines;
}

inline std::string durable(const std::string& url, int batchSize) {
    // Without the option the client gives up messages that came again more than six times without a commit.
    return trades(url + "?jms.redeliveryPolicy.maximumRedeliveries=-1", "TOPIC") +
           "subscriptionMode = \"DURABLE\"\nclientID = \"test\"\nsubscriptionName = \"test\"\nbatchsize = " + std::to_string(batchSize) +
           "\n";
}

class Delivery : public ::testing::Test {
protected:
    const Scratch scratch;
    std::string rows = scratch.path("rows");
    std::string column = "Shares";  // has the numbers
    int lowest = 0;                 // of those counted last
    int highest = 0;
    std::mt19937 random{20240229};

    Texts run(const std::string& config, const Texts& more = {}) const {
        Texts all = {"run", "--config", config, "--out", rows};
        all.insert(all.end(), more.begin(), more.end());
        return all;
    }
    void sleepBetween(double low, double high) {
        std::this_thread::sleep_for(Seconds(std::uniform_real_distribution<>(low, high)(random)));
    }
    // How many different numbers are in the rows, and how many of them again.
    std::pair<int, int> counted() {
        std::set<int> different;
        int repeats = 0;
        const std::string text = read(rows);
        const std::string name = "\"" + column + "\":";
        for (size_t at = text.find(name); at != std::string::npos; at = text.find(name, at + 1)) {
            if (!different.insert(std::atoi(text.c_str() + at + name.size())).second) ++repeats;
        }
        if (!different.empty()) lowest = *different.begin(), highest = *different.rbegin();
        return {static_cast<int>(different.size()), repeats};
    }
    int report(const std::string& what, int messages, int kills) {
        const auto [different, repeats] = counted();
        EXPECT_EQ(different, messages) << what;
        std::cout << what << ": " << messages << " messages, " << kills << " kills, " << messages - different << " missing, " << repeats
                  << " repeated\n";
        return repeats;
    }
};

}  // namespace endtoend
