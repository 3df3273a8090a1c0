#pragma once

#include "store/FileHashes.h"

#include <velmorak/Mutex.h>

#include <filesystem>
#include <memory>
#include <set>
#include <vector>

namespace velmorak {

/// Hashes input files on other threads of the run while their rows are read, so that the digests are known when the
/// results are to be stored. Whoever needs one earlier waits for it, or computes it.
/// Threads: begin may be called on any thread of the run.
class FilePrefetchHasher {
public:
    /// @param hashes outlives this.
    explicit FilePrefetchHasher(FileHashes& hashes);
    FilePrefetchHasher(const FilePrefetchHasher&) = delete;
    FilePrefetchHasher& operator=(const FilePrefetchHasher&) = delete;
    /// Cancels the tasks and waits for those that run.
    ~FilePrefetchHasher();

    /// Does nothing where it would not pay: if the run has one thread, or for a file that is small or was changed so
    /// recently that its digest would not be trusted later.
    /// @param stamp of the file.
    /// @return whether the file will be hashed.
    bool begin(const std::filesystem::path& file, const FileStamp& stamp) VELMORAK_EXCLUDES(mutex);

private:
    class Task;

    FileHashes& hashes;
    Mutex mutex;
    std::vector<std::shared_ptr<Task>> tasks VELMORAK_GUARDED_BY(mutex);
    std::set<std::filesystem::path> begun VELMORAK_GUARDED_BY(mutex);
};

}  // namespace velmorak
