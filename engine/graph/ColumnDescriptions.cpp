#include "graph/ColumnDescriptions.h"

#include "graph/Log.h"
#include "graph/ManagerImpl.h"
#include "graph/PortTexts.h"
#include "graph/PreviewContext.h"

#include "run/CrashNote.h"
#include "run/NodeArguments.h"
#include "run/NodeError.h"
#include "run/Visible.h"
#include "store/FileHashes.h"

#include <velmorak/Kind.h>

#include <algorithm>
#include <utility>

namespace velmorak {
namespace {

/// Of 64 kB each: enough for the header of any table, and read before a user notices.
constexpr std::uint64_t maxPieces = 64;
constexpr std::size_t maxColumns = 40;

std::string onOneLine(const std::string& name) {
    std::string line = validUtf8(name);
    std::ranges::replace_if(
        line, [](unsigned char c) { return c < 0x20; }, ' ');
    return line;
}

std::string sentenceOn(const Schema& schema) {
    std::string sentence = schema.size() == 1 ? "\nColumn: " : "\nColumns: ";
    const std::size_t shown = std::min(schema.size(), maxColumns);
    for (std::size_t i = 0; i < shown; ++i) {
        const ColumnInfo& column = schema[i];
        const std::string unit = column.unit.empty() ? "" : ", " + onOneLine(column.unit);
        sentence += (i == 0 ? "" : ", ") + onOneLine(column.name) + " (" + (column.isList ? "list of " : "") +
                    std::string(nameOf(column.type)) + unit + ")";
    }
    if (schema.size() > shown) {
        sentence += " and " + std::to_string(schema.size() - shown) + " more";
    }
    return schema.size() == 0 ? "" : sentence + ".";
}

/// Is told to stop when enough was read, and when nobody waits any more.
class AsideContext : public PreviewContext {
public:
    AsideContext(const Pipeline& beside, const BackgroundTask& work) : PreviewContext(beside, maxPieces), work(work) {}
    bool isStopping() const override { return work.isStopping() || PreviewContext::isStopping(); }

private:
    const BackgroundTask& work;
};

/// What decides on the columns, and how they are found. Used by a thread of its own.
struct PreviewRequest {
    const Source& kind;
    PipelineNode node;
    Pipeline beside;
    PreviewedColumns before;

    NodeArguments arguments() const { return {node, std::vector<Arrival>(node.inputs.size())}; }
    /// Differs whenever one of the files does.
    std::string keyOfFiles(PreviewContext& context) const;
    std::string sentence(PreviewContext& context) const;
    PreviewedColumns found(const BackgroundTask& work) const;
};

std::string PreviewRequest::keyOfFiles(PreviewContext& context) const {
    std::string key;
    for (const std::filesystem::path& file : kind.files(arguments(), context)) {
        if (const std::optional<FileStamp> stamp = stampOf(file)) {
            for (const std::int64_t number :
                 {static_cast<std::int64_t>(stamp->inode), stamp->size, stamp->modifiedNs, stamp->changedNs}) {
                key += '\0' + std::to_string(number);
            }
        }
    }
    return key;
}

std::string PreviewRequest::sentence(PreviewContext& context) const {
    const std::unique_ptr<TableReader> reader = kind.open(arguments(), context);
    return reader ? sentenceOn(reader->schema()) : "";
}

PreviewedColumns PreviewRequest::found(const BackgroundTask& work) const {
    const std::string title = visible(titleOf(node));
    const CrashNote note(title.c_str());
    PreviewedColumns now;
    // What is wrong with the values or the file, a run will say.
    const std::optional<NodeError> error = errorIn([&] {
        AsideContext stamps(beside, work);
        now.key = "looked" + keyOfFiles(stamps);
        AsideContext columns(beside, work);
        now.sentence = now.key == before.key ? before.sentence : sentence(columns);
    });
    return error ? PreviewedColumns{} : now;
}

PipelineNode nodeOf(const QzBase::Part& part, const std::string& name) {
    PipelineNode node;
    node.name = name;
    node.kindName = part.kind->name();
    for (std::size_t i = 0; i < part.inputs.size(); ++i) {
        PipelineInput input;
        input.spec = part.inputSpecs[i];
        input.value = part.inputs[i].value;
        node.inputs.push_back(std::move(input));
    }
    return node;
}

/// Differs whenever another table may be meant.
std::string subjectOf(const QzBase::Part& part, const Pipeline& beside) {
    std::string subject = beside.documentFolder.string() + '\0' + beside.commandLineAida.string();
    for (const QzBase::Input& input : part.inputs) {
        subject += '\0' + input.value;
    }
    return subject;
}

/// Begins a look, and waits for it as long as a user would, unless another file keeps somebody waiting already.
void lookAside(QzBase& node, const Source& kind, const Pipeline& beside, const std::string& subject) {
    constexpr std::size_t maxAtOnce = 8;
    QzBase::Part& part = QzBase::Part::of(node);
    QzManager::Part& owner = QzManager::Part::of(*part.manager);
    const std::size_t overdue = owner.looks.overdue();
    if (overdue >= maxAtOnce) {
        return;
    }
    // The key is that of the file alone: for other values, the same file may have other columns.
    const PreviewedColumns before = part.columnsSubject == subject ? part.columns : PreviewedColumns{};
    const auto found = std::make_shared<PreviewedColumns>();
    part.look = owner.looks.begin(subject, found,
                                  [look = PreviewRequest{kind, nodeOf(part, node.name), beside, before},
                                   found](BackgroundTask& work) { *found = look.found(work); });
    part.look->work->wait(overdue == 0 ? owner.looks.patience : std::chrono::milliseconds(0));
}

/// Brings what is said of the node's columns up to what is known of them.
void findColumns(QzBase& node, const Source& kind) {
    QzBase::Part& part = QzBase::Part::of(node);
    const QzManager::Part& owner = QzManager::Part::of(*part.manager);
    Pipeline beside;
    beside.documentFolder = std::filesystem::path(owner.documentPath).parent_path();
    beside.commandLineAida = owner.commandLineAida;
    const std::string subject = subjectOf(part, beside);
    if (part.look && part.look->subject != subject) {
        part.look->work->stop();
        part.look.reset();
        part.columns = {};
    }
    if (!part.look) {
        lookAside(node, kind, beside, subject);
    }
    if (part.look && part.look->work->wait(std::chrono::milliseconds(0))) {
        part.columns = *part.look->found;
        part.look.reset();
        part.columnsSubject = subject;
    } else if (part.columnsSubject != subject) {
        part.columns = {};
    }
}

}  // namespace

void updateColumnDescriptions(QzBase& node) {
    QzBase::Part& part = QzBase::Part::of(node);
    const auto* kind = dynamic_cast<const Source*>(part.kind);
    if (!kind || !kind->tellsColumns()) {
        return;
    }
    if (std::ranges::any_of(part.inputs, [](const auto& input) { return input.source != nullptr; })) {
        part.columns = {};
    } else {
        findColumns(node, *kind);
    }
    const std::lock_guard guard(QzManager::Part::of(*part.manager).lock);
    for (std::size_t i = 0; i < part.outputs.size(); ++i) {
        if (part.outputSpecs[i].type == ValueType::Table) {
            part.outputs[i].description = toldOf(part.outputSpecs[i]) + part.columns.sentence;
        }
    }
}

}  // namespace velmorak
