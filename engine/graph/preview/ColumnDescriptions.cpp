#include "graph/preview/ColumnDescriptions.h"

#include "graph/Log.h"
#include "graph/ManagerImpl.h"
#include "graph/PortTexts.h"
#include "graph/preview/PreviewContext.h"

#include "run/NodeArguments.h"
#include "run/messages/CrashNote.h"
#include "run/messages/NodeError.h"
#include "run/messages/Visible.h"
#include "store/FileHashes.h"

#include <velmorak/Kind.h>

#include <algorithm>
#include <utility>

namespace velmorak {
namespace {

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

/// Stops a preview when it has read enough, and when nobody wants it any more.
class TaskContext : public PreviewContext {
public:
    TaskContext(const Pipeline& beside, const BackgroundTask& work)
        : PreviewContext(beside, maxPreviewPieces), work(work) {}
    bool isStopping() const override { return work.isStopping() || PreviewContext::isStopping(); }

private:
    const BackgroundTask& work;
};

/// Everything that decides on the columns, and how they are found. Used on a background thread.
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
    // A run reports errors in the values or the file.
    const std::optional<NodeError> error = errorIn([&] {
        TaskContext stamps(beside, work);
        now.key = "previewed" + keyOfFiles(stamps);
        TaskContext columns(beside, work);
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

/// The table reader of the plug-in whose columns can be previewed; null for any other, and where a wire decides on
/// them.
const Source* previewedKind(const QzBase::Part& part) {
    const auto* kind = dynamic_cast<const Source*>(part.kind);
    const bool isWired = std::ranges::any_of(part.inputs, [](const auto& input) { return input.source != nullptr; });
    return kind && kind->tellsColumns() && !isWired ? kind : nullptr;
}

void beginPreview(QzBase& node, const Source& kind) {
    QzBase::Part& part = QzBase::Part::of(node);
    QzManager::Part& owner = QzManager::Part::of(*part.manager);
    Pipeline beside;
    beside.documentFolder = std::filesystem::path(owner.documentPath).parent_path();
    beside.commandLineAida = owner.commandLineAida;
    const std::string subject = subjectOf(part, beside);
    // The key is that of the file alone: for other values, the same file may have other columns.
    if (part.columnsSubject != subject) {
        part.columns = {};
        part.columnsSubject = subject;
    }
    const auto found = std::make_shared<PreviewedColumns>();
    part.preview = owner.previews.begin(subject, found,
                                        [request = PreviewRequest{kind, nodeOf(part, node.name), beside, part.columns},
                                         found](BackgroundTask& work) { *found = request.found(work); });
}

void describeOutputs(QzBase::Part& part) {
    const std::lock_guard guard(QzManager::Part::of(*part.manager).lock);
    for (std::size_t i = 0; i < part.outputs.size(); ++i) {
        if (part.outputSpecs[i].type == ValueType::Table) {
            part.outputs[i].description = descriptionOf(part.outputSpecs[i]) + part.columns.sentence;
        }
    }
}

}  // namespace

void refreshColumns(const std::vector<QzBase*>& nodes) {
    if (nodes.empty()) {
        return;
    }
    QzManager::Part& owner = QzManager::Part::of(*nodes.front()->GetManager());
    if (!owner.previewsColumns) {
        return;
    }
    ColumnPreviews& previews = owner.previews;
    const bool mayWait = previews.unfinished() == 0;
    for (QzBase* node : nodes) {
        QzBase::Part& part = QzBase::Part::of(*node);
        stopPreview(*node);
        if (const Source* kind = previewedKind(part)) {
            beginPreview(*node, *kind);
        } else {
            part.columns = {};
        }
    }
    if (mayWait) {
        previews.wait();
    }
    for (QzBase* node : nodes) {
        showColumns(*node);
    }
}

void stopPreview(QzBase& node) {
    QzBase::Part& part = QzBase::Part::of(node);
    if (part.preview) {
        part.preview->work->stop();
        part.preview.reset();
    }
}

void showColumns(QzBase& node) {
    QzBase::Part& part = QzBase::Part::of(node);
    if (part.preview && part.preview->work->wait(std::chrono::milliseconds(0))) {
        part.columns = *part.preview->found;
        part.preview.reset();
    }
    const auto* kind = dynamic_cast<const Source*>(part.kind);
    if (kind && kind->tellsColumns()) {
        describeOutputs(part);
    }
}

}  // namespace velmorak
