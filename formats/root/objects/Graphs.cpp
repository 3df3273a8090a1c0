#include "root/objects/Efficiency.h"
#include "root/objects/Histograms.h"

#include <fmt/format.h>
#include <velmorak/Failure.h>
#include <velmorak/Points.h>

#include <array>
#include <utility>
#include <vector>

namespace velmorak::root {
namespace {

/// Names of the members with the errors of each direction, below and above.
struct ErrorNames {
    std::array<const char*, 2> minus;
    std::array<const char*, 2> plus;
};

ErrorNames errorNamesOf(const std::string& className) {
    if (className == "TGraphErrors") {
        return {{"fEX", "fEY"}, {"fEX", "fEY"}};
    }
    return {{"fEXlow", "fEYlow"}, {"fEXhigh", "fEYhigh"}};
}

/// The titles of a graph and of its axes, which may be written as "title;x;y".
std::vector<std::string> titlesIn(const std::string& title) {
    std::vector<std::string> titles(1);
    for (const char c : title) {
        if (c == ';') {
            titles.emplace_back();
        } else {
            titles.back() += c;
        }
    }
    return titles;
}

/// The titles of the axes that the graph was drawn in, if it was.
std::vector<std::string> axisTitlesOf(const Object& object) {
    const ObjectPtr frame = object.object("fHistogram");
    if (!frame || !frame->object("fXaxis") || !frame->object("fYaxis")) {
        return {};
    }
    return {frame->object("fXaxis")->text("fTitle"), frame->object("fYaxis")->text("fTitle")};
}

DataObjectPtr graphOf(const Object& object) {
    const ErrorNames names = errorNamesOf(object.className);
    const bool hasErrors = object.className != "TGraph";
    const std::array<std::vector<double>, 2> values{object.reals("fX"), object.reals("fY")};
    std::vector<Measurement> all(2 * values[0].size());
    for (std::size_t direction = 0; direction < 2; ++direction) {
        const std::vector<double> none(values[0].size());
        const std::vector<double> minus = hasErrors ? object.reals(names.minus[direction]) : none;
        const std::vector<double> plus = hasErrors ? object.reals(names.plus[direction]) : none;
        if (values[direction].size() != none.size() || minus.size() != none.size() || plus.size() != none.size()) {
            throw Failure("its arrays have different lengths");
        }
        for (std::size_t point = 0; point < none.size(); ++point) {
            all[2 * point + direction] = {values[direction][point], plus[point], minus[point]};
        }
    }
    auto points = std::make_shared<Points>(2, std::move(all));
    points->axisTitles = axisTitlesOf(object);
    return points;
}

}  // namespace

bool isGraph(const std::string& className) {
    return className == "TGraph" || className == "TGraphErrors" || className == "TGraphAsymmErrors" ||
           className == "TEfficiency";
}

DataObjectPtr pointsFrom(const Object& object) {
    if (!isGraph(object.className)) {
        throw Failure(fmt::format("a {} is not a graph", object.className));
    }
    try {
        const DataObjectPtr made = object.className == "TEfficiency" ? efficiencyFrom(object) : graphOf(object);
        auto points = std::make_shared<Points>(dynamic_cast<const Points&>(*made));
        const std::vector<std::string> titles = titlesIn(object.text("fTitle"));
        points->name = object.text("fName");
        points->title = titles.front();
        if (titles.size() >= 3 && points->axisTitles.empty()) {
            points->axisTitles = {titles[1], titles[2]};
        }
        points->annotation.push_back({"class", object.className, false});
        return points;
    } catch (const Failure& failure) {
        throw Failure(
            fmt::format("the {} \"{}\" cannot be read: {}", object.className, object.text("fName"), failure.what()));
    }
}

}  // namespace velmorak::root
