#include "StopOnSignal.h"

#include <Version.h>
#include <graph/Inspect.h>

#include <CLI/CLI.hpp>

#include <iostream>
#include <string>

namespace {

enum ExitStatus { AllDone = 0, NotUsable = 1, PluginFailed = 2, WasStopped = 3 };

struct Order {
    std::string document;
    std::string aidaFile;
};

void describe(CLI::App& app, Order& order) {
    app.name("velmorak-run");
    app.set_version_flag("--version", "velmorak-run " + std::string(velmorak::version()));
    app.add_option("DOCUMENT", order.document, "The pipeline to run (*.zedra)")->required();
    app.add_option("-a", order.aidaFile, "AIDA file for readers without a file of their own")->type_name("FILE");
    app.footer(
        "Results are written into the folder DOCUMENT.results, messages to standard error.\n"
        "Exit status: 0 all done, 1 wrong usage or unreadable document, 2 a plug-in failed, 3 stopped.\n"
        "VELMORAK_THREADS sets the number of threads; results do not depend on it.");
}

ExitStatus statusOf(const velmorak::RunReport& report) {
    if (report.wasStopped) {
        return WasStopped;
    }
    return report.hasFailure() ? PluginFailed : AllDone;
}

ExitStatus execute(const Order& order) {
    QzManager manager("QzAnalysisFactory");
    if (!order.aidaFile.empty()) {
        // A file that cannot be read is said by the manager; what needs it fails by name.
        manager.loadAIDA(order.aidaFile);
    }
    manager.ReadDocument(order.document);
    if (!velmorak::lastReadError(manager).empty()) {
        return NotUsable;
    }
    const StopOnSignal signals([&manager] { manager.Stop(); });
    if (signals.wasAsked()) {
        return WasStopped;
    }
    manager.Run();
    return statusOf(velmorak::lastReport(manager));
}

}  // namespace

int main(int argc, char** argv) {
    StopOnSignal::holdSignals();
    CLI::App app("Runs an analysis pipeline without a window.");
    Order order;
    try {
        describe(app, order);
        app.parse(argc, argv);
        return execute(order);
    } catch (const CLI::ParseError& error) {
        return app.exit(error) == 0 ? AllDone : NotUsable;
    } catch (const std::exception& error) {
        std::cerr << "velmorak-run: " << error.what() << '\n';
        return NotUsable;
    }
}
