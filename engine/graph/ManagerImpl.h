#pragma once

#include "graph/LibraryConfig.h"
#include "graph/ManagerExtensions.h"
#include "graph/RunQueue.h"
#include "graph/ValidateAidaFile.h"
#include "graph/collections/Catalogue.h"
#include "graph/document/Document.h"
#include "graph/document/Journal.h"
#include "graph/preview/ColumnPreview.h"
#include "run/plan/Pipeline.h"

#include <QzManager.h>

#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <unordered_map>

namespace velmorak {

/// The plug-ins that the interface in qz/ hands out.
class GraphNode final : public QzBase {
public:
    explicit GraphNode(Part* own) : QzBase(own) {}
    ~GraphNode() = default;
    GraphNode(const GraphNode&) = delete;
    GraphNode& operator=(const GraphNode&) = delete;
};

/// An input in a document that the plug-in's kind does not have.
using UnknownInput = DocumentInput;

/// Parts of a document about one plug-in that this version does not know; they are preserved when it is saved.
struct UnknownFields {
    ForeignFields fields;
    std::map<std::string, ForeignFields> inputFields;
    std::map<std::string, ForeignFields> outputFields;
    std::vector<UnknownInput> unknownInputs;
    std::map<std::string, OutputName>
        danglingSources;  ///< For a plug-in of an unknown kind: by input, an output that does not exist.
};

}  // namespace velmorak

/// Private state of a plug-in. Written by the main thread only, under the manager's lock once the plug-in belongs to
/// the manager.
struct QzBase::Part {
    QzManager* manager = nullptr;
    const QzKind* record = nullptr;
    const velmorak::Kind* kind = nullptr;  ///< Null when no collection offers the kind.
    std::vector<Input> inputs;
    std::vector<velmorak::InputSpec> inputSpecs;  ///< Parallel to inputs.
    std::vector<Output> outputs;
    std::vector<velmorak::OutputSpec> outputSpecs;  ///< Parallel to outputs.
    velmorak::UnknownFields unknownFields;
    velmorak::PreviewedColumns columns;                ///< Of a table reader: what its previews have found.
    std::string columnsSubject;                        ///< Values and folders for which this was found.
    std::shared_ptr<velmorak::ColumnPreview> preview;  ///< The unfinished one; null without one.
    float x = 0.0F;
    float y = 0.0F;
    bool isExpanded = true;

    static Part& of(QzBase& node) { return *node.part; }
    static const Part& of(const QzBase& node) { return *node.part; }
};

/// Private state of a pipeline.
///
/// Lock order: the journal's lock for writing, then this one. No lock is held while a kind is called, while a run
/// executes, or while a preview is started or awaited. Threads: the main thread writes under the lock and reads without
/// it; a run reads under the lock, once, to take its
///          snapshot (Snapshot.cpp), and writes nothing; so does the journal's thread.
struct QzManager::Part {
    Part(const velmorak::Catalogue& catalogue, const velmorak::LibraryConfig& config,
         std::function<velmorak::UnsavedDocument()> unsaved)
        : catalogue(catalogue),
          mayWriteAnywhere(config.mayWriteAnywhere),
          kinds(config.runs.kinds),
          runs(config.runs),
          journal(config.journals, std::move(unsaved)) {}

    const velmorak::Catalogue& catalogue;
    mutable std::mutex lock;
    std::unordered_map<const QzBase*, std::unique_ptr<velmorak::GraphNode>> owned;
    std::map<std::string, std::unique_ptr<QzKind>>
        unknownKinds;          ///< By name; never shrinks, because GetKind returns pointers to them.
    std::string documentPath;  ///< Relative file names refer to its folder; empty for an untitled pipeline.
    std::optional<std::string> summary;
    velmorak::ForeignFields documentFields;
    std::string readError;
    std::string commandLineAida;
    velmorak::AidaFileCheck aidaCheck;
    std::vector<std::string> settings;  ///< Listed in the records of runs.
    std::optional<double> date;         ///< Of the files that runs write; empty: as kinds say.
    std::string resultsFolder;          ///< Empty for the one beside the document.
    const bool mayWriteAnywhere;        ///< Runs may write outside of it.
    const velmorak::KindConfig kinds;
    int portPoints = 9;
    int titlePoints = 11;
    velmorak::RunQueue runs;
    bool previewsColumns = true;
    velmorak::ColumnPreviews previews;
    std::string partial;         ///< Which rows the results lack; empty for none.
    velmorak::MovedFiles moved;  ///< Of a planned run.
    velmorak::Journal journal;   ///< The last member: its thread uses the others.

    static Part& of(QzManager& manager) { return *manager.part; }
    static const Part& of(const QzManager& manager) { return *manager.part; }
};
