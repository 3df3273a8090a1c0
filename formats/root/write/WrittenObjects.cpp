#include "root/write/WrittenObjects.h"

#include <velmorak/DataObjects.h>
#include <velmorak/Failure.h>

#include <fmt/format.h>

#include <algorithm>
#include <cmath>

namespace velmorak::root {
namespace {

using Members = std::vector<std::pair<std::string, Member>>;

/// An object may have 1 GiB, and a histogram has four numbers in a cell at most.
constexpr std::size_t maxCells = (std::size_t{1} << 30U) / 40;

void add(Members& target, Members more) {
    std::move(more.begin(), more.end(), std::back_inserter(target));
}

/// The names of an axis' bins; each label has the number of its bin.
ObjectPtr labelsOf(const Axis& axis) {
    if (axis.labels.empty()) {
        return nullptr;
    }
    std::vector<ObjectPtr> labels;
    for (const std::string& text : axis.labels) {
        const auto number = static_cast<std::int64_t>(labels.size() + 1);
        labels.push_back(std::make_shared<Object>(
            Object{.className = "TObjString", .members = {{"fUniqueID", number}, {"fString", text}}}));
    }
    return std::make_shared<Object>(
        Object{.className = "THashList", .members = {{std::string(itemsMember), std::move(labels)}}});
}

ObjectPtr axisOf(const Axis& axis, const std::string& name) {
    Object object{.className = "TAxis",
                  .members = {{"fName", name},
                              {"fTitle", axis.title},
                              {"fNbins", static_cast<std::int64_t>(axis.bins())},
                              {"fXmin", axis.low()},
                              {"fXmax", axis.high()},
                              {"fLabels", labelsOf(axis)}}};
    if (!axis.isRegular()) {
        object.members.emplace_back("fXbins", axis.edges());
    }
    return std::make_shared<Object>(std::move(object));
}

ObjectPtr emptyAxis(const std::string& name) {
    return std::make_shared<Object>(Object{.className = "TAxis", .members = {{"fName", name}}});
}

template <typename Grid>
Members axesOf(const Grid& grid, std::size_t dimensions) {
    constexpr std::array names{"fXaxis", "fYaxis", "fZaxis"};
    constexpr std::array inFile{"xaxis", "yaxis", "zaxis"};
    Members members;
    for (std::size_t i = 0; i < names.size(); ++i) {
        members.emplace_back(names[i], i < dimensions ? axisOf(grid.axis(i), inFile[i]) : emptyAxis(inFile[i]));
    }
    return members;
}

template <typename Filled, typename Value>
std::vector<double> ofCells(const Filled& filled, const Value& value) {
    std::vector<double> values;
    values.reserve(filled.cells().size());
    for (const auto& cell : filled.cells()) {
        values.push_back(value(cell));
    }
    return values;
}

/// Sums over the cells inside, in the order of the members' names.
template <typename Sums>
Members sumsOf(const Sums& sums, std::size_t quantities) {
    Members members{{"fTsumw", sums.w}, {"fTsumw2", sums.ww}};
    const std::string letters = "xyz";
    for (std::size_t i = 0; i < quantities; ++i) {
        members.emplace_back(std::string("fTsumw") + letters[i], sums.sum(i));
        for (std::size_t j = i; j < quantities; ++j) {
            const std::string pair = i == j ? std::string{letters[i], '2'} : std::string{letters[i], letters[j]};
            members.emplace_back("fTsumw" + pair, sums.squareSum(i, j));
        }
    }
    return members;
}

/// What histograms and profiles have in common.
template <typename Filled>
Object filledObject(const Filled& filled, const std::string& className, const std::string& name) {
    double entries = 0.0;
    for (const auto& cell : filled.cells()) {
        entries += static_cast<double>(cell.entries);
    }
    Object object{.className = className,
                  .members = {{"fName", name},
                              {"fTitle", filled.title},
                              {"fNcells", static_cast<std::int64_t>(filled.cells().size())},
                              {"fEntries", entries}}};
    add(object.members, axesOf(filled.grid(), Filled::dimensions));
    return object;
}

template <std::size_t axes>
Object histogramObject(const Histogram<axes>& histogram, const std::string& name) {
    Object object = filledObject(histogram, fmt::format("TH{}D", axes), name);
    add(object.members, sumsOf(histogram.inRange(), axes));
    add(object.members, {{std::string(arrayMember), ofCells(histogram, [](const auto& cell) { return cell.w; })},
                         {"fSumw2", ofCells(histogram, [](const auto& cell) { return cell.ww; })}});
    return object;
}

template <std::size_t axes>
Object profileObject(const Profile<axes>& profile, const std::string& name) {
    Object object = filledObject(profile, axes == 1 ? "TProfile" : "TProfile2D", name);
    add(object.members, sumsOf(profile.inRange(), axes + 1));
    add(object.members,
        {{std::string(arrayMember), ofCells(profile, [](const auto& cell) { return cell.sum(Profile<axes>::value); })},
         {"fSumw2",
          ofCells(profile,
                  [](const auto& cell) { return cell.squareSum(Profile<axes>::value, Profile<axes>::value); })},
         {"fBinEntries", ofCells(profile, [](const auto& cell) { return cell.w; })},
         {"fBinSumw2", ofCells(profile, [](const auto& cell) { return cell.ww; })}});
    return object;
}

template <typename Part>
std::vector<double> ofPoints(const Points& points, std::size_t direction, const Part& part) {
    std::vector<double> values;
    for (std::size_t i = 0; i < points.size(); ++i) {
        values.push_back(part(points.measurement(i, direction)));
    }
    return values;
}

bool areSymmetric(const Points& points) {
    return std::all_of(points.all().begin(), points.all().end(), [](const Measurement& each) {
        return std::bit_cast<std::uint64_t>(each.errorPlus) == std::bit_cast<std::uint64_t>(each.errorMinus);
    });
}

/// A graph has no axes; programs take their titles from its own, after semicolons.
std::string titleOf(const Points& points) {
    std::string title = points.title;
    for (const std::string& axis : points.axisTitles) {
        title += ";" + axis;
    }
    return title;
}

Object pointsObject(const Points& points, const std::string& name) {
    constexpr std::size_t x = 0;
    constexpr std::size_t y = 1;
    const auto value = [](const Measurement& each) { return each.value; };
    const auto plus = [](const Measurement& each) { return each.errorPlus; };
    const auto minus = [](const Measurement& each) { return each.errorMinus; };
    Object object{.className = areSymmetric(points) ? "TGraphErrors" : "TGraphAsymmErrors",
                  .members = {{"fName", name},
                              {"fTitle", titleOf(points)},
                              {"fNpoints", static_cast<std::int64_t>(points.size())},
                              {"fX", ofPoints(points, x, value)},
                              {"fY", ofPoints(points, y, value)}}};
    if (areSymmetric(points)) {
        add(object.members, {{"fEX", ofPoints(points, x, plus)}, {"fEY", ofPoints(points, y, plus)}});
    } else {
        add(object.members, {{"fEXlow", ofPoints(points, x, minus)},
                             {"fEXhigh", ofPoints(points, x, plus)},
                             {"fEYlow", ofPoints(points, y, minus)},
                             {"fEYhigh", ofPoints(points, y, plus)}});
    }
    return object;
}

template <typename Filled>
void requireCells(const Filled& filled, const std::string& name) {
    if (filled.cells().size() > maxCells) {
        throw Failure(fmt::format("\"{}\" has {} cells; a ROOT file holds histograms of up to {}", name,
                                  filled.cells().size(), maxCells));
    }
}

void requireTwo(const Points& points, const std::string& name) {
    if (points.dimension() != 2) {
        throw Failure(fmt::format("\"{}\" are points of {} dimensions; a ROOT file holds points of two", name,
                                  points.dimension()));
    }
}

[[noreturn]] void refuse(const std::string& name) {
    throw Failure("\"" + name + "\" is a function, which cannot be written to a ROOT file");
}

}  // namespace

void requireWritable(const DataObject& object, const std::string& name) {
    visit(object, overloaded{
                      [&](const DataObject&) { refuse(name); },
                      [&](const Points& points) { requireTwo(points, name); },
                      [&](const Histogram1D& filled) { requireCells(filled, name); },
                      [&](const Histogram2D& filled) { requireCells(filled, name); },
                      [&](const Histogram3D& filled) { requireCells(filled, name); },
                      [&](const Profile1D& filled) { requireCells(filled, name); },
                      [&](const Profile2D& filled) { requireCells(filled, name); },
                  });
}

Object objectForFile(const DataObject& object, const std::string& name) {
    return visit(object, overloaded{
                             [&](const Histogram1D& histogram) { return histogramObject(histogram, name); },
                             [&](const Histogram2D& histogram) { return histogramObject(histogram, name); },
                             [&](const Histogram3D& histogram) { return histogramObject(histogram, name); },
                             [&](const Profile1D& profile) { return profileObject(profile, name); },
                             [&](const Profile2D& profile) { return profileObject(profile, name); },
                             [&](const Points& points) { return pointsObject(points, name); },
                             [&](const DataObject&) -> Object { refuse(name); },
                         });
}

}  // namespace velmorak::root
