#include "Output/kinds.h"

#include "CsvText.h"
#include "Output/Ports.h"
#include "PrintText.h"
#include "TextOutput.h"

#include <velmorak/Parts.h>
#include <velmorak/StateBytes.h>

#include <algorithm>
#include <utility>

namespace velmorak {

namespace {

using TextRows = std::vector<std::vector<std::string>>;

/// The first rows of a table, and the number of all rows.
class FirstRows : public AccumulatorState {
public:
    FirstRows(const Schema& schema, std::size_t most) : schema(schema), most(most) {}

    void fill(const Chunk& chunk) override;

    void merge(AccumulatorState& other) override;
    void save(StateWriter& writer) const override;
    void load(StateReader& reader) override;

    TextRows rows;
    std::uint64_t count = 0;

private:
    const Schema& schema;
    std::size_t most;
};

void FirstRows::fill(const Chunk& chunk) {
    for (std::size_t row = 0; row < chunk.rows && rows.size() < most; ++row) {
        rows.emplace_back();
        for (std::size_t i = 0; i < schema.size(); ++i) {
            rows.back().push_back(fieldText(schema[i], *chunk.columns[i], row));
        }
    }
    count += chunk.rows;
}

void FirstRows::merge(AccumulatorState& other) {
    auto& later = static_cast<FirstRows&>(other);
    const std::size_t taken = std::min(most - rows.size(), later.rows.size());
    std::move(later.rows.begin(), later.rows.begin() + static_cast<std::ptrdiff_t>(taken), std::back_inserter(rows));
    count += later.count;
}

void FirstRows::save(StateWriter& writer) const {
    writer.version(1);
    writer.number(count);
    writer.number<std::uint64_t>(rows.size());
    for (const auto& row : rows) {
        writer.number<std::uint64_t>(row.size());
        for (const std::string& word : row) {
            writer.text(word);
        }
    }
}

void FirstRows::load(StateReader& reader) {
    reader.version(1);
    count = static_cast<std::uint64_t>(reader.count());
    rows.resize(reader.length(sizeof(std::uint64_t)));
    reader.require(rows.size() == std::min<std::uint64_t>(most, count), "it has a wrong number of rows");
    for (auto& row : rows) {
        row.resize(reader.length(sizeof(std::uint64_t)));
        reader.require(row.size() == schema.size(), "a row has a wrong number of fields");
        for (std::string& word : row) {
            word = reader.text();
        }
    }
}

/// One item to print; a table gets its text when it has been read.
struct Section {
    std::string name;
    std::string text;
    bool isTable = false;
};

class Printing : public Accumulation {
public:
    Printing(std::vector<Section> parts, Schema schema, std::size_t most, std::string file, RunContext& context);

    std::unique_ptr<AccumulatorState> newState() const override { return std::make_unique<FirstRows>(schema, most); }
    void markColumns(std::vector<bool>& needed) const override { needed.assign(needed.size(), most > 0); }

    void finish(AccumulatorState& state, Results&) override;

private:
    std::string tableText(const std::string& name, const FirstRows& first) const;

