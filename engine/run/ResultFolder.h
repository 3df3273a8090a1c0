#pragma once

#include <velmorak/Run.h>

#include <atomic>
#include <filesystem>
#include <map>
#include <memory>
#include <mutex>
#include <string>

namespace velmorak {

/// The folder in which the plug-ins of one run leave their files. A file takes its name when it is complete, and
/// belongs to one plug-in.
/// Threads: begin may be called on any thread.
class ResultFolder {
public:
    /// @param mayWriteAnywhere names may be absolute or lead out of the folder.
    /// @param stopping set when the run is asked to end; files that are complete only then are thrown away.
    ResultFolder(std::filesystem::path folder, bool mayWriteAnywhere, const std::atomic<bool>& stopping);

    /// @return a file under a temporary name. Its keep throws Stopped when the run was asked to end.
    /// @throws Failure if the name is refused or the folder cannot be made.
    std::unique_ptr<ResultFile> begin(const std::string& plugin, const std::string& fileName);

private:
    std::filesystem::path place(const std::string& fileName) const;
    void claim(const std::filesystem::path& file, const std::string& plugin, const std::string& fileName);
    std::filesystem::path temporaryFor(const std::filesystem::path& file);

    std::filesystem::path folder;
    bool mayWriteAnywhere;
    const std::atomic<bool>& stopping;
    std::mutex mutex;
    std::map<std::filesystem::path, std::string> owners;  ///< Plug-in that writes the file.
    unsigned temporaries = 0;
};

}  // namespace velmorak
