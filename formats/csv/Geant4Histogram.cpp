#include "csv/Geant4Histogram.h"

#include "csv/CsvStream.h"
#include "csv/Geant4Header.h"

#include <velmorak/Histogram.h>
#include <velmorak/Profile.h>
#include <velmorak/Text.h>

#include <array>
#include <cmath>
#include <map>
#include <memory>
#include <stdexcept>
#include <utility>

namespace velmorak {

namespace {

double numberIn(std::string_view text) {
    double number = 0.0;
    if (!readNumber(text, number)) {
        throw std::invalid_argument(velmorak::quoted(text.substr(0, 40)) + " is not a number");
    }
    return number;
}

/// Reads "fixed 100 0 800" or "edges 0 1 5".
Axis axisOf(const std::vector<std::string>& words) {
    if (words.size() == 4 && words[0] == "fixed") {
        const double bins = numberIn(words[1]);
        if (!(bins >= 1.0 && bins <= 1e8)) {
            throw std::invalid_argument("an axis has " + words[1] + " bins");
        }
        return {static_cast<std::size_t>(bins), numberIn(words[2]), numberIn(words[3])};
    }
    if (words.empty() || words[0] != "edges") {
        throw std::invalid_argument(R"(an axis is neither of the form "fixed" nor "edges")");
    }
    std::vector<double> edges;
    for (std::size_t i = 1; i < words.size(); ++i) {
        edges.push_back(numberIn(words[i]));
    }
    return Axis(std::move(edges));
}

/// The names of the columns and the rows below them.
struct Sums {
    std::map<std::string, std::size_t> columns;
    std::vector<std::vector<double>> rows;
};

Sums sumsIn(const std::filesystem::path& file, const Geant4Header& header, RunContext& context) {
    const CsvForm form{.delimiter = header.separator, .comment = "#"};
    CsvStream stream(file, CsvEncoding::Automatic, form, context);
    std::vector<CsvField> fields;
    Sums sums;
    while (stream.next(fields)) {
        if (sums.columns.empty()) {
            for (std::size_t i = 0; i < fields.size(); ++i) {
                sums.columns.emplace(std::string(fields[i].text), i);
            }
            continue;
        }
        if (fields.size() != sums.columns.size()) {
            throw std::invalid_argument("line " + std::to_string(stream.line()) + " has " +
                                        std::to_string(fields.size()) + " fields instead of " +
                                        std::to_string(sums.columns.size()));
        }
        sums.rows.emplace_back();
        for (const CsvField& field : fields) {
            sums.rows.back().push_back(numberIn(field.text));
        }
    }
    return sums;
}

double valueIn(const Sums& sums, std::size_t row, const std::string& name) {
    const auto found = sums.columns.find(name);
    if (found == sums.columns.end()) {
        throw std::invalid_argument("there is no column " + velmorak::quoted(name));
    }
    return sums.rows[row][found->second];
}

/// The quantities of a cell are called 0, 1, 2 along the axes, and v if they are the profiled value.
template <std::size_t quantities>
CellSums<quantities> cellOf(const Sums& sums, std::size_t row, std::size_t axes) {
    CellSums<quantities> cell;
    cell.w = valueIn(sums, row, "Sw");
    cell.ww = valueIn(sums, row, "Sw2");
    for (std::size_t i = 0; i < quantities; ++i) {
        const std::string number = std::to_string(i);
        cell.first[i] = valueIn(sums, row, i < axes ? "Sxw" + number : "Svw");
        cell.second[cell.pairOf(i, i)] = valueIn(sums, row, i < axes ? "Sx2w" + number : "Sv2w");
    }
    for (std::size_t i = 0; i < quantities; ++i) {
        for (std::size_t j = i + 1; j < quantities; ++j) {
            cell.second[cell.pairOf(i, j)] = cell.w == 0.0 ? 0.0 : cell.first[i] * cell.first[j] / cell.w;
        }
    }
    const double entries = valueIn(sums, row, "entries");
    if (!(std::abs(entries) < 9e18)) {
        throw std::invalid_argument("a bin has " + textOf(entries) + " entries");
    }
    cell.entries = static_cast<std::int64_t>(entries);
    return cell;
}

template <std::size_t axes, std::size_t quantities>
std::pair<Grid<axes>, CellVector<CellSums<quantities>>> cellsOf(const Geant4Header& header, const Sums& sums) {
    if (header.axes.size() != axes) {
        throw std::invalid_argument("it has " + std::to_string(header.axes.size()) + " lines #axis");
    }
    Grid<axes> grid = [&]<std::size_t... position>(std::index_sequence<position...>) {
        return Grid<axes>({axisOf(header.axes[position])...});
    }
    (std::make_index_sequence<axes>());
    if (sums.rows.size() != grid.cellCount()) {
        throw std::invalid_argument("it has " + std::to_string(sums.rows.size()) + " rows for " +
                                    std::to_string(grid.cellCount()) + " bins");
    }
    CellVector<CellSums<quantities>> cells(grid.cellCount());
    for (std::size_t row = 0; row < sums.rows.size(); ++row) {
        cells[row] = cellOf<quantities>(sums, row, axes);
    }
    return {std::move(grid), std::move(cells)};
}

template <std::size_t axes>
std::shared_ptr<DataObject> histogramOf(const Geant4Header& header, const Sums& sums) {
    auto [grid, cells] = cellsOf<axes, axes>(header, sums);
    return std::make_shared<Histogram<axes>>(std::move(grid), std::move(cells), 0);
}

template <std::size_t axes>
std::shared_ptr<DataObject> profileOf(const Geant4Header& header, const Sums& sums) {
    auto [grid, cells] = cellsOf<axes, axes + 1>(header, sums);
    return std::make_shared<Profile<axes>>(std::move(grid), std::move(cells), CellVector<ProfileReading>(), 0);
}

[[noreturn]] void refuse(const Geant4Header& header) {
    throw std::invalid_argument("objects of class " + header.className + " cannot be read" +
                                (header.isNtuple() ? "; use CsvTable" : ""));
}

std::shared_ptr<DataObject> objectOf(const Geant4Header& header, const Sums& sums) {
    const std::string type = header.className.substr(header.className.rfind(':') + 1);
    if (type == "h1d") {
        return histogramOf<1>(header, sums);
    }
    if (type == "h2d") {
        return histogramOf<2>(header, sums);
    }
    if (type == "h3d") {
        return histogramOf<3>(header, sums);
    }
    if (type == "p1d") {
        return profileOf<1>(header, sums);
    }
    if (type == "p2d") {
        return profileOf<2>(header, sums);
    }
    refuse(header);
}

template <typename Object>
bool setTitles(DataObject& object, const Geant4Header& header) {
    auto* grid = dynamic_cast<Object*>(&object);
    for (const auto& [key, value] : header.annotations) {
        for (std::size_t i = 0; grid && i < Object::dimensions; ++i) {
            if (key == std::string("axis_") + "xyz"[i] + ".title") {
                grid->setAxisTitle(i, value);
            }
        }
    }
    return grid != nullptr;
}

}  // namespace

DataObjectPtr readGeant4Histogram(const std::filesystem::path& file, RunContext& context) {
    const std::string begin = velmorak::quoted(file.string()) + ": ";
    std::optional<Geant4Header> header;
    {
        const CsvText text(file, CsvEncoding::Automatic);
        header = geant4HeaderIn(text.head());
    }
    if (!header) {
        throw Failure("file", begin + "it does not begin with a line #class, as a histogram of Geant4 does");
    }
    try {
        if (header->isNtuple()) {
            refuse(*header);
        }
        const std::shared_ptr<DataObject> object = objectOf(*header, sumsIn(file, *header, context));
        object->name = file.stem().string();
        object->title = header->title;
        setTitles<Histogram1D>(*object, *header) || setTitles<Histogram2D>(*object, *header) ||
            setTitles<Histogram3D>(*object, *header) || setTitles<Profile1D>(*object, *header) ||
            setTitles<Profile2D>(*object, *header);
        return object;
    } catch (const std::invalid_argument& fault) {
        throw Failure("file", begin + fault.what());
    }
}

}  // namespace velmorak
