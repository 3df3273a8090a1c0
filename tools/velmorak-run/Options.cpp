#include "Options.h"

#include "run/Runner.h"
#include "run/record/Version.h"

#include <velmorak/Value.h>

#include <CLI/CLI.hpp>

namespace {

constexpr const char* helpText = R"(Usage: velmorak-run [OPTIONS] DOCUMENT | velmorak-run [OPTIONS] --again RUN.JSON
Runs an analysis pipeline (*.zedra) without a window.

  -a FILE                    AIDA file for readers without a file of their own
  --set PLUGIN.INPUT=VALUE   set a value before the run; may be given again
  --scan PLUGIN.INPUT=VALUES one run for each value: from:to:step, or a,b,c;
                             given again, one for each combination
  --start PLUGIN             start at this plug-in
  --results DIR              results folder; else DOCUMENT.results beside it
  -j N                       threads (1 to 1024); results do not depend on it
  --timeout SECONDS          stop after this time
  --events FILE              progress and outcomes as JSON lines; - is stdout
  --again RUN.JSON           repeat a recorded run and compare the results
  --why                      say why each plug-in is executed or reused
  --list                     list plug-ins, inputs, types and values; no run
  --check                    check document and types; no run
  --version, --help          print and end

Messages go to standard error. Ctrl+C stops; a second one ends at once.
Exit status: 0 all done, 1 wrong usage or unreadable document, 2 a plug-in
failed, 3 stopped, 4 the results of --again differ, 5 damaged files skipped.
)";

/// @return empty, or why the text is no time limit.
std::string secondsError(const std::string& text) {
    constexpr double maxSeconds = 1e9;
    double seconds = 0.0;
    const bool isTime = velmorak::readNumber(text, seconds) && seconds > 0.0 && seconds <= maxSeconds;
    return isTime ? "" : "\"" + text + "\": expected a number of seconds above 0 and up to 1e9";
}

void addOptions(CLI::App& app, Options& options) {
    app.name("velmorak-run");
    app.formatter_fn([](const CLI::App*, const std::string&, CLI::AppFormatMode) { return std::string(helpText); });
    app.set_version_flag("--version", "velmorak-run " + std::string(velmorak::version()));
    CLI::Option* document = app.add_option("DOCUMENT", options.document);
    CLI::Option* again = app.add_option("--again", options.again);
    app.callback([document, again] {
        if ((document->count() > 0) == (again->count() > 0)) {
            throw CLI::RequiredError("DOCUMENT or --again, one of them,");
        }
    });
    app.add_option("--events", options.events);
    app.add_option("-a", options.aidaFile);
    app.add_option("--set", options.settings)->expected(1)->take_all()->allow_extra_args(false);
    app.add_option("--scan", options.scans)->expected(1)->take_all()->allow_extra_args(false);
    app.add_option("--start", options.start);
    app.add_option("--results", options.resultsFolder);
    app.add_option("-j", options.threads)->check(CLI::Range(1, velmorak::maxThreads));
    app.add_option("--timeout", options.timeoutSeconds)->check(CLI::Validator(secondsError, "SECONDS"));
    app.add_flag("--why", options.isWhy);
    app.add_flag("--list", options.isList);
    app.add_flag("--check", options.isCheck);
}

}  // namespace

std::optional<Options> parseOptions(int argc, char** argv, ExitStatus& status) {
    CLI::App app;
    Options options;
    try {
        addOptions(app, options);
        app.parse(argc, argv);
        return options;
    } catch (const CLI::ParseError& error) {
        status = app.exit(error) == 0 ? AllDone : NotUsable;
        return std::nullopt;
    }
}
