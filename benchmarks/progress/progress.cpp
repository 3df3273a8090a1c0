#include "Row.h"
#include "Timing.h"

#include <QzManager.h>
#include <velmorak/Table.h>
#include "graph/ManagerExtensions.h"
#include "run/Runner.h"
#include "run/messages/Messages.h"

#include <chrono>
#include <sstream>

/// velmorak_bench_progress: the same passage of rows with a line that is drawn again on a terminal and a listener, and
/// without them. The rows do about as little as a pipeline may.
namespace {

using namespace velmorak;

constexpr std::uint64_t rows = 20'000'000;
constexpr double maxRatio = 1.01;

/// As velmorak-run --events, but for the file.
class Listener : public RunListener {
public:
    void began(const Pipeline&, int) override {}
    bool isProgressDue() override { return std::chrono::steady_clock::now() - last >= std::chrono::milliseconds(100); }
    void progressed(const ProgressNow&) override { last = std::chrono::steady_clock::now(); }
    void nodeFinished(const PipelineNode&, const NodeReport&) override {}
    void ended(const RunReport&) override {}

private:
    std::chrono::steady_clock::time_point last{};
};

Pipeline pipelineToRun() {
    QzManager manager("QzAnalysisFactory");
    const std::string text = R"({"zedra": 1, "plugins": [
        {"name": "Rows", "kind": "RandomTable", "inputs": [{"name": "rows", "value": ")" +
                             textOf(static_cast<double>(rows)) + R"("}]},
        {"name": "Mean", "kind": "Statistics", "inputs": [
            {"name": "data", "from": ["Rows", "table"]}, {"name": "expression", "value": "x"}]}]})";
    readDocumentText(manager, text, "progress.zedra");
    return pipelineOf(manager);
}

void execute(const Pipeline& pipeline, bool isTerminal, RunListener* listener) {
    std::ostringstream messages;
    Runner runner(messages, isTerminal);
    runner.setListener(listener);
    runner.run(pipeline);
}

/// The cost of each chunk even if nothing is shown: checking whether it is time. In ms for all chunks.
double timeOfAsking() {
    std::ostringstream stream;
    Messages messages(stream, false);
    constexpr std::uint64_t calls = 1'000'000;
    bool isDue = false;
    const double time = bench::timeOf(
        [&] {
            for (std::uint64_t i = 0; i < calls; ++i) {
                isDue = messages.isProgressDue() || isDue;
            }
        },
        bench::Clock::Processor);
    return time * (static_cast<double>(rows) / chunkRows) / static_cast<double>(calls);
}

}  // namespace

int main() {
    const Pipeline pipeline = pipelineToRun();
    Listener listener;
    const auto times =
        bench::mediansOf({[&] { execute(pipeline, true, &listener); }, [&] { execute(pipeline, false, nullptr); }},
                         bench::Clock::Processor, 15);
    bench::printNotSlower("progress shown, 20 M random rows", "without progress", times[0], times[1] - timeOfAsking(),
                          maxRatio);
    return 0;
}
