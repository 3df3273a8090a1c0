#include "graph/preview/ColumnPreview.h"

#include <gtest/gtest.h>

#include <future>
#include <thread>

namespace velmorak {
namespace {

constexpr std::chrono::milliseconds noTime(0);
constexpr std::chrono::hours asLongAsItTakes(1);

/// Polls as a reader does.
bool isStopped(const BackgroundTask& work) {
    constexpr long maxPolls = 100'000'000;
    for (long poll = 0; poll < maxPolls && !work.isStopping(); ++poll) {
        std::this_thread::yield();
    }
    return work.isStopping();
}

TEST(ColumnPreviews, returnTheColumnsThatTheyFound) {
    ColumnPreviews previews;
    const auto found = std::make_shared<PreviewedColumns>();
    const auto preview =
        previews.begin("rows.csv", found, [found](BackgroundTask&) { found->sentence = "Columns: x, y."; });
    ASSERT_TRUE(preview->work->wait(asLongAsItTakes));
    EXPECT_EQ(preview->subject, "rows.csv");
    EXPECT_EQ(preview->found->sentence, "Columns: x, y.");
    EXPECT_EQ(previews.unfinished(), 0U);
}

TEST(ColumnPreviews, doNotWaitForAFileThatDoesNotAnswer) {
    ColumnPreviews previews;
    const auto answer = std::make_shared<std::promise<void>>();
    const auto found = std::make_shared<PreviewedColumns>();
    const auto preview = previews.begin("far.csv", found, [answer, found](BackgroundTask&) {
        answer->get_future().wait();
        found->sentence = "Column: x.";
    });
    EXPECT_FALSE(preview->work->wait(noTime));
    EXPECT_EQ(previews.unfinished(), 1U);
    answer->set_value();
    ASSERT_TRUE(preview->work->wait(asLongAsItTakes));
    EXPECT_EQ(preview->found->sentence, "Column: x.");
    EXPECT_EQ(previews.unfinished(), 0U);
}

TEST(ColumnPreviews, queueBehindEightFilesThatDoNotAnswer) {
    ColumnPreviews previews;
    std::promise<void> answer;
    const std::shared_future<void> answered = answer.get_future().share();
    for (int i = 0; i < 8; ++i) {
        previews.begin("far.csv", nullptr, [answered](BackgroundTask&) { answered.wait(); });
    }
    const auto found = std::make_shared<PreviewedColumns>();
    const auto last = previews.begin("near.csv", found, [found](BackgroundTask&) { found->sentence = "Column: x."; });
    EXPECT_FALSE(last->work->wait(noTime));
    EXPECT_EQ(previews.unfinished(), 9U);
    answer.set_value();
    ASSERT_TRUE(last->work->wait(asLongAsItTakes));
    EXPECT_EQ(last->found->sentence, "Column: x.");
}

TEST(ColumnPreviews, areStoppedWithTheirManager) {
    const auto hasBegun = std::make_shared<std::promise<void>>();
    const auto isStopping = std::make_shared<std::promise<bool>>();
    {
        ColumnPreviews previews;
        previews.begin("long.csv", nullptr, [=](BackgroundTask& work) {
            hasBegun->set_value();
            isStopping->set_value(isStopped(work));
        });
        hasBegun->get_future().wait();
    }
    EXPECT_TRUE(isStopping->get_future().get());
}

}  // namespace
}  // namespace velmorak
