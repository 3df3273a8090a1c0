#include <velmorak/DataObjects.h>

#include <gmock/gmock.h>

namespace velmorak {
namespace {

struct Unlisted : DataObject {
    ValueType type() const override { return ValueType::Any; }
};

std::string classOf(const DataObject& object) {
    return visit(object, overloaded{
                             [](const Histogram1D&) { return std::string("histogram 1"); },
                             [](const Histogram2D&) { return std::string("histogram 2"); },
                             [](const Histogram3D&) { return std::string("histogram 3"); },
                             [](const Profile1D&) { return std::string("profile 1"); },
                             [](const Profile2D&) { return std::string("profile 2"); },
                             [](const Points&) { return std::string("points"); },
                             [](const FunctionObject&) { return std::string("function"); },
                             [](const HistogramList&) { return std::string("list"); },
                             [](const DataObject&) { return std::string("other"); },
                         });
}

const Axis axis(2, 0.0, 1.0);

TEST(VisitObject, callsTheOverloadOfTheConcreteClass) {
    EXPECT_EQ(classOf(Histogram1D(axis)), "histogram 1");
    EXPECT_EQ(classOf(Histogram2D(Grid<2>({axis, axis}))), "histogram 2");
    EXPECT_EQ(classOf(Histogram3D(Grid<3>({axis, axis, axis}))), "histogram 3");
    EXPECT_EQ(classOf(Profile1D(Grid<1>({axis}))), "profile 1");
    EXPECT_EQ(classOf(Profile2D(Grid<2>({axis, axis}))), "profile 2");
    EXPECT_EQ(classOf(Points(1, {})), "points");
    EXPECT_EQ(classOf(FunctionObject()), "function");
    EXPECT_EQ(classOf(HistogramList("run", {})), "list");
}

TEST(VisitObject, callsTheOverloadOfDataObjectForAClassThatIsNotListed) {
    EXPECT_EQ(classOf(Unlisted()), "other");
}

TEST(VisitObject, callsTheOverloadOfDataObjectWhereTheVisitorHasNoneForTheClass) {
    const Histogram1D histogram(axis);
    const bool isPoints =
        visit(histogram, overloaded{[](const Points&) { return true; }, [](const DataObject&) { return false; }});
    EXPECT_FALSE(isPoints);
}

TEST(VisitObject, givesTheObjectItself) {
    const Histogram1D histogram(axis);
    const DataObject* visited = nullptr;
    visit(histogram, [&](const auto& it) { visited = &it; });
    EXPECT_EQ(visited, &histogram);
}

}  // namespace
}  // namespace velmorak
