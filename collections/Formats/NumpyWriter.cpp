#include "kinds.h"

#include "WrittenColumns.h"
#include "shared/WrittenFile.h"

#include <numpy/write/ArrayOutput.h>

#include <fstream>
#include <optional>
#include <utility>

namespace velmorak {
namespace {

/// What to write.
struct Choice {
    std::string fileName;
    bool isArchive = false;
    bool deflates = false;
};

class NumpyWriting : public Accumulation, public ColumnFile {
public:
    /// @param context outlives this.
    NumpyWriting(Choice choice, Schema schema, RunContext& context);

    std::unique_ptr<AccumulatorState> newState() const override { return std::make_unique<WrittenColumns>(*this); }
    void finish(AccumulatorState& state, Results&) override;

private:
    const Schema& schema() const override { return types; }
    void append(const std::vector<ColumnPtr>& columns, std::size_t count) const override;
    numpy::RowStore& store() const;

    const Choice choice;
    const Schema types;
    RunContext& context;
    /// Take the rows of the states, which the run merges one at a time.
    mutable std::unique_ptr<ResultFile> temporary;
    mutable std::optional<numpy::RowStore> rows;
};

NumpyWriting::NumpyWriting(Choice choice, Schema schema, RunContext& context)
    : choice(std::move(choice)), types(std::move(schema)), context(context) {}

void NumpyWriting::append(const std::vector<ColumnPtr>& columns, std::size_t count) const {
    store().append(columns, count);
}

/// Lies beside the file, where there must be room anyway, and is never kept.
numpy::RowStore& NumpyWriting::store() const {
    if (!rows) {
        temporary = context.beginResult(choice.fileName + ".rows");
        rows.emplace(temporary->path(), types);
    }
    return *rows;
}

void NumpyWriting::finish(AccumulatorState& state, Results&) {
    static_cast<WrittenColumns&>(state).handOver();
    const std::unique_ptr<ResultFile> file = context.beginResult(choice.fileName);
    std::ofstream out(file->path(), std::ios::binary);
    if (choice.isArchive) {
        numpy::writeArchive(store(), out, choice.deflates, context);
    } else {
        numpy::writeRecords(store(), out, context);
    }
    out.close();
    if (!out) {
        throw Failure("\"" + choice.fileName + "\" cannot be written");
    }
    file->keep();
}

bool isArchive(const std::string& file) {
    return file.ends_with(".npz");
}

/// Writes a table as an array of records or an archive of arrays. It is streamed, so it may be larger than memory.
class NumpyWriterKind : public Accumulator {
public:
    std::string name() const override { return "NumpyWriter"; }
    std::string summary() const override { return "Writes a table as a NumPy file."; }
    std::string notes() const override;
    Ports ports(const ValueTexts& values) const override;
    std::string refusal(const std::string& input, const std::string& value) const override;
    MergeOrder mergeOrder() const override { return MergeOrder::FirstToLast; }
    std::unique_ptr<Accumulation> prepare(const Arguments& arguments, const Schema* schema,
                                          RunContext& context) const override;
};

std::string NumpyWriterKind::notes() const {
    return R"(The ending of the file name decides:

| file | contents | `np.load` gives |
|---|---|---|
| `.npy` | an array of records with a field for each column | an array `rows`; `rows["x"]` is a column |
| `.npz` | an archive with an array for each column | a mapping `file`; `file["x"]` is a column |

Reals are written as `f8`, integers as `i8`, booleans as `b1`, texts as `U` with the length of the longest. NumPy and `NumpyTable`
read every value back to the last bit; only zeros at the end of a text are lost, as in any array of texts.

A column of lists is a field that is an array itself, so in a `.npy` file all its lists must have the same number of values. An
archive takes any lists: the values one after the other as the array `NAME`, and as `NAME.offsets` where the list of each row begins,
and at last where the last one ends. In Python, `np.split(file["pt"], file["pt.offsets"][1:-1])` gives the lists. Units are not written. The file has the
same bytes for any number of threads. See [NumPy files](../numpy.md).)";
}

Ports NumpyWriterKind::ports(const ValueTexts&) const {
    Ports ports;
    ports.inputs = {
        {.name = "table", .description = "Table to write.", .type = ValueType::Table},
        writtenFileInput(".npy", ", which ends with .npy or .npz"),
        {.name = "compression",
         .description = "Of an archive (.npz). none: quick to read; deflate: short.",
         .type = ValueType::Choice,
         .value = "none",
         .choices = {"none", "deflate"}},
    };
    return ports;
}

std::string NumpyWriterKind::refusal(const std::string& input, const std::string& value) const {
    const bool isWrong = input == "file" && !value.empty() && !value.ends_with(".npy") && !isArchive(value);
    return isWrong ? "The name of the file must end with .npy (records) or .npz (an archive of arrays)." : "";
}

/// In an archive, a list takes two names.
void requireDifferentNames(const Schema& schema) {
    for (const ColumnInfo& info : schema.columns()) {
        if (info.isList && schema.find(info.name + ".offsets")) {
            throw Failure("table", "the column \"" + info.name +
                                       ".offsets\" has the name that the archive needs for the lists of \"" +
                                       info.name + "\"; rename one of them");
        }
    }
}

std::unique_ptr<Accumulation> NumpyWriterKind::prepare(const Arguments& arguments, const Schema* schema,
                                                       RunContext& context) const {
    if (!schema || schema->size() == 0) {
        throw Failure("table", schema ? "the table has no columns" : "nothing is wired");
    }
    if (const std::string reason = refusal("file", arguments.text("file")); !reason.empty()) {
        throw Failure("file", reason);
    }
    Choice choice{.fileName = writtenFileName(arguments, context, ".npy"),
                  .deflates = arguments.text("compression") == "deflate"};
    choice.isArchive = isArchive(choice.fileName);
    if (choice.isArchive) {
        requireDifferentNames(*schema);
    } else if (choice.deflates) {
        throw Failure("compression", "a .npy file cannot be compressed; write an archive (.npz)");
    }
    return std::make_unique<NumpyWriting>(std::move(choice), *schema, context);
}

}  // namespace

std::unique_ptr<Kind> makeNumpyWriter() {
    return std::make_unique<NumpyWriterKind>();
}

}  // namespace velmorak
