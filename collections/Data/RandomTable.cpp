#include "kinds.h"

#include "Distribution.h"

#include <velmorak/ChunkSize.h>

#include <algorithm>
#include <utility>

namespace velmorak {

namespace {

class RandomReader : public TableReader {
public:
    RandomReader(std::vector<RandomColumn> randomColumns, std::uint64_t rows, std::uint64_t seed,
                 const RunContext& context);

    const Schema& schema() const override { return made; }

    void selectColumns(const std::vector<bool>& needed) override { isNeeded = needed; }

    bool next(Chunk& chunk) override;

    /// Each number depends on its row and column alone, so that chunks can be made in any order and in parallel.
    void complete(Chunk& chunk) const override;

    std::optional<double> fraction() const override;

private:
    ColumnPtr columnOf(std::uint32_t position, const Chunk& chunk) const;

    template <typename Number>
    ColumnPtr filled(const Distribution& distribution, std::uint32_t position, const Chunk& chunk) const {
        std::vector<Number> values(chunk.rows);
        for (std::size_t i = 0; i < chunk.rows; ++i) {
            values[i] = static_cast<Number>(distribution.valueAt(chunk.firstRow + i, position, seed));
        }
        return std::make_shared<const Column>(Column{std::move(values), {}});
    }

    std::vector<RandomColumn> columns;
    Schema made;
    std::vector<bool> isNeeded;  ///< By column.
    std::size_t maxRows = 0;     ///< In a chunk.
    std::uint64_t rows;
    std::uint64_t row = 0;
    std::uint64_t seed;
    const RunContext& context;
};

RandomReader::RandomReader(std::vector<RandomColumn> randomColumns, std::uint64_t rows, std::uint64_t seed,
                           const RunContext& context)
    : columns(std::move(randomColumns)), rows(rows), seed(seed), context(context) {
    for (const RandomColumn& column : columns) {
        made.add(
            {.name = column.name, .type = column.distribution.isInteger() ? ColumnType::Integer : ColumnType::Real});
    }
    maxRows = rowsInChunk(made);
    isNeeded.assign(made.size(), true);
}

bool RandomReader::next(Chunk& chunk) {
    chunk.rows = static_cast<std::size_t>(std::min<std::uint64_t>(maxRows, rows - row));
    row += chunk.rows;
    return chunk.rows > 0;
}

void RandomReader::complete(Chunk& chunk) const {
    for (std::uint32_t column = 0; column < columns.size(); ++column) {
        if (context.isStopping()) {
            throw Stopped();
        }
        chunk.columns.push_back(isNeeded[column] ? columnOf(column, chunk) : nullptr);
    }
}

std::optional<double> RandomReader::fraction() const {
    return rows == 0 ? 1.0 : static_cast<double>(row) / static_cast<double>(rows);
}

ColumnPtr RandomReader::columnOf(std::uint32_t position, const Chunk& chunk) const {
    const Distribution& distribution = columns[position].distribution;
    if (distribution.isInteger()) {
        return filled<std::int64_t>(distribution, position, chunk);
    }
    return filled<double>(distribution, position, chunk);
}

constexpr double maxWhole = 9007199254740992.0;  // All integers up to here are doubles.

/// Generates random numbers, each a function of seed, row and column alone.
class RandomTableKind : public Source {
public:
    std::string name() const override { return "RandomTable"; }
    std::string summary() const override;
    Ports ports(const ValueTexts& values) const override;
    std::string refusal(const std::string& input, const std::string& value) const override;
    bool tellsColumns() const override { return true; }
    std::unique_ptr<TableReader> open(const Arguments& arguments, RunContext& context) const override;
};

}  // namespace

std::string RandomTableKind::summary() const {
    return "Generates a table of random numbers, reproducible for a given seed.";
}

Ports RandomTableKind::ports(const ValueTexts&) const {
    return {{{.name = "rows",
              .description = "Number of rows.",
              .value = "1000",
              .minimum = 0,
              .maximum = maxWhole,
              .isInteger = true},
             {.name = "columns",
              .description =
                  "Columns, one a line or separated by semicolons, each as name: distribution, for example "
                  "t: exponential(2.2); m: gauss(91.2, 2.5). There are uniform(low, high), gauss(mean, deviation), "
                  "exponential(mean), breitwigner(peak, full width) and poisson(mean).",
              .type = ValueType::Text,
              .value = "x: uniform(0, 1)"},
             {.name = "seed",
              .description = "Seed of the random numbers; the same seed gives the same numbers.",
              .value = "1",
              .minimum = 0,
              .maximum = maxWhole,
              .isInteger = true,
              .isSeed = true}},
            {{.name = "table",
              .description = "The random numbers; a Poisson column is integer, the others are real.",
              .type = ValueType::Table}}};
}

std::string RandomTableKind::refusal(const std::string& input, const std::string& value) const {
    if (input != "columns") {
        return {};
    }
    try {
        randomColumnsIn(value);
        return {};
    } catch (const Failure& failure) {
        return failure.what();
    }
}

std::unique_ptr<TableReader> RandomTableKind::open(const Arguments& arguments, RunContext& context) const {
    std::vector<RandomColumn> columns = randomColumnsIn(arguments.text("columns"));
    if (columns.empty()) {
        throw Failure("columns", "no column is given");
    }
    return std::make_unique<RandomReader>(std::move(columns), static_cast<std::uint64_t>(arguments.integer("rows")),
                                          static_cast<std::uint64_t>(arguments.integer("seed")), context);
}

std::unique_ptr<Kind> makeRandomTable() {
    return std::make_unique<RandomTableKind>();
}

}  // namespace velmorak
