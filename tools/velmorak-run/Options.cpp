#include "Options.h"

#include "run/Runner.h"
#include "run/record/Version.h"

#include <velmorak/Value.h>

#include <velmorak-run/Help.h>
#include <CLI/CLI.hpp>

namespace {

constexpr int maxParts = 99999;  ///< Of a pass; the names of their files have five digits.

/// @return empty, or why the text is no time limit.
std::string secondsError(const std::string& text) {
    constexpr double maxSeconds = 1e9;
    double seconds = 0.0;
    const bool isTime = velmorak::readNumber(text, seconds) && seconds > 0.0 && seconds <= maxSeconds;
    return isTime ? "" : "\"" + text + "\": expected a number of seconds above 0 and up to 1e9";
}

void addJobOptions(CLI::App& app, Options& options) {
    CLI::Option* const parts = app.add_option("--parts", options.parts)->check(CLI::Range(1, maxParts));
    CLI::Option* const plan = app.add_option("--plan", options.job)->needs(parts);
    parts->needs(plan);
    app.add_flag("--bundle", options.isBundle)->needs(plan);
    CLI::Option* const part = app.add_option("--part", options.part);
    CLI::Option* const merge = app.add_flag("--merge", options.isMerge);
    CLI::Option* const status = app.add_flag("--status", options.isStatus);
    app.add_flag("--partial", options.isPartial)->needs(merge);
    const std::vector<CLI::Option*> commands = {plan, part, merge, status};
    for (CLI::Option* const command : commands) {
        for (CLI::Option* const other : commands) {
            if (other != command) {
                command->excludes(other);
            }
        }
        for (const char* const name : {"--again", "--list", "--check"}) {
            command->excludes(app.get_option(name));
        }
    }
    // The document and its values are in the plan.
    for (CLI::Option* const command : {part, merge, status}) {
        for (const char* const name : {"-a", "--set", "--scan", "--start"}) {
            command->excludes(app.get_option(name));
        }
    }
}

void addOptions(CLI::App& app, Options& options) {
    app.name("velmorak-run");
    app.formatter_fn([](const CLI::App*, const std::string&, CLI::AppFormatMode) { return std::string(helpText); });
    app.set_version_flag("--version", "velmorak-run " + std::string(velmorak::version()));
    CLI::Option* document = app.add_option("DOCUMENT", options.document);
    CLI::Option* again = app.add_option("--again", options.again);
    CLI::Option* look = app.add_option("--look", options.look)->excludes(again);
    app.add_flag("--json", options.isJson)->needs(look);
    app.callback([document, again, look] {
        if (document->count() + again->count() + look->count() != 1) {
            throw CLI::RequiredError("DOCUMENT, --again or --look, one of them,");
        }
    });
    app.add_option("--events", options.events);
    app.add_option("-a", options.aidaFile);
    app.add_option("--set", options.settings)->expected(1)->take_all()->allow_extra_args(false);
    app.add_option("--scan", options.scans)->expected(1)->take_all()->allow_extra_args(false);
    app.add_option("--start", options.start);
    app.add_option("--results", options.resultsFolder);
    app.add_option("-j", options.threads)->check(CLI::Range(1, velmorak::maxRunThreads));
    app.add_option("--timeout", options.timeoutSeconds)->check(CLI::Validator(secondsError, "SECONDS"));
    app.add_flag("--why", options.isWhy);
    app.add_flag("--list", options.isList);
    app.add_flag("--check", options.isCheck);
    addJobOptions(app, options);
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
