#pragma once

#include <velmorak/Mutex.h>

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

/// The runs of the user, as they announce themselves in the runtime folder, and the sentences that belong to no run.
/// Threads: every operation may be called on any thread.
class Runs {
public:
    /// @param folder the runtime folder; empty if there is none.
    explicit Runs(std::filesystem::path folder) : folder(std::move(folder)) {}

    /// Looks at the folder.
    /// @return the files as JSON: id, size, whether the program lives, and its last progress.
    std::string list();
    /// Waits until the list differs from the one of this version, for at most so long.
    /// @param isOver asked meanwhile; true ends the wait.
    /// @return the version and the list as JSON.
    std::string waitFor(std::uint64_t known, std::chrono::milliseconds longest, const std::function<bool()>& isOver);

    /// The whole lines of a file from a byte on, at most 4 MiB.
    /// @return nothing if there is no such file.
    std::optional<std::string> events(const std::string& id, std::uint64_t from) const;
    /// Histograms and profiles of a run as far as they are filled; nothing if there are none now.
    std::optional<std::string> live(const std::string& id) const;
    /// Notes that a page is visible, so that runs show these.
    void noteLook() const;
    /// The results folder of a run; nothing if it has none.
    std::optional<std::string> resultsOf(const std::string& id);

private:
    std::string listing() const;

    const std::filesystem::path folder;
    velmorak::Mutex mutex;
    std::uint64_t version VELMORAK_GUARDED_BY(mutex) = 0;
    std::string last VELMORAK_GUARDED_BY(mutex);
    std::map<std::string, std::string> resultFolders VELMORAK_GUARDED_BY(mutex);  ///< By run.
};
