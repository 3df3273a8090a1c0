#include "store/FilePrefetchHasher.h"

#include <velmorak/Tasks.h>

#include <atomic>
#include <exception>
#include <utility>

namespace velmorak {
namespace {

/// Smaller files are hashed faster than a thread is woken. Lists may hold thousands of files of this size.
constexpr std::int64_t minBytes = std::int64_t{1} << 16;

}  // namespace

/// Outlives the run if it starts too late.
class FilePrefetchHasher::Task {
public:
    Task(FileHashes& hashes, std::filesystem::path file) : hashes(hashes), file(std::move(file)) {}

    void run() VELMORAK_EXCLUDES(mutex);
    /// Returns when run does not use the hashes any more, and never will.
    void cancel() VELMORAK_EXCLUDES(mutex);

private:
    /// @return false if the task was cancelled.
    bool start() VELMORAK_EXCLUDES(mutex);

    FileHashes& hashes;
    const std::filesystem::path file;
    std::atomic<bool> isCancelled = false;
    Mutex mutex;
    ConditionVariable change;
    bool isRunning VELMORAK_GUARDED_BY(mutex) = false;
};

bool FilePrefetchHasher::Task::start() {
    const MutexLock lock(mutex);
    isRunning = !isCancelled;
    return isRunning;
}

void FilePrefetchHasher::Task::run() {
    if (!start()) {
        return;
    }
    try {
        hashes.of(file, isCancelled);
    } catch (const std::exception&) {
        // Whoever needs the digest computes it again and reports the error.
    }
    const MutexLock lock(mutex);
    isRunning = false;
    change.notifyAll();
}

void FilePrefetchHasher::Task::cancel() {
    const MutexLock lock(mutex);
    isCancelled = true;
    while (isRunning) {
        change.wait(mutex);
    }
}

FilePrefetchHasher::FilePrefetchHasher(FileHashes& hashes) : hashes(hashes) {}

FilePrefetchHasher::~FilePrefetchHasher() {
    const MutexLock lock(mutex);
    for (const std::shared_ptr<Task>& task : tasks) {
        task->cancel();
    }
}

bool FilePrefetchHasher::begin(const std::filesystem::path& file, const FileStamp& stamp) {
    if (runThreads() < 2 || stamp.size < minBytes || isYoung(stamp, nowNs())) {
        return false;
    }
    const auto task = std::make_shared<Task>(hashes, file);
    {
        const MutexLock lock(mutex);
        if (!begun.insert(file).second) {
            return true;
        }
        tasks.push_back(task);
    }
    spawnTask([task] { task->run(); });
    return true;
}

}  // namespace velmorak
