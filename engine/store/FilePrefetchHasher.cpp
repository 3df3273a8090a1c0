#include "store/FilePrefetchHasher.h"

#include <velmorak/Tasks.h>

#include <oneapi/tbb/task_arena.h>

#include <atomic>
#include <condition_variable>
#include <exception>
#include <utility>

namespace velmorak {
namespace {

constexpr std::int64_t minBytes = std::int64_t{1} << 20;

}  // namespace

/// Outlives the run where it is called too late.
class FilePrefetchHasher::Task {
public:
    Task(FileHashes& digests, std::filesystem::path file) : digests(digests), file(std::move(file)) {}

    void run();

    void abandon();

private:
    FileHashes& digests;
    const std::filesystem::path file;
    std::mutex mutex;
    std::condition_variable change;
    std::atomic<bool> isAbandoned = false;
    bool isRunning = false;
};

void FilePrefetchHasher::Task::run() {
    {
        const std::scoped_lock lock(mutex);
        if (isAbandoned) {
            return;
        }
        isRunning = true;
    }
    try {
        digests.of(file, isAbandoned);
    } catch (const std::exception&) {
        // Who needs the sum makes it and says what is wrong.
    }
    const std::scoped_lock lock(mutex);
    isRunning = false;
    change.notify_all();
}

void FilePrefetchHasher::Task::abandon() {
    std::unique_lock lock(mutex);
    isAbandoned = true;
    change.wait(lock, [this] { return !isRunning; });
}

FilePrefetchHasher::FilePrefetchHasher(FileHashes& digests) : digests(digests) {}

FilePrefetchHasher::~FilePrefetchHasher() {
    for (const std::shared_ptr<Task>& task : tasks) {
        task->abandon();
    }
}

bool FilePrefetchHasher::begin(const std::filesystem::path& file, const FileStamp& stamp) {
    if (oneapi::tbb::this_task_arena::max_concurrency() < 2 || stamp.size < minBytes || isYoung(stamp, nowNs())) {
        return false;
    }
    const auto task = std::make_shared<Task>(digests, file);
    {
        const std::scoped_lock lock(mutex);
        tasks.push_back(task);
    }
    spawnTask([task] { task->run(); });
    return true;
}

}  // namespace velmorak
