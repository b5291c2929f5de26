// kel-adapter-host: does with the adapter plug-in what a stream server does.
#include <fcntl.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <functional>
#include <sstream>

#include "host/commands/Broker.h"
#include "host/commands/Check.h"
#include "host/commands/Discover.h"
#include "host/commands/Rejects.h"
#include "host/commands/Run.h"
#include "host/commands/Send.h"
#include "host/discovery/Report.h"
#include "host/process/Console.h"
#include "host/process/Failure.h"
#include "host/process/Output.h"
#include "host/process/Signals.h"
#include "host/rows/RowForms.h"
#include "host/values/Text.h"

namespace {

template <typename Number>
CLI::Validator number(bool (*isAllowed)(Number), const char* allowed) {
    const auto check = [isAllowed, allowed](const std::string& text) {
        Number value = 0;
        const bool isGood = CLI::detail::lexical_cast(text, value) && isAllowed(value);
        return isGood ? std::string() : host::inQuotes(text) + " is no " + allowed;
    };
    return {check, ""};
}

CLI::Validator countAboveZero() {
    return number<std::int64_t>([](std::int64_t value) { return value > 0; }, "integer above 0");
}

CLI::Validator numberAboveZero() {
    return number<double>([](double value) { return value > 0; }, "number above 0");
}

template <int kHighest>
CLI::Validator fromZeroTo() {
    static const std::string allowed = "integer from 0 to " + std::to_string(kHighest);
    return number<int>([](int value) { return value >= 0 && value <= kHighest; }, allowed.c_str());
}

// The option that takes one of the forms, the first when absent; --output is its former name.
template <typename Forms>
void addForm(CLI::App& command, const char* of, Forms forms, std::string& chosen) {
    std::string names;
    for (const auto& form : forms) {
        if (chosen.empty()) chosen = form.name;
        host::addToList(names, form.name);
    }
    const auto check = [forms, names](const std::string& text) {
        const bool isKnown = std::any_of(std::begin(forms), std::end(forms),
                                         [&text](const auto& form) { return text == form.name; });
        return isKnown ? std::string() : host::inQuotes(text) + " is no form; the forms are " + names;
    };
    std::string help = std::string("form of the ") + of + ':';
    const char* separator = " ";
    for (const auto& form : forms) {
        help.append(separator).append(form.name).append(" (").append(form.help).append(")");
        separator = ", ";
    }
    command.add_option("--format,--output", chosen, help)
        ->type_name("FORM")
        ->check(CLI::Validator(check, ""))
        ->capture_default_str();
}

template <typename Options>
void addConfiguration(CLI::App& command, Options& options) {
    command.add_option("--config", options.config, "configuration file")->required()->type_name("FILE");
    command.add_option("--set", options.overrides, "use this value instead of the file's; may be repeated")
        ->type_name("section.name=value")
        ->allow_extra_args(false);
}

void addLogLevel(CLI::App& command, host::SessionOptions& options) {
    command.add_option("--log-level", options.logLevel, "show the adapter's log up to this level")
        ->type_name("0..7")
        ->check(fromZeroTo<7>());
}

void addRun(CLI::App& run, host::RunOptions& options) {
    addConfiguration(run, options.session);
    addLogLevel(run, options.session);
    run.add_option("--plugin", options.plugin, "use this plug-in")->type_name("FILE");
    run.add_option("--feed", options.feed, "put this file's lines on the destination meanwhile")
        ->type_name("FILE");
    run.add_option("--rows", options.rows, "end after N good rows")->type_name("N")->check(countAboveZero());
    run.add_option("--idle", options.idle, "end after so many seconds with nothing waiting")
        ->type_name("SECONDS")
        ->check(numberAboveZero());
    run.add_option("--max-bad", options.mostRejects, "end, and fail, at the Nth message that is no row")
        ->type_name("N")
        ->check(countAboveZero());
    run.add_option_function<std::string>(
           "--sink",
           [&options](const std::string& url) { options.session.overrides.push_back("sink.url=" + url); },
           "put the rows into this database: sqlite:FILE or postgresql://...")
        ->type_name("URL");
    addForm(run, "rows", host::rowForms(), options.format);
    run.add_option("--out", options.out, "append the rows to this file instead of standard output")
        ->type_name("FILE");
}

void addSend(CLI::App& send, host::SendOptions& options) {
    addConfiguration(send, options.session);
    addLogLevel(send, options.session);
    send.add_option("--repeat", options.repeat, "send the file N times")
        ->type_name("N")
        ->check(countAboveZero());
    send.add_flag("--whole", options.whole, "the file is one message; else each line is one");
    send.add_option("--soh", options.soh, "this character in the file stands for the FIX field separator")
        ->type_name("CHARACTER")
        ->check([](const std::string& text) {
            return text.size() == 1 && text[0] > 0
                       ? std::string()
                       : host::inQuotes(text) + " is not one ASCII character, such as |";
        });
    send.add_option("file", options.file, "file to send, - is standard input")
        ->type_name("FILE")
        ->capture_default_str();
}

void addRejects(CLI::App& rejects, host::RejectsOptions& options) {
    addConfiguration(rejects, options.session);
    addLogLevel(rejects, options.session);
    rejects.add_option("--plugin", options.plugin, "use this plug-in")->type_name("FILE");
    CLI::Option* list =
        rejects.add_flag("--list", options.list, "list those that were not sent again; the default");
    rejects.add_flag("--all", options.all, "list those too that were sent again");
    CLI::Option* show = rejects.add_option("--show", options.show, "show one with all that was kept of it")
                            ->type_name("ID")
                            ->check(countAboveZero())
                            ->excludes(list);
    CLI::Option* replay =
        rejects.add_option("--replay", options.replay, "make a row of it under today's configuration")
            ->type_name("ID|all")
            ->check(CLI::Validator(
                [](const std::string& text) {
                    return text == "all" ? std::string() : countAboveZero()(text);
                },
                ""))
            ->excludes(list)
            ->excludes(show);
    rejects.add_flag("--send", options.send, "send it back to its destination instead")->needs(replay);
    addForm(rejects, "rows that go out as text", host::rowForms(), options.format);
    rejects.add_option("--out", options.out, "append such rows to this file instead of standard output")
        ->type_name("FILE");
}

void addBroker(CLI::App& broker, host::BrokerOptions& options) {
    broker.add_option("--port", options.port, "port on 127.0.0.1, 0 is any free one")
        ->type_name("PORT")
        ->check(fromZeroTo<65535>())
        ->capture_default_str();
    broker.add_option("--data", options.data, "keep messages in this folder; else in memory only")
        ->type_name("DIR");
}

void addDiscover(CLI::App& discover, host::DiscoverOptions& options) {
    constexpr int kMostSamples = 10;  // the adapter collects no more
    addConfiguration(discover, options.session);
    addLogLevel(discover, options.session);
    addForm(discover, "proposal", host::discoveryForms(), options.format);
    discover.add_option("--samples", options.samples, "show at most N samples")
        ->type_name("0..10")
        ->check(fromZeroTo<kMostSamples>())
        ->capture_default_str();
    discover.add_flag("--explain", options.explain, "tell how each column's type came about");
    discover.add_option("--stream", options.stream, "name the proposed stream so")->type_name("NAME");
}

struct Command {
    CLI::App* parser;
    std::function<int()> run;
};

// What is wrong with the command line; the parser's own text where that says what is allowed.
std::string sentenceOf(const CLI::App& app, const CLI::ParseError& error) {
    std::string text = error.what();
    if (error.get_name() == "ArgumentMismatch" && text.ends_with("missing"))
        return text.substr(0, text.find(':')) + " needs a value.";
    if (text == "A subcommand is required") {
        std::string names;
        for (const CLI::App* command : app.get_subcommands({})) host::addToList(names, command->get_name());
        return "A command is required; the commands are " + names + ".";
    }
    return text.ends_with('.') ? text : text + '.';
}

// The exit code where the command line names no command to run: it asks for help, or is wrong.
int answer(const CLI::App& app, const CLI::ParseError& error) {
    std::ostringstream help;
    std::ostringstream ignored;
    if (app.exit(error, help, ignored) == 0) {
        host::Output().write(help.str());
        return host::kDone;
    }
    host::say(sentenceOf(app, error));
    host::say("Run with --help for more information.");
    return host::kUsage;
}

int execute(int argc, char** argv) {
    CLI::App app("Does with the JMS adapter plug-in what a stream server does.");
    app.require_subcommand(1);
    host::RunOptions runOptions;
    host::DiscoverOptions discoverOptions;
    host::SendOptions sendOptions;
    host::BrokerOptions brokerOptions;
    host::CheckOptions checkOptions;
    host::RejectsOptions rejectsOptions;
    const auto add = [&app](const char* name, const char* help) { return app.add_subcommand(name, help); };
    const Command commands[] = {
        {add("run", "feed the stream from the destination and write its rows"),
         [&] { return host::runRows(runOptions); }},
        {add("discover", "propose a schema from the messages that wait on the destination"),
         [&] { return host::runDiscovery(discoverOptions); }},
        {add("send", "put messages on the destination"), [&] { return host::sendMessages(sendOptions); }},
        {add("broker", "serve as an ActiveMQ broker on 127.0.0.1 and print its URL"),
         [&] { return host::runBroker(brokerOptions); }},
        {add("check", "name every problem of a configuration"),
         [&] { return host::checkConfiguration(checkOptions); }},
        {add("rejects", "list, show and replay messages of which no row could be made"),
         [&] { return host::runRejects(rejectsOptions); }},
    };
    addRun(*commands[0].parser, runOptions);
    addDiscover(*commands[1].parser, discoverOptions);
    addSend(*commands[2].parser, sendOptions);
    addBroker(*commands[3].parser, brokerOptions);
    addConfiguration(*commands[4].parser, checkOptions);
    commands[4].parser->add_flag("--connect", checkOptions.connect, "look into the database of the sink too");
    addRejects(*commands[5].parser, rejectsOptions);
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        return answer(app, error);
    }
    for (const Command& command : commands) {
        if (command.parser->parsed()) return command.run();
    }
    return host::kUsage;
}

// A file that is opened later must not become one of the three: what is meant for standard error, say, would
// land in it. The mode is the wrong one, so that using one that was closed stays an error.
void occupyStandardDescriptors() {
    for (const int wanted : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        if (::fcntl(wanted, F_GETFD) >= 0) continue;
        const int mode = wanted == STDIN_FILENO ? O_WRONLY : O_RDONLY;
        if (::open("/dev/null", mode) != wanted) std::_Exit(host::kFailed);
    }
}

}  // namespace

int main(int argc, char** argv) {
    occupyStandardDescriptors();
    // A closed pipe and a file that may grow no more are errors of the write.
    for (const int signal : {SIGPIPE, SIGXFSZ}) std::signal(signal, SIG_IGN);
    int code = host::kFailed;
    try {
        host::watchSignals();
        code = execute(argc, argv);
    } catch (const host::Failure& failure) {
        host::say(failure.what());
        code = failure.code;
    } catch (const std::exception& exception) {
        host::say("The program failed: " + std::string(exception.what()) + ".");
    }
    std::fflush(nullptr);
    // Java threads may still run; ending the process the ordinary way would tear down what they use.
    std::_Exit(code);
}
