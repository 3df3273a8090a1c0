#include "KindHarness.h"

#include <velmorak/HistogramList.h>

#include <gmock/gmock.h>

#include <string>

namespace {

using namespace velmorak;
using test::KindHarness;
using testing::HasSubstr;

HistogramPtr filledAt(double x, const std::string& title) {
    auto histogram = std::make_shared<Histogram1D>(Axis(4, 0.0, 4.0));
    histogram->fill(x, 2.0);
    histogram->name = "Energy_" + title;
    histogram->title = title;
    return histogram;
}

struct Picking : KindHarness {
    explicit Picking(const std::string& key) : KindHarness("PickHistogram") { set("key", key); }

    Picking& wireGroups() {
        wire("histograms",
             DataObjectPtr(std::make_shared<HistogramList>(
                 "run", std::vector<HistogramList::Group>{
                            {.key = "3", .label = "run = 3", .histogram = filledAt(0.5, "third")},
                            {.key = "10 to 20", .label = "10 to 20", .histogram = filledAt(1.5, "late")}})));
        return *this;
    }
};

TEST(PickHistogramKind, theHistogramOfAKeyIsPassedOnAsItIs) {
    Picking picking(" 10 to 20 ");
    picking.wireGroups().run();
    const HistogramPtr picked = picking.histogram("histogram");
    EXPECT_EQ(picked->name, "Energy_late");
    EXPECT_EQ(picked->title, "late");
    EXPECT_EQ(picked->toBytes(), filledAt(1.5, "late")->toBytes());
}

TEST(PickHistogramKind, aTitleReplacesThatOfTheHistogram) {
    Picking picking("3");
    picking.wireGroups().set("title", "Run 3").run();
    EXPECT_EQ(picking.histogram("histogram")->title, "Run 3");
    EXPECT_EQ(picking.histogram("histogram")->height(0), 2.0);
}

TEST(PickHistogramKind, anUnknownKeyNamesThoseThatThereAre) {
    Picking picking("10 to 30");
    picking.wireGroups();
    const std::string failure = picking.failure();
    EXPECT_THAT(failure, HasSubstr("no histogram has the key \"10 to 30\"; the keys are \"3\", \"10 to 20\""));
    EXPECT_THAT(failure, HasSubstr("did you mean \"10 to 20\"?"));
}

TEST(PickHistogramKind, aSingleHistogramOrAnEmptyListIsRefused) {
    Picking single("3");
    single.wire("histograms", DataObjectPtr(filledAt(0.5, "third")));
    EXPECT_THAT(single.failure(), HasSubstr("expected a list of histograms"));
    Picking empty("3");
    empty.wire("histograms",
               DataObjectPtr(std::make_shared<HistogramList>("run", std::vector<HistogramList::Group>{})));
    EXPECT_THAT(empty.failure(), HasSubstr("the list is empty"));
}

}  // namespace
