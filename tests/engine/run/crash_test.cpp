#include "RunFixture.h"

#include <csignal>
#include <limits>

namespace velmorak::test {
namespace {

/// The program ends in each of these, in a copy of itself.
class CrashNotes : public RunTest {
protected:
    CrashNotes() { ::testing::GTEST_FLAG(death_test_style) = "threadsafe"; }

    /// Says on standard error what a user reads there.
    void runAloud() {
        Runner aloud(std::cerr, false);
        aloud.run(pipeline);
    }

    static std::uint64_t sumDownTo(const volatile std::uint64_t* number) {
        const volatile std::uint64_t next = *number + 1;
        return *number == 0 ? 0 : sumDownTo(&next) + *number;
    }

    FreeFunction raising{
        "Broken", {}, [](const Arguments&, Results&, RunContext&) { static_cast<void>(std::raise(SIGSEGV)); }};
    FreeFunction aborting{"Broken", {}, [](const Arguments&, Results&, RunContext&) { std::abort(); }};
    FreeFunction endless{"Broken", {}, [](const Arguments&, Results&, RunContext&) {
                             const volatile std::uint64_t one = 1;
                             sumDownTo(&one);
                         }};
};

TEST_F(CrashNotes, nameThePlugInAndItsKindAndEndByTheirSignal) {
    add(raising, "odd");
    EXPECT_EXIT(runAloud(), ::testing::KilledBySignal(SIGSEGV),
                "Broken \"odd\" crashed \\(segmentation fault\\); the program ends\\.");
}

TEST_F(CrashNotes, ofAnAbortAreNamed) {
    add(aborting, "odd");
    EXPECT_EXIT(runAloud(), ::testing::KilledBySignal(SIGABRT), "Broken \"odd\" crashed \\(abort\\)");
}

TEST_F(CrashNotes, byAStackThatHasRunOutAreNamed) {
    add(endless, "deep");
    EXPECT_EXIT(runAloud(), ::testing::KilledBySignal(SIGSEGV), "Broken \"deep\" crashed");
}

TEST_F(CrashNotes, onAnotherThreadOfAStreamAreNamed) {
    RowSource rows;
    SumKind sum;
    sum.beforeFill = [](const Chunk&) { static_cast<void>(std::raise(SIGBUS)); };
    add(rows, "rows", {{"rows", "100000"}});
    add(sum, "odd");
    wire("rows", "table", "odd", "table");
    EXPECT_EXIT(runAloud(), ::testing::KilledBySignal(SIGBUS), "Sum \"odd\" crashed \\(bus error\\)");
}

TEST_F(CrashNotes, areLeftToAHandlerThatWasThereBefore) {
    struct sigaction own {};
    own.sa_handler = [](int) { _exit(42); };
    sigaction(SIGFPE, &own, nullptr);
    const Runner second(messages, false);
    struct sigaction present {};
    sigaction(SIGFPE, nullptr, &present);
    EXPECT_EQ(present.sa_handler, own.sa_handler);
}

}  // namespace
}  // namespace velmorak::test
