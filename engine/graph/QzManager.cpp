#include "graph/Bindings.h"
#include "graph/FreeName.h"
#include "graph/LibraryConfig.h"
#include "graph/Log.h"
#include "graph/ManagerImpl.h"
#include "graph/Nodes.h"
#include "graph/PortChange.h"
#include "graph/ValidateAidaFile.h"
#include "graph/Values.h"
#include "graph/document/DocumentLoad.h"
#include "graph/preview/ColumnCheck.h"
#include "graph/preview/ColumnDescriptions.h"

#include "run/messages/NodeError.h"

#include <QzManager.h>
#include <algorithm>
#include <filesystem>
#include <iterator>
#include <string_view>
#include <unordered_set>

using namespace velmorak;

namespace {

bool isPosition(int index, std::size_t size) {
    return index >= 0 && static_cast<std::size_t>(index) < size;
}

std::filesystem::path folderOf(const std::string& file) {
    return std::filesystem::path(file).parent_path();
}

/// The plug-ins that an output of this one feeds, without this one.
std::vector<QzBase*> consumersOf(const QzBase& node) {
    std::vector<QzBase*> consumers;
    for (const QzBase::Output& output : QzBase::Part::of(node).outputs) {
        std::ranges::copy_if(output.consumers, std::back_inserter(consumers),
                             [&](const QzBase* consumer) { return consumer != &node; });
    }
    return consumers;
}

/// Collects the names once, for any number of attempts.
std::string freeNameFor(const std::vector<QzBase*>& plugins, const std::string& wanted) {
    std::unordered_set<std::string_view> taken;
    for (const QzBase* node : plugins) {
        taken.insert(node->name);
    }
    return freeName(wanted, [&](const std::string& each) { return taken.contains(each); });
}

/// For the journal, on any thread.
UnsavedDocument unsavedOf(const QzManager& manager) {
    const QzManager::Part& part = QzManager::Part::of(manager);
    UnsavedDocument unsaved;
    Document document;
    {
        const std::lock_guard guard(part.lock);
        document = documentOf(manager);
        unsaved.path = part.documentPath;
    }
    unsaved.isEmpty = document.plugins.empty();
    unsaved.text = formatDocument(document);
    return unsaved;
}

QzManager::Part* makePart(const QzManager& manager, const std::string& factory) {
    const LibraryConfig config = libraryConfigFromEnvironment();
    Expression::limitCombinations(config.runs.kinds.maxCombinations);
    if (const std::size_t left = config.journals.empty() ? 0 : leftJournals(config.journals); left > 0) {
        printMessage(
            (left == 1 ? "A document was" : std::to_string(left) + " documents were") +
            " not saved when the program ended unexpectedly; velmorak-recover lists and restores unsaved documents.");
    }
    return new QzManager::Part(sharedCatalogue(config.search, factory), config,
                               [&manager] { return unsavedOf(manager); });
}

/// Before the first manager there is no catalogue.
const Catalogue& catalogueOrNone() {
    static const Catalogue none({}, "");
    const Catalogue* const shared = sharedCatalogueIfMade();
    return !shared ? none : *shared;
}

}  // namespace

QzManager::QzManager(const std::string& factory) : part(makePart(*this, factory)) {}

QzManager::~QzManager() {
    part->aidaCheck.close();
    part->runs.close();
    delete part;
}

bool QzManager::loadAIDA(const std::string& file) {
    const std::string path = absolutePath(file);
    {
        const std::lock_guard guard(part->lock);
        part->commandLineAida = path;
    }
    refreshColumns(plugins);
    return part->aidaCheck.check(path, file);
}

void QzManager::SetFontSize(int portSize, int titleSize) {
    part->portPoints = std::max(1, portSize);
    part->titlePoints = std::max(1, titleSize);
}

void QzManager::GetListOfPlugins(const std::vector<std::string>& /*names*/) {}

const std::vector<QzKind>& QzManager::GetPlugins() {
    return catalogueOrNone().kinds();
}

const std::vector<QzExample>& QzManager::GetExamples() {
    return catalogueOrNone().examples();
}

void QzManager::ReadDocument(const std::string& file) {
    part->readError = loadDocument(*this, file);
    if (!part->readError.empty()) {
        printMessage(part->readError);
    }
    part->journal.noteChange();
}

