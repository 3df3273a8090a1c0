#include "Output/kinds.h"

#include "AidaOutput.h"
#include "NamedObjects.h"
#include "Output/Ports.h"
#include "WrittenRows.h"

#include <utility>

namespace velmorak {

namespace {

class AidaWriting : public Accumulation, public RowFile {
public:
    AidaWriting(AidaContents contents, RunContext& context);

    std::unique_ptr<AccumulatorState> newState() const override { return std::make_unique<WrittenRows>(*this); }

    void finish(AccumulatorState& state, Results&) override;

private:
    std::string format(const Chunk& chunk) const override { return aidaRows(output->schema(), chunk); }
    void append(const std::string& rows) const override { output->appendRows(rows); }

    std::unique_ptr<AidaOutput> output;
};

AidaWriting::AidaWriting(AidaContents contents, RunContext& context)
    : output(std::make_unique<AidaOutput>(std::move(contents), context)) {}

void AidaWriting::finish(AccumulatorState& state, Results&) {
    static_cast<WrittenRows&>(state).handOver();
    output->complete();
}

/// Writes its inputs into one AIDA file. A table is streamed, so it may be larger than memory.
class AidaWriterKind : public Accumulator {
public:
    std::string name() const override { return "AidaWriter"; }
    std::string summary() const override;
    Ports ports(const ValueTexts& values) const override;
    std::string refusal(const std::string& input, const std::string& value) const override;
    MergeOrder mergeOrder() const override { return MergeOrder::FirstToLast; }
    std::unique_ptr<Accumulation> prepare(const Arguments& arguments, const Schema* schema,
                                          RunContext& context) const override;
};

}  // namespace

std::string AidaWriterKind::summary() const {
    return "Writes a table, histograms, profiles, points and functions into one AIDA file, from which every number "
           "reads back to the last bit.";
}

Ports AidaWriterKind::ports(const ValueTexts& values) const {
    Ports ports;
    ports.inputs =
        writerInputs({.objects = "Histogram, list of histograms, profile, points, function or table to write",
                      .objectsRemark = " At most one object of a writer can be a table.",
                      .ending = ".aida",
                      .fileRemark = {},
                      .folder = "/run1",
                      .own = {}},
                     values);
    return ports;
}

std::string AidaWriterKind::refusal(const std::string& input, const std::string& value) const {
    return input == "folder" ? folderRefusal(value) : std::string();
}

std::unique_ptr<Accumulation> AidaWriterKind::prepare(const Arguments& arguments, const Schema* schema,
                                                      RunContext& context) const {
    AidaContents contents;
    contents.fileName = writtenFileName(arguments, context, ".aida");
    contents.folder = folderInFile(arguments);
    contents.objects = namedObjects(arguments, "AidaWriter", "an AIDA file");
    if (schema) {
        contents.schema = *schema;
    }
    return std::make_unique<AidaWriting>(std::move(contents), context);
}

std::unique_ptr<Kind> makeAidaWriter() {
    return std::make_unique<AidaWriterKind>();
}

}  // namespace velmorak
