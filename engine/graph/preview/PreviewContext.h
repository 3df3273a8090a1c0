#pragma once

#include "run/NodeContext.h"

#include <velmorak/Run.h>

#include <cstdint>
#include <filesystem>
#include <string>

namespace velmorak {

/// Of 64 kB each: enough for the header of any table, and read before a user notices.
inline constexpr std::uint64_t maxPreviewPieces = 64;

/// The context of a kind during a preview, outside any run: files may be read; nothing is written or printed.
class PreviewContext : public RunContext {
public:
    /// @param beside relative file names refer to its document's folder; outlives this.
    /// @param maxPolls number of polls after which a reader is asked to stop.
    PreviewContext(const Pipeline& beside, std::uint64_t maxPolls) : beside(beside), pollsLeft(maxPolls) {}

    bool isStopping() const override { return pollsLeft == 0 || --pollsLeft == 0; }
    const std::string& pluginName() const override { return name; }
    /// @throws Failure when there is no regular file of that name.
    std::filesystem::path inputFile(const std::string& text) const override;
    std::filesystem::path commandLineAida() const override;
    std::filesystem::path locate(const std::string& text) const override;
    bool isPreview() const override { return true; }
    void writeResult(const std::string& fileName,
                     const std::function<void(const std::filesystem::path&)>& writer) override;
    std::unique_ptr<ResultFile> beginResult(const std::string& fileName) override;
    void warn(const std::string& /*sentence*/) override {}
    double maxCells() const override { return beside.kinds.maxCells; }

private:
    const Pipeline& beside;
    mutable std::uint64_t pollsLeft;
    std::string name;
};

}  // namespace velmorak
