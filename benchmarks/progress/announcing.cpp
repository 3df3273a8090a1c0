#include "Row.h"
#include "Timing.h"

#include <QzManager.h>
#include <velmorak/TemporaryFolder.h>
#include <velmorak/Value.h>
#include "graph/ManagerExtensions.h"
#include "run/Runner.h"
#include "run/announce/RuntimeFolder.h"

#include <cstdlib>
#include <sstream>

/// velmorak_bench_announcing: the same run without announcements, with announcements, and while
/// somebody looks at its histograms.
namespace {

using namespace velmorak;

constexpr std::uint64_t rows = 40'000'000;
constexpr double maxAnnounced = 1.005;
constexpr double maxLookedAt = 1.02;

std::string histogram(const std::string& name, const std::string& expression) {
    return R"(, {"name": ")" + name +
           R"(", "kind": "Histogram1D", "inputs": [{"name": "table", "from": ["Rows", "table"]},
        {"name": "expression", "value": ")" +
           expression + R"("}, {"name": "bins", "value": "100"}, {"name": "low", "value": "-5"},
        {"name": "high", "value": "5"}]})";
}

Pipeline pipelineToRun() {
    QzManager manager("QzAnalysisFactory");
    const std::string text = R"({"zedra": 1, "plugins": [{"name": "Rows", "kind": "RandomTable", "inputs": [
        {"name": "rows", "value": ")" +
                             textOf(static_cast<double>(rows)) +
                             R"~("}, {"name": "columns", "value": "x: gauss(0, 1); y: uniform(-5, 5)"}]})~" +
                             histogram("One", "x") + histogram("Two", "y") + histogram("Both", "x + y") + "]}";
    readDocumentText(manager, text, "announcing.zedra");
    return pipelineOf(manager);
}

enum class Audience { Nobody, Files, Page };

void execute(const Pipeline& pipeline, const std::string& folder, Audience audience) {
    if (audience == Audience::Nobody) {
        unsetenv("XDG_RUNTIME_DIR");
    } else {
        setenv("XDG_RUNTIME_DIR", folder.c_str(), 1);
        std::filesystem::remove(runtimeFolder() / "look");
    }
    if (audience == Audience::Page) {
        noteLook(runtimeFolder());
    }
    std::ostringstream messages;
    Runner runner(messages, false);
    runner.run(pipeline);
}

}  // namespace

int main() {
    const TemporaryFolder folder("announcing");
    const std::string place = folder.path().string();
    const Pipeline pipeline = pipelineToRun();
    const auto times = bench::mediansOf(
        {[&] { execute(pipeline, place, Audience::Nobody); }, [&] { execute(pipeline, place, Audience::Files); },
         [&] { execute(pipeline, place, Audience::Page); }},
        bench::Clock::Processor, 15);
    bench::printNotSlower("a run announces itself, 40 M random rows", "no announcements", times[1], times[0],
                          maxAnnounced);
    bench::printNotSlower("a run shows its histograms, 40 M random rows", "no announcements", times[2], times[0],
                          maxLookedAt);
    return 0;
}
