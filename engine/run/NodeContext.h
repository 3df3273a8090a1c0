#pragma once

#include "run/Messages.h"
#include "run/Pipeline.h"
#include "run/ResultFolder.h"
#include "store/FileContent.h"
#include "store/FileHashes.h"

#include <atomic>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace velmorak {

/// What all plug-ins of one run share.
struct RunEnvironment {
    const Pipeline& pipeline;
    const std::atomic<bool>& stopping;
    Messages& messages;
    ResultFolder& results;
    std::function<RunRecord(const PipelineNode&)> recorder{};  ///< Set when the run knows what it is about to do.
    /// Called on any thread when a plug-in asks for a file that is there.
    std::function<void(const std::filesystem::path&, const FileStamp&)> asked{};
};

/// @return the path that a text in a document means: beside the document, or else in the current folder.
std::filesystem::path resolved(const Pipeline& pipeline, const NamedFile& file);

/// A file as it was when a plug-in asked for it.
struct AskedFile {
    NamedFile file;
    std::optional<FileStamp> stamp;
};

/// What the run lets one plug-in do.
class NodeContext : public RunContext {
public:
    /// @param surroundings and node outlive this.
    NodeContext(const RunEnvironment& environment, const PipelineNode& node);

    bool isStopping() const override { return environment.stopping.load(std::memory_order_relaxed); }
    const std::string& pluginName() const override { return node.name; }
    std::filesystem::path inputFile(const std::string& text) const override;
    std::filesystem::path commandLineAida() const override;
    void writeResult(const std::string& fileName,
                     const std::function<void(const std::filesystem::path&)>& writer) override;
    std::unique_ptr<ResultFile> beginResult(const std::string& fileName) override;
    void warn(const std::string& sentence) override;
    void tell(const std::string& text) override;
    RunRecord record() const override;

    /// Notes a file that decides what the plug-in gives.
    void watch(const NamedFile& file) const;
    /// Files that the plug-in depends on.
    std::vector<AskedFile> askedFiles() const;

private:
    const RunEnvironment& environment;
    const PipelineNode& node;
    mutable std::mutex mutex;
    mutable std::vector<AskedFile> asked;
};

/// @return kind and name as they stand at the beginning of a message: Histogram1D "mass".
std::string titleOf(const PipelineNode& node);

}  // namespace velmorak
