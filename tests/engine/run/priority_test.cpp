#include "RunFixture.h"

#include <sys/resource.h>
#include <unistd.h>
#include <thread>

namespace velmorak::test {
namespace {

int niceValue() {
    return getpriority(PRIO_PROCESS, static_cast<id_t>(gettid()));
}

/// A plug-in that outputs the priority of the thread that runs it.
class RunPriority : public RunTest {
protected:
    RunPriority() { add(kind, "priority"); }

    FreeFunction kind{
        "Priority", {{}, {output("number", ValueType::Number)}}, [](const Arguments&, Results& results, RunContext&) {
            results.set("number", static_cast<double>(niceValue()));
        }};
};

TEST_F(RunPriority, isLowBesideTheMainThread) {
    std::thread([this] { run(); }).join();
    EXPECT_EQ(number("priority"), std::max(niceValue(), 10));
}

TEST_F(RunPriority, isThatOfTheMainThreadIfThatWaits) {
    run();
    EXPECT_EQ(number("priority"), niceValue());
}

}  // namespace
}  // namespace velmorak::test
