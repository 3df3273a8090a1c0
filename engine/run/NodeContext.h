#pragma once

#include "run/messages/Messages.h"
#include "run/plan/Pipeline.h"
#include "run/results/ResultFolder.h"
#include "store/FileContent.h"
#include "store/FileHashes.h"

#include <velmorak/Mutex.h>
#include <velmorak/OpenFiles.h>
#include <velmorak/Parts.h>
#include <velmorak/RowMemory.h>

#include <atomic>
#include <chrono>
#include <compare>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace velmorak {

/// A file and its state when a plug-in asked for it.
struct AskedFile {
    NamedFile file;
    std::optional<FileStamp> stamp;
    std::optional<Digest> listing{};  ///< Of the names in a folder (FolderListing.h).
    std::string path{};               ///< Of the file; empty for a listing.

    auto operator<=>(const AskedFile&) const = default;  // NOLINT(modernize-use-nullptr)
    bool operator==(const AskedFile&) const = default;
};

/// What one plug-in has found out about its files, and what it asked for to do so.
struct KnownFact {
    std::string bytes;
    std::vector<AskedFile> asked;
};

/// The facts that the plug-ins of a run have found, so that each is found once. Threads: any.
class KnownFacts {
public:
    /// @return null if nobody has found it. It stays valid.
    const KnownFact* find(const std::string& plugin, const std::string& name) VELMORAK_EXCLUDES(mutex);
    const KnownFact& add(const std::string& plugin, const std::string& name, KnownFact fact) VELMORAK_EXCLUDES(mutex);

private:
    Mutex mutex;
    std::map<std::pair<std::string, std::string>, KnownFact> facts VELMORAK_GUARDED_BY(mutex);
};

/// Shared by the contexts of all plug-ins of a run.
struct RunEnvironment {
    const Pipeline& pipeline;
    const std::atomic<bool>& stopping;
    Messages& messages;
    ResultFolder& results;
    std::function<RunRecord(const PipelineNode&)> recorder{};  ///< Empty while the run is being planned.
    /// Called on any thread when a plug-in asks for an existing file.
    std::function<void(const std::filesystem::path&, const FileStamp&)> asked{};
    /// The names in a folder as they were when the run was planned; null, or empty without an answer: as they are now.
    std::function<std::optional<std::vector<std::string>>(const std::string& listing)> listed{};
    /// Answers factOf; null: every fact is found once in a run.
    std::function<std::string(const PipelineNode&, const std::string& name, const std::function<std::string()>& find)>
        fact{};
    std::shared_ptr<MemoryBudget> memory = std::make_shared<MemoryBudget>();  ///< For rows that kinds keep.
    /// Measures what reading and computing cost. Threads: any.
    std::function<std::chrono::steady_clock::time_point()> clock = std::chrono::steady_clock::now;
    const std::shared_ptr<OpenFiles> openFiles = std::make_shared<OpenFiles>();
    const std::shared_ptr<KnownFacts> facts = std::make_shared<KnownFacts>();
};

/// @return the path of a name in the document: relative to the document, or else to the current folder; or where the
///         file is now, if it was moved since the run was planned.
std::filesystem::path resolved(const Pipeline& pipeline, const NamedFile& file);

/// The services of the run for one plug-in.
/// Threads: every operation may be called on any thread.
class NodeContext : public RunContext, public SharedRun, public LimitedRun, public FileLimit {
public:
    /// @param environment and node outlive this.
    NodeContext(const RunEnvironment& environment, const PipelineNode& node);

    bool isStopping() const override { return environment.stopping.load(std::memory_order_relaxed); }
    const std::string& pluginName() const override { return node.name; }
    std::filesystem::path inputFile(const std::string& text) const override;
    std::filesystem::path commandLineAida() const override;
    std::filesystem::path locate(const std::string& text) const override;
    std::vector<std::string> namesIn(const std::string& folder, const std::string& pattern) const override;
    void skipFile(const std::filesystem::path& file, const std::string& reason) override;
    void writeResult(const std::string& fileName,
                     const std::function<void(const std::filesystem::path&)>& writer) override;
    std::unique_ptr<ResultFile> beginResult(const std::string& fileName) override;
    bool isPlanned() const override { return environment.fact != nullptr; }
    std::string fact(const std::string& name, const std::function<std::string()>& find) override;
    std::string partial() const override { return environment.pipeline.partial; }
    std::shared_ptr<MemoryBudget> memory() const override { return environment.memory; }
    std::shared_ptr<OpenFiles> openFiles() const override { return environment.openFiles; }
    void warn(const std::string& sentence) override;
    void tell(const std::string& text) override;
    RunRecord record() const override;
    double maxCells() const override { return environment.pipeline.kinds.maxCells; }
    std::optional<double> fixedDate() const override { return environment.pipeline.kinds.fixedDate; }

    /// Records a file that the result depends on.
    /// @return its place.
    std::filesystem::path watch(const NamedFile& file) const;
    /// Records a file that the result depends on, unless it was recorded under another name.
    void watchPlace(const std::filesystem::path& path) const;
    /// @return the files and listings that the result depends on, each state of them once, in the order of
    ///         the questions.
    std::vector<AskedFile> askedFiles() const;
    /// @return the files that the plug-in went on without, sorted by path.
    std::vector<SkippedFile> skippedFiles() const;
    /// Says how many files were skipped without a warning of their own.
    void warnOfMoreSkipped();

private:
    std::filesystem::path placeOf(const std::string& name) const VELMORAK_EXCLUDES(mutex);
    void addAsked(AskedFile file) const VELMORAK_REQUIRES(mutex);

    const RunEnvironment& environment;
    const PipelineNode& node;
    mutable Mutex mutex;
    mutable std::vector<AskedFile> asked VELMORAK_GUARDED_BY(mutex);
    mutable std::set<AskedFile> known VELMORAK_GUARDED_BY(mutex);                            ///< The same.
    mutable std::map<std::string, std::filesystem::path> places VELMORAK_GUARDED_BY(mutex);  ///< By name.
    mutable std::set<std::string> askedPlaces VELMORAK_GUARDED_BY(mutex);
    std::map<std::string, std::string> skipped VELMORAK_GUARDED_BY(mutex);  ///< Path and reason.
};

/// @return kind and name as they begin a message: Histogram1D "mass".
std::string titleOf(const PipelineNode& node);

}  // namespace velmorak
