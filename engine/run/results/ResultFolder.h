#pragma once

#include "run/plan/Pipeline.h"
#include "store/FileHashes.h"

#include <velmorak/Mutex.h>
#include <velmorak/Run.h>

#include <atomic>
#include <filesystem>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace velmorak {

/// A complete result file.
struct WrittenFile {
    std::string fileName;  ///< As the plug-in named it.
    std::filesystem::path path;
    FileStamp stamp;  ///< Taken before the file got its name.
};

class FormerResults;

/// The folder of the result files of one run.
///
/// Invariants: a file appears under its name only when it is complete (AtomicFile), never after the run was stopped,
/// and only if no other plug-in of the run has claimed the name, so that the content does not depend on the order of
/// execution. Names stay inside the folder unless mayWriteAnywhere; links on the way are resolved before the check.
/// Threads: every operation may be called on any thread.
class ResultFolder {
public:
    /// @param mayWriteAnywhere allows absolute names and names outside of the folder.
    /// @param stopping true when the run is asked to end; files completed after that are discarded.
    /// @param pipeline has the path of the folder.
    ResultFolder(const Pipeline& pipeline, bool mayWriteAnywhere, const std::atomic<bool>& stopping);

    /// Who moves a file of an earlier run away when it is to be made anew.
    /// @param former outlives this.
    void displaceWith(FormerResults& former) { displaced = &former; }

    /// @return a file under a temporary name. Its keep throws Stopped if the run was asked to end.
    /// @throws Failure if the name is refused or the folder cannot be created.
    std::unique_ptr<ResultFile> begin(const std::string& plugin, const std::string& fileName);

    /// @return the path for a file name. @throws Failure if the name is refused.
    std::filesystem::path place(const std::string& fileName) const;
    /// Reserves a name for the plug-in. @throws Failure if another one has it.
    void claim(const std::string& plugin, const std::string& fileName);
    /// @return the files of the plug-in; no value if one that it began is incomplete.
    std::optional<std::vector<WrittenFile>> writtenBy(const std::string& plugin);

private:
    class TemporaryFile;
    struct Owned {
        std::string plugin;
        std::optional<WrittenFile> written;  ///< No value until it is complete.
    };

    void note(const std::filesystem::path& file, WrittenFile written);
    void displace(const std::string& plugin, const std::filesystem::path& file);

    std::filesystem::path folder;
    std::string folderComplaint;  ///< Why the folder cannot be used; empty if it can.
    bool mayWriteAnywhere;
    const std::atomic<bool>& stopping;
    FormerResults* displaced = nullptr;
    Mutex mutex;
    std::map<std::filesystem::path, Owned> owners VELMORAK_GUARDED_BY(mutex);
    /// By plug-in.
    std::map<std::string, std::set<std::filesystem::path>> filesOf VELMORAK_GUARDED_BY(mutex);
};

}  // namespace velmorak
