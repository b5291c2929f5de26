// kel-adapter-host: does with the adapter plug-in what a stream server does.
#include <CLI/CLI.hpp>
#include <csignal>
#include <cstdio>
#include <cstdlib>

#include "host/Console.h"
#include "host/Run.h"
#include "host/Signals.h"

namespace {

void addRun(CLI::App& app, host::RunOptions& options) {
    CLI::App* run = app.add_subcommand("run", "feed the stream from the destination and write its rows");
    run->add_option("--config", options.config, "configuration file")->required()->type_name("FILE");
    run->add_option("--set", options.overrides, "use this value instead of the file's")
        ->type_name("section.name=value")
        ->allow_extra_args(false);
    run->add_option("--plugin", options.plugin, "use this plug-in")->type_name("FILE");
    run->add_option("--feed", options.feed, "put this file's lines on the destination meanwhile")
        ->type_name("FILE");
    run->add_option("--rows", options.rows, "end after N good rows")
        ->type_name("N")
        ->check(CLI::PositiveNumber);
    run->add_option("--idle", options.idle, "end after so many seconds with nothing waiting")
        ->type_name("SECONDS")
        ->check(CLI::PositiveNumber);
    run->add_option("--output", options.output, "form of the rows: jsonl, csv or table")
        ->check(CLI::IsMember({"jsonl", "csv", "table"}))
        ->capture_default_str();
    run->add_option("--out", options.out, "append the rows to this file instead of standard output")
        ->type_name("FILE");
    run->add_option("--log-level", options.logLevel, "show the adapter's log up to this level")
        ->type_name("0..7")
        ->check(CLI::Range(0, 7));
}

}  // namespace

int main(int argc, char** argv) {
    // Before any thread exists: all of them inherit it. A closed pipe is an error of the write.
    host::blockSignals();
    std::signal(SIGPIPE, SIG_IGN);

    CLI::App app("Does with the JMS adapter plug-in what a stream server does.");
    app.require_subcommand(1);
    host::RunOptions runOptions;
    addRun(app, runOptions);
    int code = host::kDone;
    try {
        app.parse(argc, argv);
        code = host::runRows(runOptions);
    } catch (const CLI::ParseError& error) {
        const bool isHelp = error.get_exit_code() == 0;
        app.exit(error);
        code = isHelp ? host::kDone : host::kUsage;
    } catch (const host::Failure& failure) {
        host::say(failure.what());
        code = failure.code;
    }
    std::fflush(nullptr);
    // Java threads may still run; ending the process the ordinary way would tear down what they use.
    std::_Exit(code);
}
