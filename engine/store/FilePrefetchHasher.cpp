#include "store/FilePrefetchHasher.h"

#include <velmorak/Tasks.h>

#include <oneapi/tbb/task_arena.h>

#include <atomic>
#include <condition_variable>
#include <exception>
#include <utility>

namespace velmorak {
namespace {

constexpr std::int64_t smallestBytes = std::int64_t{1} << 20;

}  // namespace

/// Outlives the run where it is called too late.
class DigestsAhead::Errand {
public:
    Errand(FileDigests& digests, std::filesystem::path file) : digests(digests), file(std::move(file)) {}

    void run() {
        {
            const std::scoped_lock lock(mutex);
            if (isGivenUp) {
                return;
            }
            isRunning = true;
        }
        try {
            digests.of(file, isGivenUp);
        } catch (const std::exception&) {
            // Who needs the sum makes it and says what is wrong.
        }
        const std::scoped_lock lock(mutex);
        isRunning = false;
        change.notify_all();
    }

    void giveUp() {
        std::unique_lock lock(mutex);
        isGivenUp = true;
        change.wait(lock, [this] { return !isRunning; });
    }

private:
    FileDigests& digests;
    const std::filesystem::path file;
    std::mutex mutex;
    std::condition_variable change;
    std::atomic<bool> isGivenUp = false;
    bool isRunning = false;
};

DigestsAhead::DigestsAhead(FileDigests& digests) : digests(digests) {}

DigestsAhead::~DigestsAhead() {
    for (const std::shared_ptr<Errand>& errand : errands) {
        errand->giveUp();
    }
}

bool DigestsAhead::begin(const std::filesystem::path& file, const FileStamp& stamp) {
    if (oneapi::tbb::this_task_arena::max_concurrency() < 2 || stamp.size < smallestBytes || isYoung(stamp, nowNs())) {
        return false;
    }
    const auto errand = std::make_shared<Errand>(digests, file);
    {
        const std::scoped_lock lock(mutex);
        errands.push_back(errand);
    }
    doAside([errand] { errand->run(); });
    return true;
}

}  // namespace velmorak
