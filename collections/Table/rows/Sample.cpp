#include "Table/kinds.h"

#include "Table/cuts/Condition.h"
#include "shared/Philox.h"

#include <velmorak/Parts.h>

#include <cstdint>
#include <utility>

namespace velmorak {

namespace {

/// Which rows are kept, by their position in the table.
struct Choice {
    bool isRandom = true;
    double fraction = 1.0;
    std::uint64_t seed = 0;
    std::uint64_t every = 1;

    bool contains(std::uint64_t row) const;
};

bool Choice::contains(std::uint64_t row) const {
    if (!isRandom) {
        return row % every == 0;
    }
    const Philox::Block bits =
        Philox::at({static_cast<std::uint32_t>(row), static_cast<std::uint32_t>(row >> 32U), 0, 0}, seed);
    const std::uint64_t most = std::uint64_t{bits[0]} << 21U | bits[1] >> 11U;  // 53 bits, all of which a double has.
    return static_cast<double>(most) * 0x1p-53 < fraction;
}

class SampleOperation : public RowOperation {
public:
    SampleOperation(Schema columns, const Choice& choice) : columns(std::move(columns)), choice(choice) {}

    const Schema& schema() const override { return columns; }
    bool countsRows() const override { return true; }
    Chunk apply(const Chunk& chunk) const override;
    void markColumns(const std::vector<bool>& wanted, std::vector<bool>& needed) override { needed = wanted; }

private:
    Schema columns;
    Choice choice;
};

Chunk SampleOperation::apply(const Chunk& chunk) const {
    std::vector<std::uint8_t> keep(chunk.rows);
    for (std::size_t row = 0; row < chunk.rows; ++row) {
        keep[row] = choice.contains(chunk.rowsBefore + row) ? 1 : 0;
    }
    return onlyRows(chunk, keep);
}

/// Keeps some rows, chosen at random or regularly.
class SampleKind : public RowWise, public CountingKind {
public:
    std::string name() const override { return "Sample"; }
    std::string summary() const override;
    std::string notes() const override;
    Ports ports(const ValueTexts& values) const override;
    std::unique_ptr<RowOperation> prepare(const Arguments& arguments, const Schema& schema,
                                          RunContext& context) const override;
};

}  // namespace

std::string SampleKind::summary() const {
    return "Keeps a random sample of the rows of a table, or every n-th row.";
}

std::string SampleKind::notes() const {
    return "A row is kept at random if a number that depends on the seed and on the row's position alone lies below "
           "the fraction (Philox 4x32-10, J. Salmon et al., SC11, 2011). So the same seed keeps the same rows on any "
           "number of threads, a smaller fraction keeps some of the rows that a larger one keeps, and the number of "
           "rows kept is binomially distributed.";
}

Ports SampleKind::ports(const ValueTexts&) const {
    const double largest = 9007199254740992.0;  // All integers up to here are doubles.
    return {{{.name = "table", .description = "Table whose rows are sampled.", .type = ValueType::Table},
             {.name = "mode",
              .description = "Random: each row is kept with the same probability. Every: rows at regular distances.",
              .type = ValueType::Choice,
              .value = "random",
              .choices = {"random", "every"}},
             {.name = "fraction",
              .description = "Probability of a row to be kept at random, from 0 to 1.",
              .value = "0.1",
              .minimum = 0,
              .maximum = 1},
             {.name = "seed",
              .description = "Seed of the random choice; the same seed keeps the same rows.",
              .value = "1",
              .minimum = 0,
              .maximum = largest,
              .isInteger = true,
              .isSeed = true},
             {.name = "every",
              .description = "In the mode every: keep the first row, and then every n-th.",
              .value = "10",
              .minimum = 1,
              .maximum = largest,
              .isInteger = true}},
            {{.name = "table", .description = "The rows kept, with all their columns.", .type = ValueType::Table}}};
}

std::unique_ptr<RowOperation> SampleKind::prepare(const Arguments& arguments, const Schema& schema, RunContext&) const {
    Choice choice;
    choice.isRandom = arguments.text("mode") == "random";
    choice.fraction = arguments.number("fraction");
    choice.seed = static_cast<std::uint64_t>(arguments.integer("seed"));
    choice.every = static_cast<std::uint64_t>(arguments.integer("every"));
    return std::make_unique<SampleOperation>(schema, choice);
}

std::unique_ptr<Kind> makeSample() {
    return std::make_unique<SampleKind>();
}

}  // namespace velmorak
