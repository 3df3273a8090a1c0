#include "executor/ThreadConfig.h"

#include <gtest/gtest.h>

#include <sched.h>
#include <cstdlib>
#include <thread>

namespace velmorak::test {
namespace {

class ThreadConfigTest : public testing::Test {
protected:
    ~ThreadConfigTest() override { unsetenv("VELMORAK_THREADS"); }
};

TEST_F(ThreadConfigTest, hasTheNumberThatTheEnvironmentSets) {
    for (const char* const number : {"1", "3", "1024"}) {
        setenv("VELMORAK_THREADS", number, 1);
        const ThreadConfig config = threadConfigFromEnvironment();
        EXPECT_EQ(std::to_string(config.threads), number);
        EXPECT_TRUE(config.warning.empty());
    }
}

TEST_F(ThreadConfigTest, usesAllProcessorsAndWarnsOfAnythingElse) {
    for (const char* const text : {"many", "0", "-1", "1025", "2x", " 2", "99999999999999999999"}) {
        setenv("VELMORAK_THREADS", text, 1);
        const ThreadConfig config = threadConfigFromEnvironment();
        EXPECT_EQ(config.threads, processorCount()) << text;
        EXPECT_EQ(config.warning,
                  std::string("VELMORAK_THREADS=") + text + " is not a number from 1 to 1024; using all processors");
    }
}

TEST_F(ThreadConfigTest, usesAllProcessorsWithoutASetting) {
    unsetenv("VELMORAK_THREADS");
    EXPECT_EQ(threadConfigFromEnvironment().threads, processorCount());
    setenv("VELMORAK_THREADS", "", 1);
    EXPECT_TRUE(threadConfigFromEnvironment().warning.empty());
}

TEST(ProcessorCount, countsThoseThatTheThreadMayUse) {
    EXPECT_GE(processorCount(), 1U);
    std::thread([] {
        cpu_set_t one;
        CPU_ZERO(&one);
        CPU_SET(static_cast<std::size_t>(sched_getcpu()), &one);
        ASSERT_EQ(sched_setaffinity(0, sizeof one, &one), 0);
        EXPECT_EQ(processorCount(), 1U);
    }).join();
}

}  // namespace
}  // namespace velmorak::test