    std::vector<Section> parts;
    Schema schema;
    std::size_t most;
    std::string file;
    RunContext& context;
};

Printing::Printing(std::vector<Section> parts, Schema schema, std::size_t most, std::string file, RunContext& context)
    : parts(std::move(parts)), schema(std::move(schema)), most(most), file(std::move(file)), context(context) {}

void Printing::finish(AccumulatorState& state, Results&) {
    const std::string partial = partialRemark(context);
    std::string text = partial.empty() ? "" : "Partial: " + partial + "\n";
    for (const Section& part : parts) {
        text += part.isTable ? tableText(part.name, static_cast<FirstRows&>(state)) : part.text;
    }
    text = withoutControls(std::move(text));
    TextOutput output(file, text, context);
    output.complete();
    context.tell(text);
}

std::string Printing::tableText(const std::string& name, const FirstRows& first) const {
    std::vector<std::string> names;
    for (const ColumnInfo& column : schema.columns()) {
        names.push_back(column.unit.empty() ? column.name : column.name + " [" + column.unit + "]");
    }
    TextRows rows = first.rows;
    for (auto& row : rows) {
        for (std::string& word : row) {
            std::replace_if(
                word.begin(), word.end(), [](char c) { return c == '\n' || c == '\t'; }, ' ');
        }
    }
    const std::string shown = std::to_string(rows.size()) + " of ";
    return name + ": " + (rows.size() < first.count ? "first " + shown : std::string()) + std::to_string(first.count) +
           (first.count == 1 ? " row\n" : " rows\n") + alignedTable(names, rows);
}

Section partOf(const Arguments& arguments, const std::string& input, std::size_t rows) {
    if (!arguments.isWired(input)) {
        throw Failure(input, "nothing is wired");
    }
    const Value& value = arguments.value(input);
    Section part{
        .name = arguments.sourceName(input) + " " + arguments.sourceOutput(input), .text = {}, .isTable = false};
    part.isTable = std::holds_alternative<std::monostate>(value);
    try {
        if (!part.isTable) {
            part.text = printedValue(part.name, value, rows);
        }
    } catch (const Failure& failure) {
        throw Failure(input, failure.what());
    }
    return part;
}

/// Prints values among the messages of the run and into a text file.
class PrintKind : public Accumulator {
public:
    std::string name() const override { return "Print"; }
    std::string summary() const override;
    std::string notes() const override;
    int version() const override { return 2; }
    Ports ports(const ValueTexts& values) const override;
    MergeOrder mergeOrder() const override { return MergeOrder::FirstToLast; }
    std::unique_ptr<Accumulation> prepare(const Arguments& arguments, const Schema* schema,
                                          RunContext& context) const override;
};

}  // namespace

std::string PrintKind::summary() const {
    return "Prints numbers, texts, objects and the first rows of a table among the messages of the run, and into a "
           "text "
           "file.";
}

std::string PrintKind::notes() const {
    return R"(Output goes to standard error, among the messages of the run, and to a file in the results folder; nothing is written to
standard output. Each item begins with the names of its plug-in and output. Control characters are removed from texts. For an
object, its title is followed by statistics and the first bins, with columns as in `CsvWriter`, or the first points with their
errors; for a list of histograms, by a line for each of the first ones; for a function, by its parameters, with errors, χ² and p-value if it was fitted.

A number with an error is rounded as in `91.212 ± 0.014`: its error by the rule of the Particle Data Group (Review of
Particle Physics, Introduction, section 5.3), to two digits if its three leading digits are 100 to 354, to one if they
are 355 to 949, and up to 1000, with two digits kept, if they are 950 to 999; the value to the same digit. Large and small
numbers have a common power of ten: `(1.234 ± 0.012)e+06`. Asymmetric errors, as in `1.23 +0.12 -0.10`, are rounded to the
last digit of the smaller one. A number without an error has as many digits as are needed to read back the same number;
counts are written as `1000000`. All digits of numbers with errors are in `run.json`.

If nothing has changed, a further run does not print again; the file stays.)";
}

Ports PrintKind::ports(const ValueTexts& values) const {
    const InputSpec object = {.name = "object",
                              .description = "Number, text, object or table to print. At most one can be a table.",
                              .type = ValueType::Any};
    Ports ports;
    ports.inputs = {
        object,
        countInput("objects", "Number of items to print, 1 to 16; each has its own input."),
        {.name = "rows",
         .description = "Number of rows of a table, bins of a histogram, histograms of a list or points to print; 0: "
                        "only how many "
                        "there are.",
         .value = "10",
         .minimum = 0,
         .maximum = 10000,
         .isInteger = true},
        writtenFileInput(".txt"),
    };
    addNumbered(ports, object, numberedCount(values, "objects"));
    return ports;
}

std::unique_ptr<Accumulation> PrintKind::prepare(const Arguments& arguments, const Schema* schema,
                                                 RunContext& context) const {
    const auto rows = static_cast<std::size_t>(arguments.integer("rows"));
    std::vector<Section> parts;
    for (const std::string& input : numberedInputs(arguments, "objects", "object")) {
        parts.push_back(partOf(arguments, input, rows));
    }
    return std::make_unique<Printing>(std::move(parts), !schema ? Schema() : *schema, rows,
                                      writtenFileName(arguments, context, ".txt"), context);
}

std::unique_ptr<Kind> makePrint() {
    return std::make_unique<PrintKind>();
}

}  // namespace velmorak
