#include "Print.h"

#include "CsvText.h"
#include "Ports.h"
#include "PrintText.h"
#include "TextOutput.h"

#include <algorithm>
#include <utility>

namespace velmorak {

namespace {

using TextRows = std::vector<std::vector<std::string>>;

/// The first rows of a table, and how many there are.
class FirstRows : public AccumulatorState {
public:
    FirstRows(const Schema& columns, std::size_t maxRows) : schema(columns), most(maxRows) {}

    void fill(const Chunk& chunk) override;

    void merge(AccumulatorState& other) override;

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
            rows.back().push_back(fieldText(*chunk.columns[i], row));
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

/// One thing to print; the table has no text before it has passed.
struct Section {
    std::string name;
    std::string text;
    bool isTable = false;
};

class Printing : public Accumulation {
public:
    Printing(std::vector<Section> printedParts, Schema columns, std::size_t maxRows, std::string fileName,
             RunContext& runContext);

    std::unique_ptr<AccumulatorState> newState() const override { return std::make_unique<FirstRows>(schema, most); }

    void finish(AccumulatorState& state, Results&) override;

private:
    std::string tableText(const std::string& name, const FirstRows& first) const;

    std::vector<Section> parts;
    Schema schema;
    std::size_t most;
    std::string file;
    RunContext& context;
};

Printing::Printing(std::vector<Section> printedParts, Schema columns, std::size_t maxRows, std::string fileName,
                   RunContext& runContext)
    : parts(std::move(printedParts)),
      schema(std::move(columns)),
      most(maxRows),
      file(std::move(fileName)),
      context(runContext) {}

void Printing::finish(AccumulatorState& state, Results&) {
    std::string text;
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
    const auto count = static_cast<double>(first.count);
    const std::string shown = std::to_string(rows.size()) + " of ";
    return name + ": " + (rows.size() < first.count ? "first " + shown : std::string()) + textOf(count) +
           (first.count == 1 ? " row\n" : " rows\n") + alignedTable(names, rows);
}

Section partOf(const Arguments& arguments, const std::string& input, std::size_t rows) {
    if (!arguments.isWired(input)) {
        throw Failure(input, "nothing is wired");
    }
    const Value& value = arguments.value(input);
    Section part{.name = arguments.sourceName(input), .text = {}, .isTable = false};
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

}  // namespace

std::string PrintKind::summary() const {
    return "Shows numbers, texts, objects and the first rows of a table among the messages of the run, and in a text "
           "file.";
}

std::string PrintKind::notes() const {
    return R"(What is printed stands on standard error, between the messages of the run, and the same text in a file of the results
folder. Standard output carries nothing. A number is written with as many digits as read back to the same number, a text as it
is, without control characters. Of an object the title comes first, then its statistics, then its first bins or points, as
`CsvWriter` describes their columns; of a function its parameters, with errors, χ² and p-value where a fit has found them.

As long as nothing has changed, a further run prints nothing again; the file is still there.)";
}

Ports PrintKind::ports(const ValueTexts& values) const {
    const InputSpec object = {.name = "object",
                              .description = "Number, text, object or table to print. At most one is a table.",
                              .type = ValueType::Any};
    Ports ports;
    ports.inputs = {
        object,
        countInput("objects", "Number of things to print, 1 to 16; each has an input of its own."),
        {.name = "rows",
         .description =
             "Rows that are printed of a table, bins of a histogram or points; 0: none, but how many there are.",
         .value = "10",
         .minimum = 0,
         .maximum = 10000,
         .isInteger = true},
        {.name = "file",
         .description = "Name of the file in the results folder. Empty: the name of this plug-in with .txt.",
         .type = ValueType::Text},
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
    const std::string& file = arguments.text("file");
    return std::make_unique<Printing>(std::move(parts), !schema ? Schema() : *schema, rows,
                                      file.empty() ? asFileName(context.pluginName()) + ".txt" : file, context);
}

}  // namespace velmorak
