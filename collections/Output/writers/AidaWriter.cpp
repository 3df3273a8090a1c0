#include "Output/kinds.h"

#include "AidaOutput.h"
#include "Output/Ports.h"
#include "WrittenRows.h"

#include <algorithm>
#include <utility>

namespace velmorak {

namespace {

class Writing : public Accumulation, public RowFile {
public:
    Writing(AidaContents contents, RunContext& context);

    std::unique_ptr<AccumulatorState> newState() const override { return std::make_unique<WrittenRows>(*this); }

    void finish(AccumulatorState& state, Results&) override;

private:
    std::string format(const Chunk& chunk) const override { return aidaRows(output->schema(), chunk); }
    void append(const std::string& rows) const override { output->appendRows(rows); }

    std::unique_ptr<AidaOutput> output;
};

Writing::Writing(AidaContents contents, RunContext& context)
    : output(std::make_unique<AidaOutput>(std::move(contents), context)) {}

void Writing::finish(AccumulatorState& state, Results&) {
    static_cast<WrittenRows&>(state).handOver();
    output->complete();
}

/// @return the object at the input, or null for a table, which is not a value.
DataObjectPtr objectOrTable(const Arguments& arguments, const std::string& input) {
    if (!arguments.isWired(input)) {
        throw Failure(input, "nothing is wired");
    }
    const Value& value = arguments.value(input);
    if (std::holds_alternative<std::monostate>(value)) {
        return nullptr;
    }
    if (!std::holds_alternative<DataObjectPtr>(value)) {
        throw Failure(
            input,
            "a number or text cannot be written to an AIDA file; wire a table, histogram, profile, points or function");
    }
    return std::get<DataObjectPtr>(value);
}

std::string unusedName(const std::string& name, const std::vector<AidaContents::Object>& objects) {
    std::string candidate = name;
    const auto hasCandidate = [&](const AidaContents::Object& object) { return object.name == candidate; };
    for (int number = 2; std::any_of(objects.begin(), objects.end(), hasCandidate); ++number) {
        candidate = name + "_" + std::to_string(number);
    }
    return candidate;
}

std::vector<AidaContents::Object> objectsOf(const Arguments& arguments) {
    std::vector<AidaContents::Object> objects;
    bool hasTable = false;
    for (const std::string& input : numberedInputs(arguments, "objects", "object")) {
        DataObjectPtr object = objectOrTable(arguments, input);
        if (!object && std::exchange(hasTable, true)) {
            throw Failure(input, "a file can hold only one table; use another AidaWriter for the second one");
        }
        const bool hasName = object && !object->name.empty();
        const std::string& name = hasName ? object->name : arguments.sourceName(input);
        objects.push_back({.name = unusedName(name, objects), .object = std::move(object)});
    }
    return objects;
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
    const InputSpec object = {
        .name = "object",
        .description =
            "Histogram, profile, points, function or table to write, under its name or that of the plug-in that made "
            "it. At most one object of a writer can be a table.",
        .type = ValueType::Any};
    Ports ports;
    ports.inputs = {
        object,
        {.name = "file",
         .description = "Name of the file in the results folder. Empty: the name of this plug-in with .aida.",
         .type = ValueType::Text},
        {.name = "folder",
         .description = "Folder of the objects within the file, for example /run1.",
         .type = ValueType::Text,
         .value = "/"},
        countInput("objects", "Number of objects to write, 1 to 16; each has its own input."),
    };
    addNumbered(ports, object, numberedCount(values, "objects"));
    return ports;
}

std::string AidaWriterKind::refusal(const std::string& input, const std::string& value) const {
    if (input == "folder" && !value.starts_with('/')) {
        return "The folder must begin with \"/\".";
    }
    return {};
}

std::unique_ptr<Accumulation> AidaWriterKind::prepare(const Arguments& arguments, const Schema* schema,
                                                      RunContext& context) const {
    AidaContents contents;
    contents.fileName =
        arguments.text("file").empty() ? asFileName(context.pluginName()) + ".aida" : arguments.text("file");
    contents.folder = arguments.text("folder");
    if (const std::string reason = refusal("folder", contents.folder); !reason.empty()) {
        throw Failure("folder", reason);
    }
    contents.objects = objectsOf(arguments);
    if (schema) {
        contents.schema = *schema;
    }
    return std::make_unique<Writing>(std::move(contents), context);
}

std::unique_ptr<Kind> makeAidaWriter() {
    return std::make_unique<AidaWriterKind>();
}

}  // namespace velmorak
