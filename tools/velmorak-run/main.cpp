#include "Listing.h"
#include "Order.h"
#include "Settings.h"
#include "StopOnSignal.h"

#include <graph/Inspect.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <string>

namespace {

ExitStatus statusOf(const velmorak::RunReport& report) {
    if (report.wasStopped) {
        return WasStopped;
    }
    return report.hasFailure() ? PluginFailed : AllDone;
}

/// @return false when the document cannot be read, which the manager has said.
bool load(QzManager& manager, const Order& order) {
    if (!order.aidaFile.empty()) {
        // A file that cannot be read is said by the manager; what needs it fails by name.
        manager.loadAIDA(order.aidaFile);
    }
    manager.ReadDocument(order.document);
    return velmorak::lastReadError(manager).empty();
}

void prepare(QzManager& manager, const Order& order) {
    for (const std::string& setting : order.settings) {
        apply(manager, settingOf(setting));
    }
    if (!order.start.empty()) {
        startAt(manager, order.start);
    }
    if (!order.resultsFolder.empty()) {
        velmorak::setResultsFolder(manager, std::filesystem::absolute(order.resultsFolder));
    }
    velmorak::explainRuns(manager, order.isWhy);
}

ExitStatus runOnce(QzManager& manager, const StopOnSignal& signals) {
    if (signals.wasAsked()) {
        return WasStopped;
    }
    manager.Run();
    return statusOf(velmorak::lastReport(manager));
}

/// A value as a part of a file name.
std::string folderNameOf(const Setting& point) {
    std::string name = point.plugin + "." + point.input + "=" + point.value;
    std::replace(name.begin(), name.end(), '/', '_');
    return name;
}

ExitStatus runScan(QzManager& manager, const std::vector<Setting>& points, const StopOnSignal& signals) {
    const std::filesystem::path folder = velmorak::pipelineOf(manager).resultsFolder;
    ExitStatus worst = AllDone;
    for (const Setting& point : points) {
        apply(manager, point);
        std::cerr << "Scan: " << point.plugin << '.' << point.input << '=' << point.value << '\n';
        velmorak::setResultsFolder(manager, folder / folderNameOf(point));
        worst = std::max(worst, runOnce(manager, signals));
        if (worst == WasStopped) {
            break;
        }
    }
    return worst;
}

ExitStatus execute(const Order& order) {
    QzManager manager("QzAnalysisFactory");
    if (!load(manager, order)) {
        return NotUsable;
    }
    prepare(manager, order);
    if (order.isList || order.isCheck) {
        const velmorak::Pipeline pipeline = velmorak::pipelineOf(manager);
        if (order.isList) {
            list(pipeline, std::cout);
        }
        return !order.isCheck || check(pipeline, std::cerr) ? AllDone : PluginFailed;
    }
    const std::vector<Setting> points = order.scan.empty() ? std::vector<Setting>() : scanOf(order.scan);
    for (const Setting& point : points) {
        apply(manager, point);  // All are tried before the first is run.
    }
    const StopOnSignal signals([&manager] { manager.Stop(); }, order.timeoutSeconds);
    return order.scan.empty() ? runOnce(manager, signals) : runScan(manager, points, signals);
}

}  // namespace

int main(int argc, char** argv) {
    StopOnSignal::holdSignals();
    try {
        ExitStatus status = AllDone;
        const std::optional<Order> order = readOrder(argc, argv, status);
        if (!order) {
            return status;
        }
        if (order->threads > 0) {
            setenv("VELMORAK_THREADS", velmorak::textOf(order->threads).c_str(), 1);
        }
        return execute(*order);
    } catch (const std::exception& error) {
        std::cerr << "velmorak-run: " << error.what() << '\n';
        return NotUsable;
    }
}
