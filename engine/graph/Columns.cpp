#include "Columns.h"

#include "LookContext.h"
#include "Parts.h"
#include "Say.h"

#include "../run/FileDigests.h"
#include "../run/NodeArguments.h"

#include <velmorak/Kind.h>

#include <algorithm>
#include <utility>

namespace velmorak {
namespace {

/// Of 64 kB each: enough for the header of any table, and read before a user notices.
constexpr std::uint64_t mostPieces = 64;
constexpr std::size_t mostColumns = 40;

/// A description may be shown as a text with marks, which a name must not look like.
std::string withoutMarks(const std::string& name) {
    std::string plain;
    for (const char c : validUtf8(name)) {
        const bool isControl = static_cast<unsigned char>(c) < 0x20;
        plain += c == '<' ? "\u2039" : c == '>' ? "\u203a" : c == '&' ? "\uff06" : std::string(1, isControl ? ' ' : c);
    }
    return plain;
}

std::string sentenceOn(const Schema& schema) {
    std::string sentence = schema.size() == 1 ? " Column: " : " Columns: ";
    const std::size_t shown = std::min(schema.size(), mostColumns);
    for (std::size_t i = 0; i < shown; ++i) {
        const ColumnInfo& column = schema[i];
        const std::string unit = column.unit.empty() ? "" : ", " + withoutMarks(column.unit);
        sentence += (i == 0 ? "" : ", ") + withoutMarks(column.name) + " (" + (column.isList ? "list of " : "") +
                    std::string(nameOf(column.type)) + unit + ")";
    }
    if (schema.size() > shown)
        sentence += " and " + textOf(static_cast<double>(schema.size() - shown)) + " more";
    return schema.size() == 0 ? "" : sentence + ".";
}

/// What decides on the columns, and how they are found.
struct Look {
    const Source& kind;
    const PipelineNode& node;
    const Pipeline& beside;

    NodeArguments arguments() const { return {node, std::vector<Arrival>(node.inputs.size())}; }

    /// Differs whenever the columns could.
    std::string key() const {
        std::string key = "in " + beside.documentFolder.string();
        for (const PipelineInput& input : node.inputs)
            key += '\0' + input.value;
        LookContext context(beside, mostPieces);
        for (const std::filesystem::path& file : kind.files(arguments(), context))
            if (const std::optional<FileStamp> stamp = stampOf(file))
                for (const std::int64_t number :
                     {static_cast<std::int64_t>(stamp->inode), stamp->size, stamp->modifiedNs, stamp->changedNs})
                    key += '\0' + std::to_string(number);
        return key;
    }

    std::string sentence() const {
        LookContext context(beside, mostPieces);
        return sentenceOn(kind.open(arguments(), context)->schema());
    }
};

PipelineNode nodeOf(const QzBase::Part& part) {
    PipelineNode node;
    for (std::size_t i = 0; i < part.inputs.size(); ++i) {
        PipelineInput input;
        input.spec = part.inputSpecs[i];
        input.value = part.inputs[i].value;
        node.inputs.push_back(std::move(input));
    }
    return node;
}

/// @return an empty text where nothing can be told; the key is then empty, too.
std::string sentenceFor(const QzBase::Part& part, const Source& kind, std::string& key) {
    const QzManager::Part& owner = QzManager::Part::of(*part.manager);
    Pipeline beside;
    beside.documentFolder = std::filesystem::path(owner.documentPath).parent_path();
    beside.commandLineAida = owner.commandLineAida;
    const PipelineNode node = nodeOf(part);
    const Look look{kind, node, beside};
    const bool isWired = std::ranges::any_of(part.inputs, [](const auto& input) { return input.source != nullptr; });
    const std::string before = std::exchange(key, {});
    if (isWired)
        return {};
    try {
        key = look.key();
        return key == before ? part.columns : look.sentence();
    } catch (const std::exception&) {
        return {};  // What is wrong with the values or the file, a run will say.
    }
}

}  // namespace

void tellColumns(QzBase& node) {
    QzBase::Part& part = QzBase::Part::of(node);
    const auto* kind = dynamic_cast<const Source*>(part.kind);
    if (kind == nullptr || !kind->tellsColumns())
        return;
    std::string key = part.columnsKey;
    std::string sentence = sentenceFor(part, *kind, key);
    const std::lock_guard guard(QzManager::Part::of(*part.manager).lock);
    part.columnsKey = std::move(key);
    part.columns = std::move(sentence);
    for (std::size_t i = 0; i < part.outputs.size(); ++i)
        if (part.outputSpecs[i].type == ValueType::Table)
            part.outputs[i].description = part.outputSpecs[i].description + part.columns;
}

}  // namespace velmorak
