#pragma once

#include <velmorak/Run.h>

#include <atomic>
#include <cstddef>
#include <memory>
#include <string>

namespace velmorak {

/// Limits the warnings about many files.
/// Threads: any.
class FileWarnings {
public:
    explicit FileWarnings(RunContext& context) : context(context) {}
    FileWarnings(const FileWarnings&) = delete;
    FileWarnings& operator=(const FileWarnings&) = delete;
    /// Says how many warnings were not shown.
    ~FileWarnings();

    void add(const std::string& sentence);

private:
    static constexpr std::size_t maxShown = 10;

    RunContext& context;
    std::atomic<std::size_t> count = 0;
};

/// The run for the reader of one file of many: its warnings name the file.
class FileContext : public RunContext {
public:
    /// @param name of the file, for warnings.
    /// @param warnings null to show none.
    FileContext(RunContext& run, std::string name, std::shared_ptr<FileWarnings> warnings)
        : run(run), name(std::move(name)), warnings(std::move(warnings)) {}

    bool isStopping() const override { return run.isStopping(); }
    const std::string& pluginName() const override { return run.pluginName(); }
    std::filesystem::path inputFile(const std::string& text) const override { return run.inputFile(text); }
    std::filesystem::path locate(const std::string& text) const override { return run.locate(text); }
    std::filesystem::path commandLineAida() const override { return run.commandLineAida(); }
    void writeResult(const std::string& fileName,
                     const std::function<void(const std::filesystem::path&)>& writer) override {
        run.writeResult(fileName, writer);
    }
    std::unique_ptr<ResultFile> beginResult(const std::string& fileName) override { return run.beginResult(fileName); }
    std::vector<std::string> namesIn(const std::string& folder, const std::string& pattern) const override {
        return run.namesIn(folder, pattern);
    }
    bool isPreview() const override { return run.isPreview(); }
    void skipFile(const std::filesystem::path& file, const std::string& reason) override { run.skipFile(file, reason); }
    void warn(const std::string& sentence) override;
    void tell(const std::string& text) override { run.tell(text); }
    RunRecord record() const override { return run.record(); }
    double maxCells() const override { return run.maxCells(); }
    std::optional<double> fixedDate() const override { return run.fixedDate(); }

private:
    RunContext& run;
    std::string name;
    std::shared_ptr<FileWarnings> warnings;
};

}  // namespace velmorak
