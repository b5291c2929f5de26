#include "tests/endtoend/Streams.h"

#include <gtest/gtest.h>
#include <signal.h>

#include <cstdlib>

namespace endtoend {

Stream Stream::durable(const std::string& url, int batchSize) {
    Stream stream;
    // Without the option the client gives up messages that came again more than six times without a commit.
    stream.url = url + "?jms.redeliveryPolicy.maximumRedeliveries=-1";
    stream.type = "TOPIC";
    stream.more =
        "subscriptionMode = \"DURABLE\"\nclientID = \"test\"\nsubscriptionName = \"test\"\nbatchsize = " + std::to_string(batchSize) + "\n";
    return stream;
}

std::string Stream::text() const {
    return "[stream]\nname = \"Trades\"\ncolumns = [\n  { name = \"Symbol\", type = \"string\", key = true "
           "},\n"
           "  { name = \"Shares\", type = \"integer\" },\n  { name = \"Price\", type = \"float\" },\n]\n"
           "[connection]\ndataFormat = \"" +
           format + "\"\n" + (format == "CSV" ? "delimiter = \",\"\n" : "") +
           "connectionFactory = \"ConnectionFactory\"\n"
           "jndiContextFactory = \"org.apache.activemq.jndi.ActiveMQInitialContextFactory\"\n"
           "jndiURL = \"" +
           url + "\"\ndestinationType = \"" + type + "\"\ndestinationName = \"test\"\n" + more + "[host]\n" + host;
}

Broker::Broker(const Scratch& scratch, bool isPersistent) : scratch_(scratch), isPersistent_(isPersistent) { start(); }

void Broker::start() {
    std::vector<std::string> arguments = {"broker", "--port", port_};
    if (isPersistent_) arguments.insert(arguments.end(), {"--data", scratch_.path("broker-data")});
    process_ = std::make_unique<HostProcess>(scratch_, "broker", arguments);
    ASSERT_TRUE(process_->waitForRows(1)) << process_->errors();
    const std::string line = process_->output();
    const size_t colon = line.find_last_of(':');
    port_ = line.substr(colon + 1, line.find_first_not_of("0123456789", colon + 1) - colon - 1);
}

void Broker::kill() {
    process_->signal(SIGKILL);
    process_->wait();
}

std::string numberedMessages(const Scratch& scratch, int first, int last) {
    std::string text;
    for (int i = first; i <= last; ++i) text += "Trades,i,S," + std::to_string(i) + ",0.5\n";
    return scratch.write("numbers-" + std::to_string(first) + ".csv", text);
}

Numbers numbersIn(const std::string& rows) {
    const std::string text = read(rows);
    const std::string kName = "\"Shares\":";
    Numbers numbers;
    for (size_t at = text.find(kName); at != std::string::npos; at = text.find(kName, at + 1)) {
        if (!numbers.different.insert(std::atoi(text.c_str() + at + kName.size())).second) ++numbers.repeats;
    }
    return numbers;
}

void send(const Scratch& scratch, const std::string& config, const std::string& file) {
    HostProcess sender(scratch, "send", {"send", "--config", config, file});
    ASSERT_EQ(sender.wait(Seconds(300)), 0) << sender.errors();
}

}  // namespace endtoend
