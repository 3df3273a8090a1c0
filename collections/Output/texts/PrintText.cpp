#include "PrintText.h"

#include "Output/plots/contents/PlotStatistics.h"
#include "Output/plots/text/PlotText.h"

#include <velmorak/DataObjects.h>
#include <velmorak/Failure.h>
#include <velmorak/FormatMeasurement.h>
#include <velmorak/Utf8.h>

#include <algorithm>
#include <optional>

namespace velmorak {

namespace {

/// The first rows of an object as texts.
struct TextTable {
    std::vector<std::string> columns;
    std::vector<std::vector<std::string>> rows;
    std::size_t count = 0;  ///< Of all rows.
};

TextTable textTable(const DataObject& object, std::size_t most) {
    const ObjectTable table = objectTable(object, {});
    TextTable texts{.columns = table.columns, .rows = {}, .count = table.rows.size()};
    for (std::size_t i = 0; i < std::min(most, table.rows.size()); ++i) {
        std::vector<std::string>& row = texts.rows.emplace_back();
        for (const ObjectTable::Number& number : table.rows[i]) {
            row.push_back(number.text ? *number.text : formatNumber(number.value));
        }
    }
    return texts;
}

/// A measurement is one column.
TextTable textTable(const Points& points, std::size_t most) {
    TextTable texts{.columns = {}, .rows = {}, .count = points.size()};
    const std::vector<std::string> names = objectTable(points, {}).columns;
    for (std::size_t i = 0; i < points.dimension(); ++i) {
        texts.columns.push_back(names[3 * i]);
    }
    for (std::size_t point = 0; point < std::min(most, points.size()); ++point) {
        std::vector<std::string>& row = texts.rows.emplace_back();
        for (std::size_t i = 0; i < points.dimension(); ++i) {
            const Measurement& measured = points.measurement(point, i);
            row.push_back(formatMeasurement(measured.value, measured.errorPlus, measured.errorMinus));
        }
    }
    return texts;
}

/// A histogram is one row.
TextTable textTable(const HistogramList& list, std::size_t most) {
    TextTable texts{.columns = {list.keyTitle(), "entries", "height", "mean", "rms", "underflow", "overflow", "NaN"},
                    .rows = {},
                    .count = list.groups().size()};
    for (const HistogramList::Group& group : list.groups()) {
        if (texts.rows.size() == most) {
            break;
        }
        const Histogram1D& histogram = *group.histogram;
        const BinSums all = histogram.inRange();
        texts.rows.push_back({group.key, std::to_string(all.entries), formatNumber(all.w), roundedText(all.mean(0)),
                              roundedText(all.rms(0)), std::to_string(histogram.underflow().entries),
                              std::to_string(histogram.overflow().entries), std::to_string(histogram.nanEntries())});
    }
    return texts;
}

std::string linesOf(const std::vector<StatisticsRow>& rows) {
    std::string text;
    for (const StatisticsRow& row : rows) {
        text += row[0] + ": " + row[1] + "\n";
    }
    return text;
}

std::string statisticsText(const DataObject& object) {
    return visit(object, overloaded{
                             [](const Histogram1D& histogram) { return linesOf(statisticsOf(histogram)); },
                             [](const Histogram2D& histogram) { return statisticsLine(histogram) + "\n"; },
                             [](const Histogram3D& histogram) { return statisticsLine(histogram) + "\n"; },
                             [](const Profile1D& profile) { return linesOf(statisticsOf(profile)); },
                             [](const Profile2D& profile) { return statisticsLine(profile) + "\n"; },
                             [](const FunctionObject& function) { return linesOf(statisticsOf(function)); },
                             [](const HistogramList& list) {
                                 return "Histograms: " + std::to_string(list.groups().size()) + "\n";
                             },
                             [](const DataObject&) { return std::string(); },
                         });
}

std::string printedObject(const std::string& name, const DataObject& object, std::size_t most) {
    std::string text = name + (object.title.empty() ? "" : ": " + object.title) + "\n" + statisticsText(object);
    // A function is described by its parameters.
    if (object.type() == ValueType::Function || most == 0) {
        return text;
    }
    const TextTable table = visit(object, overloaded{
                                              [&](const Points& points) { return textTable(points, most); },
                                              [&](const HistogramList& list) { return textTable(list, most); },
                                              [&](const DataObject& other) { return textTable(other, most); },
                                          });
    text += alignedTable(table.columns, table.rows);
    if (table.count > most) {
        text += "(the first " + std::to_string(most) + " of " + std::to_string(table.count) + ")\n";
    }
    return text;
}

}  // namespace

std::string alignedTable(const std::vector<std::string>& names, const std::vector<std::vector<std::string>>& rows) {
    std::vector<std::size_t> widths;
    for (std::size_t i = 0; i < names.size(); ++i) {
        widths.push_back(characterCount(names[i]));
        for (const auto& row : rows) {
            widths[i] = std::max(widths[i], characterCount(row[i]));
        }
    }
    const auto line = [&](const std::vector<std::string>& words) {
        std::string text;
        for (std::size_t i = 0; i < words.size(); ++i) {
            text += (i > 0 ? "  " : "") + std::string(widths[i] - characterCount(words[i]), ' ') + words[i];
        }
        return text + "\n";
    };
    std::string text = line(names);
    for (const auto& row : rows) {
        text += line(row);
    }
    return text;
}

std::string printedValue(const std::string& name, const Value& value, std::size_t rows) {
    if (const std::optional<NumberWithError> number = numberIn(value)) {
        return name + ": " + formatMeasurement(number->value(), number->error()) + "\n";
    }
    if (const auto* text = std::get_if<std::string>(&value)) {
        const bool hasLines = text->find('\n') != std::string::npos;
        return name + ":" + (hasLines ? "\n" : " ") + *text + (text->ends_with('\n') ? "" : "\n");
    }
    return printedObject(name, *std::get<DataObjectPtr>(value), rows);
}

std::string withoutControls(std::string text) {
    std::replace_if(
        text.begin(), text.end(),
        [](char c) { return (static_cast<unsigned char>(c) < 0x20 && c != '\n' && c != '\t') || c == 0x7F; }, ' ');
    return text;
}

}  // namespace velmorak
