#include "graph/Log.h"
#include "graph/ManagerExtensions.h"
#include "graph/ManagerImpl.h"
#include "graph/document/DocumentLoad.h"

#include <unordered_map>

namespace velmorak {
namespace {

namespace fs = std::filesystem;

using Positions = std::unordered_map<const QzBase*, std::size_t>;

PipelineInput inputOf(const QzBase::Part& part, std::size_t position, const Positions& positions) {
    const QzBase::Input& input = part.inputs[position];
    PipelineInput made;
    made.spec = part.inputSpecs[position];
    made.value = input.value;
    if (input.source) {
        made.wire = {positions.at(input.source), QzBase::Part::of(*input.source).outputs[input.sourceOutput].name};
    }
    return made;
}

PipelineNode nodeOf(const QzBase& node, const Positions& positions) {
    const QzBase::Part& part = QzBase::Part::of(node);
    PipelineNode made;
    made.name = node.name;
    made.kindName = part.record->name;
    made.kind = part.kind;
    for (std::size_t i = 0; i < part.inputs.size(); ++i) {
        made.inputs.push_back(inputOf(part, i, positions));
    }
    made.outputs = part.outputSpecs;
    made.x = part.x;
    made.y = part.y;
    return made;
}

/// Beside the document; an example's results, and those of a pipeline without a document, in the current folder.
fs::path resultsFolderOf(const fs::path& document, const Catalogue& catalogue) {
    std::error_code error;
    const fs::path here = fs::current_path(error);
    if (document.empty()) {
        return here / "untitled.results";
    }
    const fs::path folder = catalogue.isExample(document) ? here : document.parent_path();
    const std::string name =
        document.extension() == documentExtension ? document.stem().string() : document.filename().string();
    return folder / (name + ".results");
}

}  // namespace

const RunReport& lastReport(const QzManager& manager) {
    return QzManager::Part::of(manager).runs.report();
}

const std::string& lastReadError(const QzManager& manager) {
    return QzManager::Part::of(manager).readError;
}

const FileFormats& fileFormatsOf(const QzManager& manager) {
    return QzManager::Part::of(manager).catalogue.formats();
}

Pipeline pipelineOf(const QzManager& manager) {
    const QzManager::Part& owner = QzManager::Part::of(manager);
    Pipeline made;
    fs::path document;
    fs::path resultsFolder;
    {
        const std::lock_guard guard(owner.lock);
        Positions positions;
        for (const QzBase* node : manager.plugins) {
            positions.emplace(node, positions.size());
        }
        for (const QzBase* node : manager.plugins) {
            made.nodes.push_back(nodeOf(*node, positions));
        }
        document = owner.documentPath;
        resultsFolder = owner.resultsFolder;
        made.commandLineAida = owner.commandLineAida;
        made.settings = owner.settings;
        made.partial = owner.partial;
        made.moved = owner.moved;
        made.documentText = formatDocument(documentOf(manager));
    }
    made.document = document;
    made.documentFolder = document.parent_path();
    made.resultsFolder = resultsFolder.empty() ? resultsFolderOf(document, owner.catalogue) : resultsFolder;
    made.isResultsFolderChosen = !resultsFolder.empty();
    made.mayWriteAnywhere = owner.mayWriteAnywhere;
    made.kinds = owner.kinds;
    made.kinds.fixedDate = owner.date ? owner.date : owner.kinds.fixedDate;
    return made;
}

void setResultsFolder(QzManager& manager, const fs::path& folder) {
    QzManager::Part& owner = QzManager::Part::of(manager);
    const std::lock_guard guard(owner.lock);
    owner.resultsFolder = folder.string();
}

void explainRuns(QzManager& manager, bool isWanted) {
    QzManager::Part::of(manager).runs.explain(isWanted);
}

void configure(QzManager& manager, const ManagerConfig& config) {
    QzManager::Part& owner = QzManager::Part::of(manager);
    if (!config.keepsResults) {
        owner.runs.setCache({});
    }
    if (config.threads > 0) {
        owner.runs.setThreads(static_cast<std::size_t>(config.threads));
    }
    owner.previewsColumns = config.previewsColumns;
}

void setRunListener(QzManager& manager, RunListener* listener) {
    QzManager::Part::of(manager).runs.setListener(listener);
}

void markPartial(QzManager& manager, const std::string& sentence) {
    QzManager::Part& owner = QzManager::Part::of(manager);
    const std::lock_guard guard(owner.lock);
    owner.partial = sentence;
}

void setMovedFiles(QzManager& manager, MovedFiles files) {
    QzManager::Part& owner = QzManager::Part::of(manager);
    const std::lock_guard guard(owner.lock);
    owner.moved = std::move(files);
}

void setPassRunner(QzManager& manager, PassRunner* passRunner) {
    QzManager::Part::of(manager).runs.setPassRunner(passRunner);
}

void recordSettings(QzManager& manager, const std::vector<std::string>& settings) {
    QzManager::Part& owner = QzManager::Part::of(manager);
    const std::lock_guard guard(owner.lock);
    owner.settings = settings;
}

void setDate(QzManager& manager, double date) {
    QzManager::Part& owner = QzManager::Part::of(manager);
    const std::lock_guard guard(owner.lock);
    owner.date = date;
}

void readDocumentText(QzManager& manager, const std::string& text, const std::string& file) {
    std::string& error = QzManager::Part::of(manager).readError;
    error = loadDocumentText(manager, text, file);
    if (!error.empty()) {
        printMessage(error);
    }
}

}  // namespace velmorak
