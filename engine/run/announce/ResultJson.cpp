#include "run/announce/ResultJson.h"

#include <velmorak/DataObjects.h>
#include <velmorak/Failure.h>
#include <velmorak/FunctionValues.h>

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cmath>

namespace velmorak {

using Json = nlohmann::ordered_json;

namespace {

constexpr std::size_t maxTextBytes = 100000;
constexpr std::size_t samples = 400;

Json axisJson(const Axis& axis) {
    Json json{{"title", axis.title}, {"bins", axis.bins()}};
    if (axis.isRegular()) {
        json["low"] = axis.low();
        json["high"] = axis.high();
    } else {
        json["edges"] = axis.edges();
    }
    if (!axis.labels.empty()) {
        json["labels"] = axis.labels;
    }
    return json;
}

template <typename Object>
Json momentsJson(const Object& object) {
    const auto all = object.inRange();
    Json json{{"entries", all.entries}, {"sum", all.w}, {"nan", object.nanEntries()}};
    json["mean"] = Json::array();
    json["rms"] = Json::array();
    for (std::size_t direction = 0; direction < Object::dimensions; ++direction) {
        json["mean"].push_back(all.mean(direction));
        json["rms"].push_back(all.rms(direction));
    }
    return json;
}

/// @param read called with the number of a cell, and gives its height and error.
template <typename Object, typename Read>
void addCells(Json& json, const Object& object, const Read& read) {
    std::vector<double> heights;
    std::vector<double> errors;
    const auto add = [&](std::size_t cell) {
        const auto [height, error] = read(cell);
        heights.push_back(height);
        errors.push_back(error);
    };
    const auto& grid = object.grid();
    if constexpr (Object::dimensions == 1) {
        for (std::size_t i = 1; i <= grid.axis(0).bins(); ++i) {
            add(i);
        }
        json["below"] = object.cells().front().w;
        json["above"] = object.cells().back().w;
    } else {
        for (std::size_t j = 1; j <= grid.axis(1).bins(); ++j) {
            for (std::size_t i = 1; i <= grid.axis(0).bins(); ++i) {
                add(grid.cell({i, j}));
            }
        }
    }
    json["heights"] = std::move(heights);
    json["errors"] = std::move(errors);
}

template <typename Object, typename Read>
Json gridJson(const Object& object, std::size_t maxCells, const Read& read) {
    Json json = momentsJson(object);
    json["axes"] = Json::array();
    for (std::size_t direction = 0; direction < Object::dimensions; ++direction) {
        json["axes"].push_back(axisJson(object.grid().axis(direction)));
    }
    if (object.cells().size() > maxCells) {
        json["omitted"] = object.cells().size();
    } else {
        addCells(json, object, read);
    }
    return json;
}

Json pointsJson(const Points& points, std::size_t maxCells) {
    Json json{{"axes", Json::array()}, {"points", Json::array()}};
    for (const std::string& title : points.axisTitles) {
        json["axes"].push_back({{"title", title}});
    }
    if (points.all().size() > maxCells) {
        json["omitted"] = points.all().size();
        return json;
    }
    for (std::size_t i = 0; i < points.size(); ++i) {
        Json point = Json::array();
        for (std::size_t direction = 0; direction < points.dimension(); ++direction) {
            const Measurement& it = points.measurement(i, direction);
            point.push_back({it.value, it.errorMinus, it.errorPlus});
        }
        json["points"].push_back(std::move(point));
    }
    return json;
}

std::optional<DataSpan> rangeOf(const FunctionObject& function) {
    if (function.arguments.size() == 1 && !function.arguments.front().ranges.empty()) {
        const FunctionObject::Range& range = function.arguments.front().ranges.front();
        if (std::isfinite(range.low) && std::isfinite(range.high)) {
            return DataSpan{range.low, range.high};
        }
    }
    return std::nullopt;
}

Json functionJson(const FunctionObject& function, std::optional<DataSpan> span) {
    Json json{{"parameters", Json::array()}, {"notes", Json::object()}};
    for (const FunctionObject::Parameter& parameter : function.parameters) {
        json["parameters"].push_back({{"name", parameter.name}, {"value", parameter.value}});
    }
    for (const AnnotationItem& item : function.annotation) {
        json["notes"][item.key] = item.value;
    }
    span = span ? span : rangeOf(function);
    if (!span || function.arguments.size() > 1) {
        return json;
    }
    try {
        std::vector<double> x;
        for (std::size_t i = 0; i <= samples; ++i) {
            x.push_back(span->first + (span->second - span->first) * static_cast<double>(i) / samples);
        }
        json["y"] = FunctionValues(function)(x);
        json["x"] = std::move(x);
    } catch (const Failure& failure) {
        json["omitted"] = failure.what();
    }
    return json;
}

template <typename Object>
Json histogramJson(const Object& it, std::size_t maxCells) {
    return gridJson(it, maxCells,
                    [&](std::size_t cell) { return std::pair(it.cells()[cell].w, std::sqrt(it.cells()[cell].ww)); });
}

/// Histograms as far as their cells are few together.
Json listJson(const HistogramList& list, std::size_t maxCells) {
    Json json{{"key", list.keyTitle()}, {"groups", Json::array()}};
    std::size_t left = maxCells;
    for (const HistogramList::Group& group : list.groups()) {
        const std::size_t cells = group.histogram->cells().size();
        Json one{{"key", group.key}, {"title", group.label}};
        one.update(histogramJson(*group.histogram, left));
        left -= std::min(left, cells);
        json["groups"].push_back(std::move(one));
    }
    return json;
}

Json objectJson(const DataObject& object, const std::optional<DataSpan>& span, std::size_t maxCells) {
    const auto profile = [&](const auto& it) {
        return gridJson(it, maxCells, [&](std::size_t cell) { return std::pair(it.height(cell), it.error(cell)); });
    };
    return visit(object, overloaded{
                             [&](const Histogram1D& it) { return histogramJson(it, maxCells); },
                             [&](const Histogram2D& it) { return histogramJson(it, maxCells); },
                             [&](const Histogram3D& it) { return momentsJson(it); },
                             [&](const Profile1D& it) { return profile(it); },
                             [&](const Profile2D& it) { return profile(it); },
                             [&](const Points& it) { return pointsJson(it, maxCells); },
                             [&](const FunctionObject& it) { return functionJson(it, span); },
                             [&](const HistogramList& it) { return listJson(it, maxCells); },
                             [](const DataObject&) { return Json::object(); },
                         });
}

}  // namespace

Json resultJson(const Value& value, const std::optional<DataSpan>& span, std::size_t maxCells) {
    if (const std::optional<NumberWithError> number = numberIn(value)) {
        Json json{{"type", "number"}, {"value", number->value()}, {"text", textOf(number->value())}};
        if (number->hasError()) {
            json["error"] = number->error();
        }
        return json;
    }
    if (const auto* text = std::get_if<std::string>(&value)) {
        return {{"type", "text"}, {"text", text->substr(0, maxTextBytes)}};
    }
    const auto* object = std::get_if<DataObjectPtr>(&value);
    if (!object) {
        return {};
    }
    Json json{{"type", nameOf((*object)->type())}, {"title", (*object)->title}};
    json.update(objectJson(**object, span, maxCells));
    return json;
}

std::optional<DataSpan> spanOf(const Value& value) {
    const auto* object = std::get_if<DataObjectPtr>(&value);
    if (!object) {
        return std::nullopt;
    }
    const auto ofAxis = [](const Axis& axis) { return std::optional(DataSpan{axis.low(), axis.high()}); };
    return visit(**object, overloaded{
                               [&](const Histogram1D& it) { return ofAxis(it.axis()); },
                               [&](const Profile1D& it) { return ofAxis(it.grid().axis(0)); },
                               [](const Points& it) -> std::optional<DataSpan> {
                                   if (it.dimension() != 2 || it.size() == 0) {
                                       return std::nullopt;
                                   }
                                   DataSpan span{it.measurement(0, 0).value, it.measurement(0, 0).value};
                                   for (std::size_t i = 1; i < it.size(); ++i) {
                                       span.first = std::min(span.first, it.measurement(i, 0).value);
                                       span.second = std::max(span.second, it.measurement(i, 0).value);
                                   }
                                   return span;
                               },
                               [](const DataObject&) -> std::optional<DataSpan> { return std::nullopt; },
                           });
}

}  // namespace velmorak
