#include "yoda/YodaFile.h"

#include "yoda/YodaCells.h"

#include <velmorak/DataObjects.h>

#include <cmath>
#include <memory>

namespace velmorak {

namespace {

using yoda::axisOf;
using yoda::Block;
using yoda::Fault;
using yoda::numberIn;
using yoda::numbersIn;
using yoda::readBlocks;
using yoda::sumsOf;

/// Rows of versions 1 and 2 that hold more than one bin.
bool isSummary(const std::vector<std::string>& words) {
    return words.front() == "Total" || words.front() == "Underflow" || words.front() == "Overflow";
}

template <std::size_t axes, std::size_t quantities>
struct Filled {
    Grid<axes> grid;
    CellVector<CellSums<quantities>> cells;
};

/// Reads the bins of version 3: a row for each cell, the first axis fastest, with underflow and overflow.
template <std::size_t axes, std::size_t quantities>
Filled<axes, quantities> cellsByNumber(const Block& block) {
    if (block.edges.size() != axes) {
        throw Fault("it has edges for " + std::to_string(block.edges.size()) + " axes");
    }
    const Grid<axes> grid = [&] {
        if constexpr (axes == 1) {
            return Grid<1>({axisOf(block.edges[0])});
        } else {
            return Grid<2>({axisOf(block.edges[0]), axisOf(block.edges[1])});
        }
    }();
    // Categories have one cell for all others, and it is the first.
    std::array<std::size_t, axes> counts{};
    std::size_t expected = 1;
    for (std::size_t i = 0; i < axes; ++i) {
        counts[i] = grid.axis(i).bins() + (grid.axis(i).labels.empty() ? 2 : 1);
        expected *= counts[i];
    }
    if (block.rows.size() != expected) {
        throw Fault("it has " + std::to_string(block.rows.size()) + " rows for " + std::to_string(expected) + " bins");
    }
    CellVector<CellSums<quantities>> cells(grid.cellCount());
    for (std::size_t row = 0; row < expected; ++row) {
        std::array<std::size_t, axes> along{};
        std::size_t rest = row;
        for (std::size_t i = 0; i < axes; ++i) {
            along[i] = rest % counts[i];
            rest /= counts[i];
        }
        cells[grid.cell(along)] = sumsOf<quantities>(numbersIn(block.rows[row]), 0);
    }
    return {grid, std::move(cells)};
}

using Limits = std::vector<std::pair<double, double>>;

Grid<1> gridOf(std::array<Limits, 1>& limits) {
    return Grid<1>({axisOf(limits[0])});
}

Grid<2> gridOf(std::array<Limits, 2>& limits) {
    return Grid<2>({axisOf(limits[0]), axisOf(limits[1])});
}

/// Reads the rows of underflow and overflow.
template <std::size_t quantities>
void readOutside(const Block& block, CellVector<CellSums<quantities>>& cells) {
    for (const std::vector<std::string>& words : block.rows) {
        if (words.front() != "Underflow" && words.front() != "Overflow") {
            continue;
        }
        if (words.size() < 2) {
            throw Fault("a row has 1 word");
        }
        const std::vector<double> sums = numbersIn({words.begin() + 2, words.end()});
        (words.front() == "Underflow" ? cells[0] : cells[cells.size() - 1]) = sumsOf<quantities>(sums, 0);
    }
}

/// Reads the bins of versions 1 and 2: rows with limits along each axis.
template <std::size_t axes, std::size_t quantities>
Filled<axes, quantities> cellsByLimits(const Block& block) {
    std::array<Limits, axes> limits;
    std::vector<std::vector<double>> rows;
    for (const std::vector<std::string>& words : block.rows) {
        if (isSummary(words)) {
            continue;
        }
        rows.push_back(numbersIn(words));
        if (rows.back().size() < 2 * axes) {
            throw Fault("a row has " + std::to_string(rows.back().size()) + " numbers");
        }
        for (std::size_t i = 0; i < axes; ++i) {
            limits[i].emplace_back(rows.back()[2 * i], rows.back()[2 * i + 1]);
        }
    }
    if (rows.empty()) {
        throw Fault("it has no bins");
    }
    const Grid<axes> grid = gridOf(limits);
    // Rows far from a grid would need memory for many more cells than there are rows.
    constexpr std::size_t maxGaps = 100;
    if (grid.cellCount() > maxGaps * (rows.size() + maxGaps)) {
        throw Fault("its bins are not a grid");
    }
    CellVector<CellSums<quantities>> cells(grid.cellCount());
    for (const std::vector<double>& row : rows) {
        std::array<std::size_t, axes> along{};
        for (std::size_t i = 0; i < axes; ++i) {
            along[i] = grid.axis(i).cell(row[2 * i]);
        }
        cells[grid.cell(along)] = sumsOf<quantities>(row, 2 * axes);
    }
    if constexpr (axes == 1) {
        readOutside(block, cells);
    }
    return {grid, std::move(cells)};
}

template <std::size_t axes, std::size_t quantities>
Filled<axes, quantities> filledOf(const Block& block) {
    return block.edges.empty() ? cellsByLimits<axes, quantities>(block) : cellsByNumber<axes, quantities>(block);
}

template <std::size_t axes>
std::shared_ptr<DataObject> histogramOf(const Block& block) {
    Filled<axes, axes> filled = filledOf<axes, axes>(block);
    return std::make_shared<Histogram<axes>>(std::move(filled.grid), std::move(filled.cells), 0);
}

template <std::size_t axes>
std::shared_ptr<DataObject> profileOf(const Block& block) {
    Filled<axes, axes + 1> filled = filledOf<axes, axes + 1>(block);
    return std::make_shared<Profile<axes>>(std::move(filled.grid), std::move(filled.cells),
                                           CellVector<ProfileReading>(), 0);
}

/// Reads points: for each dimension a value, its error downwards and its error upwards.
std::shared_ptr<DataObject> pointsOf(const Block& block, std::size_t dimension) {
    std::vector<Measurement> all;
    for (const std::vector<std::string>& words : block.rows) {
        const std::vector<double> numbers = numbersIn(words);
        if (numbers.size() < 3 * dimension) {
            throw Fault("a row has " + std::to_string(numbers.size()) + " numbers");
        }
        for (std::size_t i = 0; i < dimension; ++i) {
            all.push_back({.value = numbers[3 * i], .errorPlus = numbers[3 * i + 2], .errorMinus = numbers[3 * i + 1]});
        }
    }
    return std::make_shared<Points>(dimension, std::move(all));
}

/// Reads a value and the shifts of its sources of errors, each downwards and upwards, or --- for none. The shifts of
/// different sources are added in quadrature.
Measurement estimateIn(const std::vector<std::string>& words) {
    Measurement estimate{.value = numberIn(words.front())};
    double plus = 0.0;
    double minus = 0.0;
    for (std::size_t i = 1; i + 1 < words.size(); i += 2) {
        const double down = words[i] == "---" ? 0.0 : numberIn(words[i]);
        const double up = words[i + 1] == "---" ? 0.0 : numberIn(words[i + 1]);
        const double highest = std::max({down, up, 0.0});
        const double lowest = std::min({down, up, 0.0});
        plus = plus == 0.0 ? highest : std::sqrt(plus * plus + highest * highest);
        minus = minus == 0.0 ? -lowest : std::sqrt(minus * minus + lowest * lowest);
    }
    estimate.errorPlus = plus;
    estimate.errorMinus = minus;
    return estimate;
}

/// Reads estimates in bins as points at their centres. Those outside of the bins are left out.
std::shared_ptr<DataObject> estimatesOf(const Block& block, std::size_t axes) {
    std::vector<Axis> axis;
    std::size_t expected = 1;
    for (const std::string& edges : block.edges) {
        axis.push_back(axisOf(edges));
        expected *= axis.back().bins() + (axis.back().labels.empty() ? 2 : 1);
    }
    if (axis.size() != axes || block.rows.size() != expected) {
        throw Fault("it has " + std::to_string(block.rows.size()) + " rows for " + std::to_string(expected) + " bins");
    }
    std::vector<Measurement> all;
    for (std::size_t row = 0; row < expected; ++row) {
        std::vector<Measurement> point;
        std::size_t rest = row;
        bool isInside = true;
        for (const Axis& along : axis) {
            const std::size_t count = along.bins() + (along.labels.empty() ? 2 : 1);
            const std::size_t cell = rest % count;
            rest /= count;
            isInside = isInside && cell > 0 && cell <= along.bins();
            const double half = isInside ? 0.5 * along.width(cell - 1) : 0.0;
            point.push_back({.value = isInside ? along.center(cell - 1) : 0.0, .errorPlus = half, .errorMinus = half});
        }
        point.push_back(estimateIn(block.rows[row]));
        if (isInside) {
            all.insert(all.end(), point.begin(), point.end());
        }
    }
    return std::make_shared<Points>(axes + 1, std::move(all));
}

NumberWithError withError(double value, double error, const std::string& path) {
    if (error == 0.0) {
        return NumberWithError(value);
    }
    auto covariance = std::make_shared<const CovarianceMatrix>(
        CovarianceMatrix{.origin = path, .names = {path}, .elements = {error * error}});
    return NumberWithError(value, {{std::move(covariance), {1.0}}});
}

Value counterOf(const Block& block) {
    const std::vector<double> numbers = block.rows.size() == 1 ? numbersIn(block.rows[0]) : std::vector<double>();
    if (numbers.size() < 2) {
        throw Fault("it has no row with the sums of weights");
    }
    return withError(numbers[0], std::sqrt(numbers[1]), block.path);
}

Value numberOf(const Block& block) {
    if (block.rows.size() != 1) {
        throw Fault("it has " + std::to_string(block.rows.size()) + " rows for one value");
    }
    const Measurement estimate = estimateIn(block.rows[0]);
    return withError(estimate.value, std::max(estimate.errorPlus, estimate.errorMinus), block.path);
}

std::shared_ptr<DataObject> objectOf(const Block& block, const std::string& type) {
    using Make = std::shared_ptr<DataObject> (*)(const Block&);
    const std::vector<std::pair<std::string_view, Make>> makers = {
        {"HISTO1D", histogramOf<1>},
        {"HISTO2D", histogramOf<2>},
        {"PROFILE1D", profileOf<1>},
        {"PROFILE2D", profileOf<2>},
        {"BINNEDHISTO<S>", histogramOf<1>},
        {"SCATTER1D", [](const Block& rows) { return pointsOf(rows, 1); }},
        {"SCATTER2D", [](const Block& rows) { return pointsOf(rows, 2); }},
        {"SCATTER3D", [](const Block& rows) { return pointsOf(rows, 3); }},
        {"ESTIMATE1D", [](const Block& rows) { return estimatesOf(rows, 1); }},
        {"BINNEDESTIMATE<S>", [](const Block& rows) { return estimatesOf(rows, 1); }},
        {"ESTIMATE2D", [](const Block& rows) { return estimatesOf(rows, 2); }}};
    for (const auto& [name, make] : makers) {
        if (name == type) {
            return make(block);
        }
    }
    throw Fault("objects of type " + block.type + " cannot be read");
}

Value valueOf(const Block& block) {
    const std::string type = block.type.substr(0, block.type.rfind("_V"));
    if (type == "COUNTER") {
        return counterOf(block);
    }
    if (type == "ESTIMATE0D") {
        return numberOf(block);
    }
    const std::shared_ptr<DataObject> object = objectOf(block, type);
    object->name = block.path.substr(block.path.rfind('/') + 1);
    object->title = block.title;
    object->annotation = block.annotation;
    return DataObjectPtr(object);
}

}  // namespace

std::vector<YodaEntry> readYoda(const std::filesystem::path& file, RunContext& context) {
    std::vector<YodaEntry> entries;
    for (const Block& block : readBlocks(file, context)) {
        YodaEntry entry{
            .path = block.path, .type = block.type, .line = block.line, .value = {}, .problem = block.problem};
        try {
            if (entry.problem.empty()) {
                entry.value = valueOf(block);
            }
        } catch (const Fault& fault) {
            entry.problem = fault.what();
        } catch (const std::invalid_argument& fault) {
            entry.problem = fault.what();
        }
        entries.push_back(std::move(entry));
    }
    return entries;
}

}  // namespace velmorak
