#include "graph/ColumnPreview.h"

#include <gtest/gtest.h>

#include <future>
#include <thread>

namespace velmorak {
namespace {

constexpr std::chrono::milliseconds noTime(0);
constexpr std::chrono::hours asLongAsItTakes(1);

TEST(ColumnPreviews, giveWhatWasFound) {
    ColumnPreviews looks;
    const auto found = std::make_shared<PreviewedColumns>();
    const auto look = looks.begin("rows.csv", found, [found](BackgroundTask&) { found->sentence = "Columns: x, y."; });
    ASSERT_TRUE(look->work->wait(asLongAsItTakes));
    EXPECT_EQ(look->subject, "rows.csv");
    EXPECT_EQ(look->found->sentence, "Columns: x, y.");
    EXPECT_EQ(looks.overdue(), 0U);
}

TEST(ColumnPreviews, keepNobodyWaitingForAFileThatDoesNotAnswer) {
    ColumnPreviews looks;
    const auto answer = std::make_shared<std::promise<void>>();
    const auto found = std::make_shared<PreviewedColumns>();
    const auto look = looks.begin("far.csv", found, [answer, found](BackgroundTask&) {
        answer->get_future().wait();
        found->sentence = "Column: x.";
    });
    EXPECT_FALSE(look->work->wait(noTime));
    EXPECT_EQ(looks.overdue(), 1U);
    answer->set_value();
    ASSERT_TRUE(look->work->wait(asLongAsItTakes));
    EXPECT_EQ(look->found->sentence, "Column: x.");
    EXPECT_EQ(looks.overdue(), 0U);
}

TEST(ColumnPreviews, thatGoOnAreToldToStopWithTheirManager) {
    const auto hasStopped = std::make_shared<std::promise<void>>();
    {
        ColumnPreviews looks;
        looks.begin("long.csv", nullptr, [hasStopped](BackgroundTask& work) {
            while (!work.isStopping()) {
                std::this_thread::yield();
            }
            hasStopped->set_value();
        });
    }
    hasStopped->get_future().wait();
}

}  // namespace
}  // namespace velmorak
