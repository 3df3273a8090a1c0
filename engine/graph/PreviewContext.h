#pragma once

#include "run/NodeContext.h"

#include <velmorak/Run.h>

#include <filesystem>
#include <string>

namespace velmorak {

/// What a kind may do when a file is looked at and no run is going on: nothing is written, and nothing is said.
class PreviewContext : public RunContext {
public:
    /// @param beside its document's folder and command line's file are where names lead to; outlives this.
    /// @param maxPolls that a reader may make before it is asked to stop.
    PreviewContext(const Pipeline& beside, std::uint64_t maxPolls) : beside(beside), pollsLeft(maxPolls) {}

    bool isStopping() const override { return pollsLeft == 0 || --pollsLeft == 0; }
    const std::string& pluginName() const override { return name; }
    /// @throws Failure when the file is none whose bytes lie there to be read.
    std::filesystem::path inputFile(const std::string& text) const override;
    std::filesystem::path commandLineAida() const override;
    void writeResult(const std::string& fileName,
                     const std::function<void(const std::filesystem::path&)>& writer) override;
    std::unique_ptr<ResultFile> beginResult(const std::string& fileName) override;
    void warn(const std::string& /*sentence*/) override {}

private:
    const Pipeline& beside;
    mutable std::uint64_t pollsLeft;
    std::string name;
};

}  // namespace velmorak
