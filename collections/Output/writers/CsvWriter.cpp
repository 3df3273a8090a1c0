#include "Output/kinds.h"

#include "Output/Ports.h"
#include "Output/plots/contents/PlotValues.h"
#include "Output/texts/CsvText.h"
#include "Output/texts/TextOutput.h"
#include "WrittenRows.h"

#include <velmorak/Parts.h>

#include <algorithm>
#include <map>
#include <utility>

namespace velmorak {

namespace {

class CsvWriting : public Accumulation, public RowFile {
public:
    CsvWriting(TextOutput output, Schema schema, char delimiter);

    std::unique_ptr<AccumulatorState> newState() const override { return std::make_unique<WrittenRows>(*this); }

    void finish(AccumulatorState& state, Results&) override;

private:
    std::string format(const Chunk& chunk) const override { return csvRows(schema, chunk, delimiter); }
    void append(const std::string& rows) const override { output.append(rows); }

    /// Appends the lines of the states, which the run merges one at a time.
    mutable TextOutput output;
    Schema schema;
    char delimiter;
};

CsvWriting::CsvWriting(TextOutput output, Schema schema, char delimiter)
    : output(std::move(output)), schema(std::move(schema)), delimiter(delimiter) {}

void CsvWriting::finish(AccumulatorState& state, Results&) {
    static_cast<WrittenRows&>(state).handOver();
    output.complete();
}

char delimiterNamed(const std::string& name) {
    const std::map<std::string, char> delimiters = {
        {"comma", ','}, {"semicolon", ';'}, {"tabulator", '\t'}, {"bar", '|'}};
    return delimiters.at(name);
}

std::vector<std::string> namesOf(const Schema& schema) {
    std::vector<std::string> names;
    for (const ColumnInfo& column : schema.columns()) {
        names.push_back(column.name);
    }
    return names;
}

ObjectTable tableOf(const Arguments& arguments) {
    const auto* object = std::get_if<DataObjectPtr>(&arguments.value("object"));
    if (!arguments.isWired("object")) {
        throw Failure("object", "nothing is wired");
    }
    if (!object) {
        throw Failure("object", "a number or text cannot be written as a table; use Print");
    }
    const PlotRange range = rangeIn(arguments.text("range"));
    const Sampling sampling{
        .count = static_cast<std::size_t>(arguments.integer("samples")), .low = range.low, .high = range.high};
    try {
        return objectTable(**object, sampling);
    } catch (const Failure& failure) {
        throw Failure("object", failure.what());
    }
}

/// Writes a table, or the numbers of an object, as lines of text. A table is streamed, so it may be larger than
/// memory.
class CsvWriterKind : public Accumulator {
public:
    std::string name() const override { return "CsvWriter"; }
    std::string summary() const override;
    std::string notes() const override;
    Ports ports(const ValueTexts& values) const override;
    std::string refusal(const std::string& input, const std::string& value) const override;
    MergeOrder mergeOrder() const override { return MergeOrder::FirstToLast; }
    std::unique_ptr<Accumulation> prepare(const Arguments& arguments, const Schema* schema,
                                          RunContext& context) const override;
};

}  // namespace

std::string CsvWriterKind::summary() const {
    return "Writes a table, or the numbers of a histogram, profile, points or function, as a text file with one row on "
           "each line.";
}

std::string CsvWriterKind::notes() const {
    return R"(`CsvTable` reads every number of the file back to the last bit: reals have as many digits as that requires, with a decimal
point (`3.0`) if they are integral; `NaN`, `Infinity` and `-Infinity` are written as such, NaN without a sign. Texts are put in
double quotes, and quotes in them are doubled, so that a text that styles like a number stays a text; booleans are `true` and
`false`. A list is written as one text with its values separated by blanks; use `Explode` first to get one row for each value. The first line names the columns.

| object | columns |
|---|---|
| histogram | `low`, `high`, `entries`, `height`, `error`, `sumww`, `sumwx`, `sumwxx`: sums of w², wx and wx² |
| histogram of categories | `category`, and then as above |
| list of histograms | the key, and then as above, one histogram after the other |
| histogram over two or three | `xlow`, `xhigh`, `ylow`, `yhigh`, ..., `entries`, `height`, `error` |
| profile | `low`, `high` (or as above), `entries`, `weights`, `mean`, `error`, `rms` |
| points | `x`, `xplus`, `xminus`, `y`, `yplus`, `yminus`, ...; of more than three dimensions `x1`, `x2`, ... |
| function | `x`, `y` at equidistant points, both ends included |

Underflow and overflow are rows that extend to `-Infinity` and `Infinity`.)";
}

Ports CsvWriterKind::ports(const ValueTexts&) const {
    Ports ports;
    ports.inputs = {
        {.name = "object",
         .description = "Table, histogram, list of histograms, profile, points or function to write.",
         .type = ValueType::Any},
        writtenFileInput(".csv"),
        {.name = "delimiter",
         .description = "Separator of the fields in a line.",
         .type = ValueType::Choice,
         .value = "comma",
         .choices = {"comma", "semicolon", "tabulator", "bar"}},
        {.name = "header",
         .description = "Yes: the first line names the columns. No: there is no such line.",
         .type = ValueType::Choice,
         .value = "yes",
         .choices = {"yes", "no"}},
        {.name = "samples",
         .description = "Number of points at which a function is sampled, at least 2.",
         .value = "101",
         .minimum = 2,
         .maximum = 1e7,
         .isInteger = true},
        {.name = "range",
         .description = "Range in which a function is sampled, as two numbers in the unit of its argument; * for "
                        "an end that the function defines. Empty: it defines both.",
         .type = ValueType::Text},
    };
    return ports;
}

std::string CsvWriterKind::refusal(const std::string& input, const std::string& value) const {
    return input == "range" ? rangeRefusal(value) : std::string();
}

std::unique_ptr<Accumulation> CsvWriterKind::prepare(const Arguments& arguments, const Schema* schema,
                                                     RunContext& context) const {
    if (const std::string reason = rangeRefusal(arguments.text("range")); !reason.empty()) {
        throw Failure("range", reason);
    }
    if (schema && schema->size() == 0) {
        throw Failure("object", "the table has no columns");
    }
    const char delimiter = delimiterNamed(arguments.text("delimiter"));
    const ObjectTable table = !schema ? tableOf(arguments) : ObjectTable();
    const std::string partial = partialRemark(context);
    std::string first = partial.empty() ? "" : "# partial: " + partial + "\n";
    if (arguments.text("header") == "yes") {
        first += csvHeader(!schema ? table.columns : namesOf(*schema), delimiter);
    }
    first += csvRows(table, delimiter);
    return std::make_unique<CsvWriting>(
        TextOutput(writtenFileName(arguments, context, ".csv"), std::move(first), context), schema ? *schema : Schema(),
        delimiter);
}

std::unique_ptr<Kind> makeCsvWriter() {
    return std::make_unique<CsvWriterKind>();
}

}  // namespace velmorak
