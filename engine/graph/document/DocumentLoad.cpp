#include "graph/document/DocumentLoad.h"

#include "graph/Bindings.h"
#include "graph/FreeName.h"
#include "graph/Log.h"
#include "graph/Nodes.h"
#include "graph/Paths.h"
#include "graph/ValidateAidaFile.h"
#include "graph/document/NodeFromDocument.h"
#include "graph/preview/ColumnDescriptions.h"

#include <algorithm>
#include <set>
#include <unordered_map>

namespace velmorak {
namespace {

/// Loads one document. Nothing in the manager changes before commit.
class Loading {
public:
    Loading(QzManager& manager, Document document, const std::string& file);

    void makeNodes();
    void wire();
    void commit();

private:
    std::vector<std::string> namesInPipeline() const;
    void wireInput(std::size_t receiver, const DocumentInput& input);
    void commitDocument(bool wasEmpty);

    QzManager& manager;
    QzManager::Part& owner;
    Document document;
    const std::string& file;
    LoadWarnings notes;
    std::vector<std::unique_ptr<GraphNode>> nodes;        ///< Parallel to the document's plug-ins.
    std::unordered_map<std::string, std::size_t> byName;  ///< By the names in the document.
};

Loading::Loading(QzManager& manager, Document document, const std::string& file)
    : manager(manager), owner(QzManager::Part::of(manager)), document(std::move(document)), file(file), notes(file) {}

/// A name that is in use gets a number that makes it unique in the pipeline and the document.
std::vector<std::string> Loading::namesInPipeline() const {
    std::set<std::string> existing;
    for (const QzBase* node : manager.plugins) {
        existing.insert(node->name);
    }
    std::set<std::string> taken = existing;
    for (const DocumentPlugin& plugin : document.plugins) {
        taken.insert(plugin.name);
    }
    std::vector<std::string> names;
    for (const DocumentPlugin& plugin : document.plugins) {
        names.push_back(existing.contains(plugin.name)
                            ? freeName(plugin.name, [&](const std::string& each) { return taken.contains(each); })
                            : plugin.name);
        taken.insert(names.back());
    }
    return names;
}

void Loading::makeNodes() {
    const std::vector<std::string> names = namesInPipeline();
    std::size_t ports = 0;
    for (std::size_t i = 0; i < names.size(); ++i) {
        byName.emplace(document.plugins[i].name, i);
        nodes.push_back(nodeFromDocument(manager, document.plugins[i], names[i], notes));
        ports += nodes.back()->Inputs().size() + nodes.back()->Outputs().size();
        if (ports > maxPorts) {
            throw DocumentError(document.plugins[i].line, "the plug-ins have more than 1000000 inputs and outputs");
        }
    }
}

void Loading::wire() {
    for (std::size_t i = 0; i < nodes.size(); ++i) {
        for (const DocumentInput& input : document.plugins[i].inputs) {
            if (input.from) {
                wireInput(i, input);
            }
        }
    }
}

void Loading::wireInput(std::size_t receiverNumber, const DocumentInput& input) {
    QzBase& receiver = *nodes[receiverNumber];
    QzBase::Part& part = QzBase::Part::of(receiver);
    const bool keepsLooseEnds = part.kind == nullptr;
    const int position = receiver.InputIndex(input.name);
    const auto sender = byName.find(input.from->plugin);
    const int output = sender == byName.end() ? -1 : outputForBinding(*nodes[sender->second], input.from->output);
    if (position >= 0 && output >= 0) {
        bind(receiver, static_cast<std::size_t>(position), *nodes[sender->second], static_cast<std::size_t>(output));
    } else if (keepsLooseEnds) {
        part.unknownFields.danglingSources[input.name] = *input.from;
    } else {
        notes.add(input.line, nameForMessages(receiver) + ", input " + input.name + ": the binding to " +
                                  quote(input.from->output) + " of " + quote(input.from->plugin) +
                                  " is dropped, because there is no such " + (position < 0 ? "input" : "output"));
    }
}

void Loading::commitDocument(bool wasEmpty) {
    if (wasEmpty) {
        owner.summary = std::move(document.summary);
        owner.documentFields = std::move(document.foreign);
    } else {
        for (ForeignField& field : document.foreign) {
            if (std::ranges::find(owner.documentFields, field.name, &ForeignField::name) ==
                owner.documentFields.end()) {
                owner.documentFields.push_back(std::move(field));
            }
        }
    }
    if (wasEmpty || owner.documentPath.empty()) {
        owner.documentPath = absolutePath(file);
    }
}

void Loading::commit() {
    const bool isExample = owner.catalogue.isExample(file);
    const std::lock_guard guard(owner.lock);
    // A document that is read into an empty pipeline gives it its file name; an example is never overwritten.
    const bool wasEmpty = manager.plugins.empty();
    for (std::unique_ptr<GraphNode>& node : nodes) {
        addNode(manager, std::move(node));
    }
    commitDocument(wasEmpty);
    if (wasEmpty) {
        manager.fileName = isExample ? std::string() : file;
    } else if (manager.fileName.empty() && !isExample) {
        manager.fileName = file;
    }
}

}  // namespace

std::string loadDocument(QzManager& manager, const std::string& file) {
    try {
        return loadDocumentText(manager, readWholeFile(file), file);
    } catch (const std::exception& error) {
        return file + ": " + withoutFullStop(error.what()) + ".";
    }
}

std::string loadDocumentText(QzManager& manager, const std::string& text, const std::string& file) {
    try {
        Loading loading(manager, parseDocument(text), file);
        loading.makeNodes();
        loading.wire();
        const std::string before = QzManager::Part::of(manager).documentPath;
        const std::size_t oldPlugins = manager.plugins.size();
        loading.commit();
        // Another document's folder is another place to look for the files of all plug-ins.
        const bool isSamePlace = QzManager::Part::of(manager).documentPath == before;
        const auto first = manager.plugins.begin() + (isSamePlace ? static_cast<std::ptrdiff_t>(oldPlugins) : 0);
        refreshColumns({first, manager.plugins.end()});
        return {};
    } catch (const DocumentError& error) {
        const std::string place = error.line() == 0 ? std::string() : ", line " + std::to_string(error.line());
        return file + place + ": " + withoutFullStop(error.what()) + ".";
    } catch (const std::exception& error) {
        return file + ": " + withoutFullStop(error.what()) + ".";
    }
}

}  // namespace velmorak
