#pragma once

#include "isolate/Area.h"
#include "isolate/process/Links.h"
#include "isolate/process/Task.h"

#include <velmorak/OpenFiles.h>
#include <velmorak/Parts.h>
#include <velmorak/RowMemory.h>

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace velmorak::isolation {

/// The services of a run for a plug-in whose kind runs in this process.
class RemoteContext : public RunContext, public SharedRun, public LimitedRun, public FileLimit {
public:
    /// @param links and task outlive this. @param page begins with a byte: whether the run is being stopped.
    RemoteContext(Links& links, const Task& task, FileDescriptor page);

    bool isStopping() const override;
    const std::string& pluginName() const override { return task.plugin; }
    std::filesystem::path inputFile(const std::string& text) const override { return pathFrom(Op::InputFile, text); }
    std::filesystem::path locate(const std::string& text) const override { return pathFrom(Op::Locate, text); }
    std::filesystem::path commandLineAida() const override { return pathFrom(Op::CommandLineAida, {}); }
    void writeResult(const std::string& fileName,
                     const std::function<void(const std::filesystem::path&)>& writer) override;
    std::unique_ptr<ResultFile> beginResult(const std::string& fileName) override;
    std::vector<std::string> namesIn(const std::string& folder, const std::string& pattern) const override;
    bool isPreview() const override { return task.isPreview; }
    double maxCells() const override { return task.maxCells; }
    std::optional<double> fixedDate() const override { return task.fixedDate; }
    void skipFile(const std::filesystem::path& file, const std::string& reason) override;
    void warn(const std::string& sentence) override;
    void tell(const std::string& text) override;
    RunRecord record() const override;

    bool isPlanned() const override { return task.isPlanned; }
    std::string fact(const std::string& name, const std::function<std::string()>& find) override;
    std::string partial() const override { return task.partial; }
    std::shared_ptr<MemoryBudget> memory() const override { return rows; }
    std::shared_ptr<OpenFiles> openFiles() const override { return files; }

private:
    std::filesystem::path pathFrom(Op op, const std::string& text) const;

    Links& links;
    const Task& task;
    mutable Area page;
    const std::shared_ptr<MemoryBudget> rows;
    const std::shared_ptr<OpenFiles> files = std::make_shared<OpenFiles>();
};

}  // namespace velmorak::isolation
