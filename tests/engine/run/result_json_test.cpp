#include "run/announce/ResultJson.h"
#include "run/results/PartialMark.h"

#include <velmorak/HistogramList.h>

#include <nlohmann/json.hpp>

#include <gtest/gtest.h>

#include <memory>
#include <utility>

namespace velmorak::test {
namespace {

using Json = nlohmann::ordered_json;

Value twoRuns() {
    std::vector<HistogramList::Group> groups;
    for (const std::string key : {"1", "2"}) {
        auto histogram = std::make_shared<Histogram1D>(Axis(2, 0.0, 2.0));
        histogram->fill(0.5, 3.0);
        groups.push_back({.key = key, .label = "run = " + key, .histogram = std::move(histogram)});
    }
    auto list = std::make_shared<HistogramList>("run", std::move(groups));
    list->title = "Energy";
    return DataObjectPtr(std::move(list));
}

TEST(ResultJson, hasEachHistogramOfAList) {
    const Json json = resultJson(twoRuns(), std::nullopt, 100);
    EXPECT_EQ(json.at("type"), "histogram list");
    EXPECT_EQ(json.at("title"), "Energy");
    EXPECT_EQ(json.at("key"), "run");
    ASSERT_EQ(json.at("groups").size(), 2U);
    EXPECT_EQ(json.at("groups").at(1).at("key"), "2");
    EXPECT_EQ(json.at("groups").at(1).at("title"), "run = 2");
    EXPECT_EQ(json.at("groups").at(1).at("heights"), Json({3.0, 0.0}));
    EXPECT_EQ(json.at("groups").at(1).at("entries"), 1);
}

TEST(ResultJson, namesHistogramsOfAListThatHaveTooManyCellsTogether) {
    const Json json = resultJson(twoRuns(), std::nullopt, 7);
    EXPECT_TRUE(json.at("groups").at(0).contains("heights"));
    EXPECT_FALSE(json.at("groups").at(1).contains("heights"));
    EXPECT_EQ(json.at("groups").at(1).at("omitted"), 4);
}

TEST(PartialMark, isOnAListAndOnEachOfItsHistograms) {
    const Value marked = withPartialMark(twoRuns(), "rows are missing");
    const auto list = std::dynamic_pointer_cast<const HistogramList>(std::get<DataObjectPtr>(marked));
    ASSERT_EQ(list->annotation.size(), 1U);
    EXPECT_EQ(list->title, "Energy");
    EXPECT_EQ(list->keyTitle(), "run");
    for (const HistogramList::Group& group : list->groups()) {
        ASSERT_EQ(group.histogram->annotation.size(), 1U);
        EXPECT_EQ(group.histogram->annotation[0].value, "rows are missing");
        EXPECT_EQ(group.histogram->height(0), 3.0);
    }
}

}  // namespace
}  // namespace velmorak::test