void QzManager::SetFileName(const std::string& file) {
    const std::string path = file.empty() ? std::string() : absolutePath(file);
    const bool isElsewhere = folderOf(path) != folderOf(part->documentPath);
    {
        const std::lock_guard guard(part->lock);
        fileName = file;
        part->documentPath = path;
    }
    part->journal.noteChange();
    if (isElsewhere) {
        refreshColumns(plugins);
    }
}

void QzManager::Reset() {
    part->runs.reset();
}

/// What asks for the text is usually about to save it.
std::string QzManager::DocumentText() {
    part->journal.noteChange();
    return formatDocument(documentOf(*this));
}

void QzManager::DeletePlugin(int index) {
    if (!isPosition(index, plugins.size())) {
        return;
    }
    const auto at = plugins.begin() + index;
    QzBase* const node = *at;
    const std::vector<QzBase*> consumers = consumersOf(*node);
    stopPreview(*node);
    {
        const std::lock_guard guard(part->lock);
        unbindAll(*node);
        plugins.erase(at);
        part->owned.erase(node);
    }
    part->journal.noteChange();
    refreshColumns(consumers);
}

void QzManager::SetStart(const int& index) {
    if (!isPosition(index, plugins.size())) {
        return;
    }
    const std::lock_guard guard(part->lock);
    const auto at = plugins.begin() + index;
    std::rotate(plugins.begin(), at, at + 1);
    part->journal.noteChange();
}

QzBase* QzManager::CreatePlugin(std::uint16_t kind, const std::string& uniqueName) {
    if (kind >= part->catalogue.kinds().size()) {
        printMessage("There is no kind with the number " + textOf(kind) + ".");
        return nullptr;
    }
    const QzKind& record = part->catalogue.kinds()[kind];
    const std::string wanted = uniqueName.empty() ? record.name : validUtf8(uniqueName);
    const std::string name = freeNameFor(plugins, wanted);
    std::unique_ptr<GraphNode> node;
    if (const std::optional<NodeError> error = errorIn([&] { node = makeNode(*this, kind, name); })) {
        printMessage(name + " (" + record.name + ") has no ports: " + withoutFullStop(error->sentence) + ".");
        node = makeUnknownNode(*this, record.name, name);
    }
    {
        const std::lock_guard guard(part->lock);
        addNode(*this, std::move(node));
    }
    part->journal.noteChange();
    refreshColumns({plugins.back()});
    return plugins.back();
}

void QzManager::SetInputValue(int index, int input, const std::string& value) {
    if (!isPosition(index, plugins.size())) {
        return;
    }
    QzBase& node = *plugins[static_cast<std::size_t>(index)];
    QzBase::Part& own = QzBase::Part::of(node);
    if (!isPosition(input, own.inputs.size())) {
        return;
    }
    const auto position = static_cast<std::size_t>(input);
    const InputSpec& spec = own.inputSpecs[position];
    const bool isText = spec.type == ValueType::Text;  // The ports may change.
    std::string reason = valueError(own.kind, spec, value);
    Ports ports;
    if (reason.empty() && own.kind) {
        reason = tryPortsWith(node, spec.name, value, ports);
    }
    if (!reason.empty()) {
        printMessage(nameForMessages(node) + ", input " + spec.name + ": " + reason + "; the value stays " +
                     quote(own.inputs[position].value) + ".");
        return;
    }
    std::vector<QzBase*> changed = consumersOf(node);
    changed.push_back(&node);
    {
        const std::lock_guard guard(part->lock);
        own.inputs[position].value = value;
        if (own.kind) {
            changePorts(node, ports, plugins);
        }
    }
    part->journal.noteChange();
    refreshColumns(changed);
    if (const std::string mistake = isText ? columnMistake(*this, static_cast<std::size_t>(index)) : "";
        !mistake.empty()) {
        printMessage(nameForMessages(node) + ", " + mistake);
    }
}

void QzManager::Run() {
    part->journal.update();
    part->runs.run([this] { return pipelineOf(*this); });
}

void QzManager::Stop() {
    part->runs.stop();
}

QzBase* QzManager::FindPlugin(const std::string& name) {
    const auto found = std::ranges::find(plugins, name, &QzBase::name);
    return found == plugins.end() ? nullptr : *found;
}

int QzManager::IndexOf(const std::string& name) {
    const auto found = std::ranges::find(plugins, name, &QzBase::name);
    return found == plugins.end() ? -1 : static_cast<int>(found - plugins.begin());
}
