#pragma once

#include "run/Pipeline.h"
#include "store/FileHashes.h"

#include <velmorak/Run.h>

#include <atomic>
#include <filesystem>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace velmorak {

/// A file that a plug-in has left.
struct WrittenFile {
    std::string fileName;  ///< As the plug-in named it.
    std::filesystem::path path;
    FileStamp stamp;  ///< Before it got its name.
};

/// The folder in which the plug-ins of one run leave their files. A file takes its name when it is complete, and
/// belongs to one plug-in.
/// Threads: every operation may be called on any thread.
class ResultFolder {
public:
    /// @param mayWriteAnywhere names may be absolute or lead out of the folder.
    /// @param stopping set when the run is asked to end; files that are complete only then are thrown away.
    /// @param pipeline says where the folder is, and why it cannot be one.
    ResultFolder(const Pipeline& pipeline, bool mayWriteAnywhere, const std::atomic<bool>& stopping);

    /// @return a file under a temporary name. Its keep throws Stopped when the run was asked to end.
    /// @throws Failure if the name is refused or the folder cannot be made.
    std::unique_ptr<ResultFile> begin(const std::string& plugin, const std::string& fileName);

    /// @return where a file of that name stands. @throws Failure if the name is refused.
    std::filesystem::path place(const std::string& fileName) const;
    /// Makes the file the plug-in's own. @throws Failure if it is another's.
    void claim(const std::string& plugin, const std::string& fileName);
    /// @return what the plug-in has left; nothing when a file that it began was not kept.
    std::optional<std::vector<WrittenFile>> writtenBy(const std::string& plugin);

private:
    class TemporaryFile;
    struct Owned {
        std::string plugin;
        std::optional<WrittenFile> written;  ///< Nothing until it is kept.
    };

    void note(const std::filesystem::path& file, WrittenFile written);
    std::filesystem::path temporaryFor(const std::filesystem::path& file);

    std::filesystem::path folder;
    std::string folderComplaint;  ///< Empty where it can be written to.
    bool mayWriteAnywhere;
    const std::atomic<bool>& stopping;
    std::mutex mutex;
    std::map<std::filesystem::path, Owned> owners;
    std::map<std::string, std::set<std::filesystem::path>> filesOf;  ///< By plug-in.
    unsigned temporaries = 0;
};

}  // namespace velmorak
