#pragma once

#include "run/plan/Pipeline.h"

#include <velmorak/Mutex.h>
#include <velmorak/RunRecord.h>

#include <filesystem>
#include <map>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace velmorak {

/// Folder in the results folder that holds files of earlier runs.
inline constexpr std::string_view formerFolderName = "former";

/// The result files of earlier runs, which must not look like results of this one. When a run begins, those that it
/// does not confirm move to the folder "former" in the results folder, and do not come back: a plug-in that fails
/// leaves no file. A run without failures empties the folder, except for files that it did not make again.
///
/// Which files are results of earlier runs is known from their record, so that a user's own files stay where they are.
/// Threads: every operation may be called on any thread.
class FormerResults {
public:
    /// Reads the record in the results folder. A folder that the user chose may hold the record of another document,
    /// whose files are left alone.
    /// @param pipeline outlives this.
    explicit FormerResults(const Pipeline& pipeline);

    /// All files that earlier runs left, in the results folder or in "former".
    std::vector<FormerFile> known() const;
    bool hasFilesOf(const std::string& plugin) const;

    /// Moves the files of the earlier runs to "former".
    /// @param kept names of files that this run confirms.
    /// @return why some could not be moved.
    std::vector<std::string> setAside(const std::set<std::string>& kept);
    /// Moves one file, which the plug-in is about to make anew. Does nothing if there is no such file.
    /// @param name relative to the results folder.
    /// @throws Failure if it cannot be moved.
    void setAside(const std::string& plugin, const std::string& name);

    /// @return the files that have been moved and have not been made again.
    std::vector<FormerFile> missing() const;
    /// Ends the run. @param isGood no plug-in failed, and the run was not stopped.
    /// @return the files in "former".
    std::vector<FormerFile> finish(bool isGood);

private:
    void read();
    void move(const std::string& plugin, const std::string& name) VELMORAK_REQUIRES(mutex);
    std::filesystem::path placeIn(const std::filesystem::path& base, const std::string& name) const;
    bool isThere(const std::string& name) const;
    void remove(const std::string& name) const;
    std::vector<FormerFile> missingNow() const VELMORAK_REQUIRES(mutex);

    const Pipeline& pipeline;
    std::filesystem::path folder;        ///< The results folder, without links; empty if there is none.
    std::filesystem::path formerFolder;  ///< In it.
    mutable Mutex mutex;
    std::map<std::string, std::string> files VELMORAK_GUARDED_BY(mutex);  ///< Plug-in by name of the file.
    std::set<std::string> moved VELMORAK_GUARDED_BY(mutex);               ///< In this run.
};

/// @return the file's name as it is compared: "./plot.png" is "plot.png".
std::string plainFileName(const std::string& name);

}  // namespace velmorak
