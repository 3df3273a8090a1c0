#include "Output/kinds.h"

#include "NamedObjects.h"
#include "Output/Ports.h"
#include "RootOutput.h"
#include "WrittenRows.h"

#include <root/write/WrittenObjects.h>

#include <map>
#include <utility>

namespace velmorak {

namespace {

class RootWriting : public Accumulation, public RowFile {
public:
    RootWriting(RootContents contents, RunContext& context);

    std::unique_ptr<AccumulatorState> newState() const override { return std::make_unique<WrittenRows>(*this); }

    void finish(AccumulatorState& state, Results&) override;

private:
    std::string format(const Chunk& chunk) const override { return output->rowsOf(chunk); }
    void append(const std::string& rows) const override { output->appendRows(rows); }

    std::unique_ptr<RootOutput> output;
};

RootWriting::RootWriting(RootContents contents, RunContext& context)
    : output(std::make_unique<RootOutput>(std::move(contents), context)) {}

void RootWriting::finish(AccumulatorState& state, Results&) {
    static_cast<WrittenRows&>(state).handOver();
    output->complete();
}

root::Packing packingNamed(const std::string& name) {
    const std::map<std::string, root::Packing> packings = {{"zstd", root::Packing::Zstd},
                                                           {"lz4", root::Packing::Lz4},
                                                           {"zlib", root::Packing::Zlib},
                                                           {"none", root::Packing::None}};
    return packings.at(name);
}

/// Replaces what names in a ROOT file cannot have.
void adaptNames(std::vector<NamedObject>& objects, RunContext& context) {
    std::vector<std::string> taken;
    for (NamedObject& each : objects) {
        std::string name = root::nameInFile(each.name, taken);
        if (name != each.name) {
            context.warn("writes \"" + each.name + "\" as \"" + name +
                         "\", because names in a ROOT file cannot have /, ;, [ or ]");
        }
        each.name = std::move(name);
    }
}

void requireWritable(const std::vector<NamedObject>& objects) {
    for (const NamedObject& each : objects) {
        try {
            if (each.object) {
                root::requireWritable(*each.object, each.name);
            }
        } catch (const Failure& failure) {
            throw Failure(each.input, failure.what());
        }
    }
}

root::TreeLayout layoutOf(const std::vector<NamedObject>& objects, const Schema& schema, RunContext& context) {
    std::string name;
    for (const NamedObject& each : objects) {
        name = each.object ? name : each.name;
    }
    root::TreeLayout layout(name, schema);
    for (const root::WrittenBranch& branch : layout.branches) {
        if (const std::string& column = schema[branch.column].name; !branch.hasLengths && branch.name != column) {
            context.warn("writes the column \"" + column + "\" as \"" + branch.name +
                         "\", because names in a ROOT file cannot have /, ;, [ or ]");
        }
    }
    return layout;
}

/// Writes its inputs into one ROOT file. A table is streamed, so it may be larger than memory.
class RootWriterKind : public Accumulator {
public:
    std::string name() const override { return "RootWriter"; }
    std::string summary() const override;
    std::string notes() const override;
    Ports ports(const ValueTexts& values) const override;
    std::string refusal(const std::string& input, const std::string& value) const override;
    MergeOrder mergeOrder() const override { return MergeOrder::FirstToLast; }
    std::unique_ptr<Accumulation> prepare(const Arguments& arguments, const Schema* schema,
                                          RunContext& context) const override;
};

}  // namespace

std::string RootWriterKind::summary() const {
    return "Writes a table, histograms, profiles and points into one ROOT file.";
}

std::string RootWriterKind::notes() const {
    return R"(Every ROOT since 6.20 reads the file; with zlib or without compression also older ones since 6.14. The same input gives the same
bytes: the file has no time, and its identity is a hash of its contents.

| input | in the file |
|---|---|
| histogram | `TH1D`, `TH2D` or `TH3D` with the sums of weights and of their squares in each bin, and the sums for mean and spread |
| list of histograms | `TH1D` for each, with its key in the name |
| profile | `TProfile` or `TProfile2D` with errors of the mean |
| points of two dimensions | `TGraphErrors`, or `TGraphAsymmErrors` where an upward and a downward error differ |
| table | `TTree` with a branch for each column |
| column of real numbers, integers or booleans | branch of `double`, `Long64_t` or `bool` |
| column of texts | branch of C texts |
| column of lists | array with the length in a branch of its own, whose name has an `n` in front |

The number of fills in each bin, of which ROOT has only the total, fills with NaN, and annotations are not written. Lists of texts,
functions, and points of other dimensions cannot be written.)";
}

Ports RootWriterKind::ports(const ValueTexts& values) const {
    const InputSpec compression = {
        .name = "compression",
        .description = "Algorithm that makes the file shorter. zstd: short; lz4: fast to read; zlib: for any program.",
        .type = ValueType::Choice,
        .value = "zstd",
        .choices = {"zstd", "lz4", "zlib", "none"}};
    Ports ports;
    ports.inputs = writerInputs({.objects = "Histogram, list of histograms, profile, points or table to write",
                                 .objectsRemark = " At most one object of a writer can be a table.",
                                 .ending = ".root",
                                 .fileRemark = {},
                                 .folder = "/run1",
                                 .own = {compression}},
                                values);
    return ports;
}

std::string RootWriterKind::refusal(const std::string& input, const std::string& value) const {
    return input == "folder" ? folderRefusal(value) : std::string();
}

std::unique_ptr<Accumulation> RootWriterKind::prepare(const Arguments& arguments, const Schema* schema,
                                                      RunContext& context) const {
    RootContents contents{.fileName = writtenFileName(arguments, context, ".root"),
                          .folder = folderInFile(arguments),
                          .packing = packingNamed(arguments.text("compression")),
                          .objects = namedObjects(arguments, name(), "a ROOT file"),
                          .table = std::nullopt};
    adaptNames(contents.objects, context);
    requireWritable(contents.objects);
    if (schema && schema->size() == 0) {
        throw Failure("object", "the table has no columns");
    }
    if (schema) {
        contents.table.emplace(layoutOf(contents.objects, *schema, context));
    }
    return std::make_unique<RootWriting>(std::move(contents), context);
}

std::unique_ptr<Kind> makeRootWriter() {
    return std::make_unique<RootWriterKind>();
}

}  // namespace velmorak
