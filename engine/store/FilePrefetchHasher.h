#pragma once

#include "store/FileHashes.h"

#include <filesystem>
#include <memory>
#include <mutex>
#include <vector>

namespace velmorak {

/// Has the contents of input files summed up by other threads of the run while their rows are read, so that the sums
/// are there when the results are to be kept. Who needs one earlier waits for it, or makes it. Threads: begin may be
/// called on any thread of the run.
class FilePrefetchHasher {
public:
    /// @param digests outlives this.
    explicit FilePrefetchHasher(FileHashes& digests);
    FilePrefetchHasher(const FilePrefetchHasher&) = delete;
    FilePrefetchHasher& operator=(const FilePrefetchHasher&) = delete;
    /// What has not begun is left, what has begun is given up.
    ~FilePrefetchHasher();

    /// Does nothing where it would not pay: without another thread, with a small file, or one so young that it would be
    /// read again.
    /// @param stamp of the file.
    /// @return whether it is done.
    bool begin(const std::filesystem::path& file, const FileStamp& stamp);

private:
    class Task;

    FileHashes& digests;
    std::mutex mutex;
    std::vector<std::shared_ptr<Task>> tasks;
};

}  // namespace velmorak
