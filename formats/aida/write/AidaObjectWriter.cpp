#include "aida/write/AidaObjectWriter.h"

#include "aida/Vocabulary.h"
#include "aida/read/AidaColumns.h"
#include "aida/text/AidaText.h"
#include "aida/write/PlainSums.h"

#include <velmorak/DataObjects.h>
#include <velmorak/Failure.h>

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cmath>

namespace velmorak::io {

namespace {

constexpr std::string_view directions = "xyz";
constexpr std::array labels{"XLabel", "YLabel", "ZLabel"};
constexpr std::array categoryKeys{"XCategory", "YCategory", "ZCategory"};
constexpr std::array replacedKeys{"XCategory", "YCategory",  "ZCategory",    "Title",   "XLabel",    "YLabel",
                                  "ZLabel",    "NaNEntries", "ExactMoments", "Moments", "ExactSums", "Sums"};

/// Longer lists are written as several items: readers limit the length of a tag.
constexpr std::size_t maxListLength = std::size_t{16} << 20U;

std::string item(std::string_view key, std::string_view value, bool isSticky) {
    return fmt::format("<item key=\"{}\" value=\"{}\" sticky=\"{}\"/>\n", escaped(key), escaped(value), isSticky);
}

std::string binNumber(std::size_t alongAxis, std::size_t bins) {
    return alongAxis == 0 ? "UNDERFLOW" : alongAxis > bins ? "OVERFLOW" : fmt::format("{}", alongAxis - 1);
}

/// ' binNumX="3" binNumY="OVERFLOW"'
template <std::size_t dimensions>
std::string binNumbers(const Grid<dimensions>& grid, std::size_t cell) {
    constexpr std::array names{"binNumX", "binNumY", "binNumZ"};
    const auto cells = grid.alongAxes(cell);
    std::string text;
    for (std::size_t direction = 0; direction < dimensions; ++direction) {
        text += fmt::format(R"( {}="{}")", dimensions == 1 ? "binNum" : names[direction],
                            binNumber(cells[direction], grid.axis(direction).bins()));
    }
    return text;
}

template <std::size_t dimensions, std::size_t quantities>
std::string coordinates(const CellSums<quantities>& sums) {
    constexpr std::array means{"weightedMeanX", "weightedMeanY", "weightedMeanZ"};
    constexpr std::array spreads{"weightedRmsX", "weightedRmsY", "weightedRmsZ"};
    std::string text;
    for (std::size_t direction = 0; direction < dimensions; ++direction) {
        text += numberAttribute(dimensions == 1 ? "weightedMean" : means[direction], sums.mean(direction));
        text += numberAttribute(dimensions == 1 ? "weightedRms" : spreads[direction], sums.rms(direction));
    }
    return text;
}

/// Entries, w, ww, then pivots, firsts and seconds.
template <std::size_t quantities>
std::string momentsText(const CellSums<quantities>& sums) {
    std::string text = fmt::format("{} {} {}", sums.entries, textOf(sums.w), textOf(sums.ww));
    const auto append = [&](const auto& numbers) {
        for (const double number : numbers) {
            text += " " + textOf(number);
        }
    };
    append(sums.pivot);
    append(sums.first);
    append(sums.second);
    return text;
}

/// Entries, w, ww, then sum of w x and w x²: of a profile for the value first, then for each axis.
template <std::size_t axes, std::size_t quantities>
std::string plainText(const CellSums<quantities>& sums) {
    std::string text = fmt::format("{} {} {}", sums.entries, textOf(sums.w), textOf(sums.ww));
    for (std::size_t i = 0; i < quantities; ++i) {
        const std::size_t quantity = (i + axes) % quantities;
        text += " " + textOf(sums.first[quantity]) + " " + textOf(sums.second[sums.pairOf(quantity, quantity)]);
    }
    return text;
}

template <typename Sums, typename TextOf>
std::string allSums(const CellVector<Sums>& cells, const TextOf& sumsText) {
    std::string text;
    for (std::size_t cell = 0; cell < cells.size(); ++cell) {
        if (!(cells[cell] == Sums{})) {
            text += fmt::format("{}{} {}", text.empty() ? "" : "; ", cell, sumsText(cells[cell]));
        }
    }
    return text;
}

/// @param isExact whether the sums are those of the fills, rather than estimates from the bins of a file.
template <std::size_t axes, std::size_t quantities>
void addSums(AnnotationText& annotation, const CellVector<CellSums<quantities>>& cells, bool isExact) {
    if (arePlain(cells)) {
        annotation.addList(isExact ? "ExactSums" : "Sums", allSums(cells, plainText<axes, quantities>));
    } else {
        annotation.addList(isExact ? "ExactMoments" : "Moments", allSums(cells, momentsText<quantities>));
    }
}

/// Annotation, axes and statistics, which histograms and profiles share.
template <std::size_t axes, std::size_t quantities>
std::string headOf(const FilledGrid<axes, quantities>& object, bool isExact) {
    AnnotationText annotation(object);
    const Grid<axes>& grid = object.grid();
    for (std::size_t direction = 0; direction < axes; ++direction) {
        if (!grid.axis(direction).title.empty()) {
            annotation.add(labels[direction], grid.axis(direction).title);
        }
        for (const std::string& category : grid.axis(direction).labels) {
            annotation.add(categoryKeys[direction], category);
        }
    }
    if (object.nanEntries() != 0) {
        annotation.add("NaNEntries", fmt::format("{}", object.nanEntries()));
    }
    addSums<axes>(annotation, object.cells(), isExact);
    std::string text = annotation.finish(object);
    for (std::size_t direction = 0; direction < axes; ++direction) {
        text += axisElement(grid.axis(direction), directions[direction]);
    }
    const CellSums<quantities> all = object.inRange();
    text += fmt::format("<statistics entries=\"{}\"{}>\n", all.entries,
                        numberAttribute("equivalentBinEntries", all.w * all.w / all.ww));
    for (std::size_t direction = 0; direction < axes; ++direction) {
        text += fmt::format("<statistic direction=\"{}\" mean=\"{}\" rms=\"{}\"/>\n", directions[direction],
                            textOf(all.mean(direction)), textOf(all.rms(direction)));
    }
    return text + "</statistics>\n";
}

template <std::size_t dimensions>
std::string histogramElement(const Histogram<dimensions>& histogram, const std::string& folder) {
    constexpr std::string_view element = aidaElement(AidaFamily::Histogram, dimensions);
    static_assert(!element.empty());
    std::string text = beginElement(element, histogram, folder) + headOf(histogram, true);
    text += fmt::format("<data{}d>\n", dimensions);
    for (std::size_t cell = 0; cell < histogram.cells().size(); ++cell) {
        const CellSums<dimensions>& sums = histogram.cells()[cell];
        if (!(sums == CellSums<dimensions>{})) {
            text += fmt::format("<bin{}d{} entries=\"{}\" height=\"{}\" error=\"{}\"{}/>\n", dimensions,
                                binNumbers(histogram.grid(), cell), sums.entries, textOf(sums.w), textOf(sums.error()),
                                coordinates<dimensions>(sums));
        }
    }
    return text + fmt::format("</data{}d>\n</{}>\n", dimensions, element);
}

template <std::size_t dimensions>
std::string profileElement(const Profile<dimensions>& profile, const std::string& folder) {
    constexpr std::string_view element = aidaElement(AidaFamily::Profile, dimensions);
    static_assert(!element.empty());
    std::string text = beginElement(element, profile, folder);
    text += headOf(profile, profile.hasExactSums());
    text += fmt::format("<data{}d>\n", dimensions);
    for (std::size_t cell = 0; cell < profile.cells().size(); ++cell) {
        const CellSums<dimensions + 1>& sums = profile.cells()[cell];
        const bool isGiven = !profile.hasExactSums() && !std::isnan(profile.height(cell));
        if (isGiven || !(sums == CellSums<dimensions + 1>{})) {
            text += fmt::format("<bin{}d{} entries=\"{}\" height=\"{}\" error=\"{}\"{}{}/>\n", dimensions,
                                binNumbers(profile.grid(), cell), sums.entries, textOf(profile.height(cell)),
                                textOf(profile.error(cell)), numberAttribute("rms", profile.rms(cell)),
                                coordinates<dimensions>(sums));
        }
    }
    return text + fmt::format("</data{}d>\n</{}>\n", dimensions, element);
}

std::string pointsElement(const Points& points, const std::string& folder) {
    constexpr std::string_view element = aidaElement(AidaFamily::Points);
    AnnotationText annotation(points);
    for (std::size_t direction = 0; direction < std::min(points.axisTitles.size(), labels.size()); ++direction) {
        annotation.add(labels[direction], points.axisTitles[direction]);
    }
    std::string text = beginElement(element, points, folder, fmt::format(" dimension=\"{}\"", points.dimension()));
    text += annotation.finish(points);
    for (std::size_t point = 0; point < points.size(); ++point) {
        text += "<dataPoint>";
        for (std::size_t direction = 0; direction < points.dimension(); ++direction) {
            const Measurement& measurement = points.measurement(point, direction);
            text +=
                fmt::format(R"(<measurement value="{}" errorPlus="{}" errorMinus="{}"/>)", textOf(measurement.value),
                            textOf(measurement.errorPlus), textOf(measurement.errorMinus));
        }
        text += "</dataPoint>\n";
    }
    return text + fmt::format("</{}>\n", element);
}

std::string functionElement(const FunctionObject& function, const std::string& folder) {
    constexpr std::string_view element = aidaElement(AidaFamily::Function);
    std::string text =
        beginElement(element, function, folder, fmt::format(" isNormalized=\"{}\"", function.isNormalized));
    text += AnnotationText(function).finish(function);
    text += fmt::format("<codelet>{}</codelet>\n<arguments>\n", escaped(function.codelet));
    for (const FunctionObject::Argument& argument : function.arguments) {
        text += fmt::format("<argument name=\"{}\">", escaped(argument.name));
        for (const FunctionObject::Range& range : argument.ranges) {
            text += fmt::format(R"(<range min="{}" max="{}"/>)", textOf(range.low), textOf(range.high));
        }
        text += "</argument>\n";
    }
    text += "</arguments>\n<parameters>\n";
    for (const FunctionObject::Parameter& parameter : function.parameters) {
        text +=
            fmt::format("<parameter name=\"{}\" value=\"{}\"/>\n", escaped(parameter.name), textOf(parameter.value));
    }
    return text + fmt::format("</parameters>\n</{}>\n", element);
}

}  // namespace

std::string beginElement(std::string_view element, const DataObject& object, const std::string& folder,
                         std::string_view more) {
    std::string nameInPath;
    for (const char c : object.name) {
        nameInPath += c == '/' ? "\\/" : std::string(1, c);
    }
    // In the document type, points and functions have no options.
    const bool mayHaveOptions = isOfFamily(element, AidaFamily::Histogram) || isOfFamily(element, AidaFamily::Profile);
    const std::string options = mayHaveOptions && !object.options.empty()
                                    ? fmt::format(" options=\"{}\"", escaped(object.options))
                                    : std::string();
    return fmt::format("<{} name=\"{}\" title=\"{}\" path=\"{}\"{}{}>\n", element, escaped(nameInPath),
                       escaped(object.title), escaped(normalPath(folder)), options, more);
}

std::string numberAttribute(std::string_view name, double number) {
    return std::isfinite(number) ? fmt::format(R"( {}="{}")", name, textOf(number)) : std::string();
}

std::string axisElement(const Axis& axis, char direction) {
    std::string text = fmt::format(R"(<axis direction="{}" min="{}" max="{}" numberOfBins="{}")", direction,
                                   textOf(axis.low()), textOf(axis.high()), axis.bins());
    if (axis.isRegular()) {
        return text + "/>\n";
    }
    text += ">\n";
    for (std::size_t edge = 1; edge < axis.bins(); ++edge) {
        text += fmt::format("<binBorder value=\"{}\"/>\n", textOf(axis.edges()[edge]));
    }
    return text + "</axis>\n";
}

AnnotationText::AnnotationText(const DataObject& object) {
    add("Title", object.title.empty() ? object.name : object.title);
}

void AnnotationText::add(std::string_view key, std::string_view value) {
    items += item(key, value, true);
}

void AnnotationText::addList(std::string_view key, std::string_view list) {
    while (list.size() > maxListLength) {
        const std::size_t end = list.rfind("; ", maxListLength);
        add(key, list.substr(0, end));
        list.remove_prefix(end + 2);
    }
    add(key, list);
}

std::string AnnotationText::finish(const DataObject& object) {
    for (const AnnotationItem& own : object.annotation) {
        if (std::find(replacedKeys.begin(), replacedKeys.end(), own.key) == replacedKeys.end()) {
            items += item(own.key, own.value, own.isSticky);
        }
    }
    return "<annotation>\n" + items + "</annotation>\n";
}

std::string objectElement(const DataObject& object, const std::string& folder) {
    return visit(object, overloaded{
                             [&](const Histogram1D& histogram) { return histogramElement(histogram, folder); },
                             [&](const Histogram2D& histogram) { return histogramElement(histogram, folder); },
                             [&](const Histogram3D& histogram) { return histogramElement(histogram, folder); },
                             [&](const Profile1D& profile) { return profileElement(profile, folder); },
                             [&](const Profile2D& profile) { return profileElement(profile, folder); },
                             [&](const Points& points) { return pointsElement(points, folder); },
                             [&](const FunctionObject& function) { return functionElement(function, folder); },
                             [](const DataObject& other) -> std::string {
                                 throw Failure(fmt::format("a {} of this class cannot be written to an AIDA file",
                                                           nameOf(other.type())));
                             },
                         });
}

}  // namespace velmorak::io
