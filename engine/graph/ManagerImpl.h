#pragma once

#include "graph/Catalogue.h"
#include "graph/ColumnPreview.h"
#include "graph/Document.h"
#include "graph/ManagerExtensions.h"
#include "graph/RunQueue.h"
#include "graph/ValidateAidaFile.h"

#include <QzManager.h>

#include <map>
#include <memory>
#include <mutex>
#include <unordered_map>

namespace velmorak {

/// Makes and frees the objects that the door hands out.
class GraphNode final : public QzBase {
public:
    explicit GraphNode(Part* own) : QzBase(own) {}
    ~GraphNode() = default;
    GraphNode(const GraphNode&) = delete;
    GraphNode& operator=(const GraphNode&) = delete;
};

/// An input of a document that the plug-in's kind does not have.
using UnknownInput = DocumentInput;

/// What a document said about one plug-in and this build has no place for; written again with it.
struct UnknownFields {
    ForeignFields fields;
    std::map<std::string, ForeignFields> inputFields;
    std::map<std::string, ForeignFields> outputFields;
    std::vector<UnknownInput> strayInputs;
    std::map<std::string, OutputName>
        danglingSources;  ///< Of a plug-in of an unknown kind: by input, what is not there.
};

}  // namespace velmorak

/// What the library knows of a plug-in. Written on the main thread only, under the manager's lock once the plug-in
/// belongs to it.
struct QzBase::Part {
    QzManager* manager = nullptr;
    const QzKind* record = nullptr;
    const velmorak::Kind* kind = nullptr;  ///< Null when no collection offers the kind.
    std::vector<Input> inputs;
    std::vector<velmorak::InputSpec> inputSpecs;  ///< Parallel to inputs.
    std::vector<Output> outputs;
    std::vector<velmorak::OutputSpec> outputSpecs;  ///< Parallel to outputs.
    velmorak::UnknownFields keepsakes;
    velmorak::PreviewedColumns columns;                ///< What a table reader's descriptions say of its columns.
    std::string columnsSubject;                        ///< Values and places that this was found for.
    std::shared_ptr<velmorak::ColumnPreview> preview;  ///< The one that has been started; null without one.
    float x = 0.0F;
    float y = 0.0F;
    bool isExpanded = true;

    static Part& of(QzBase& node) { return *node.part; }
    static const Part& of(const QzBase& node) { return *node.part; }
};

/// What the library knows of a pipeline.
/// Threads: records are written by the main thread under the lock and read by it without; the worker thread reads them
///          under the lock and writes none.
struct QzManager::Part {
    Part(const velmorak::Catalogue& catalogue, const velmorak::CacheConfig& cache)
        : catalogue(catalogue), runs(cache) {}

    const velmorak::Catalogue& catalogue;
    mutable std::mutex lock;
    std::unordered_map<const QzBase*, std::unique_ptr<velmorak::GraphNode>> owned;
    std::map<std::string, std::unique_ptr<QzKind>> unknownKinds;  ///< By name; never shrinks: GetKind hands them out.
    std::string documentPath;  ///< File that relative names refer to; empty for an untitled pipeline.
    std::optional<std::string> summary;
    velmorak::ForeignFields documentFields;
    std::string readError;
    std::string commandLineAida;
    velmorak::AidaCheck aidaCheck;
    std::vector<std::string> settings;  ///< For the record of a run.
    std::string resultsFolder;          ///< Empty: the one that belongs to the document.
    int portPoints = 9;
    int titlePoints = 11;
    velmorak::RunQueue runs;
    bool previewsColumns = true;
    velmorak::ColumnPreviews previews;

    static Part& of(QzManager& manager) { return *manager.part; }
    static const Part& of(const QzManager& manager) { return *manager.part; }
};
