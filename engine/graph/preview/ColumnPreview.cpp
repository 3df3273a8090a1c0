#include "graph/preview/ColumnPreview.h"

#include "run/messages/LastExit.h"

#include <algorithm>
#include <thread>
#include <utility>

namespace velmorak {
namespace {

constexpr std::size_t maxThreads = 8;
constexpr std::chrono::milliseconds noTime(0);

}  // namespace

ColumnPreviews::~ColumnPreviews() {
    constexpr std::chrono::milliseconds timeToStop(250);
    for (const auto& preview : all) {
        preview->work->stop();
    }
    for (const auto& preview : all) {
        if (!preview->work->wait(timeToStop)) {
            endWithoutDestructors();
            return;
        }
    }
}

std::shared_ptr<ColumnPreview> ColumnPreviews::begin(const std::string& subject,
                                                     std::shared_ptr<const PreviewedColumns> found,
                                                     BackgroundTask::Work work) {
    all.push_back(std::make_shared<ColumnPreview>(
        ColumnPreview{subject, std::make_shared<BackgroundTask>(std::move(work)), std::move(found)}));
    const MutexLock lock(queue->mutex);
    queue->waiting.push_back(all.back()->work);
    if (queue->threads < maxThreads) {
        ++queue->threads;
        std::thread([shared = queue] { runWaiting(*shared); }).detach();
    }
    return all.back();
}

void ColumnPreviews::runWaiting(Queue& queue) {
    while (true) {
        std::shared_ptr<BackgroundTask> next;
        {
            const MutexLock lock(queue.mutex);
            if (queue.waiting.empty()) {
                --queue.threads;
                return;
            }
            next = std::move(queue.waiting.front());
            queue.waiting.pop_front();
        }
        next->run();
    }
}

std::size_t ColumnPreviews::unfinished() {
    std::erase_if(all, [](const auto& preview) { return preview->work->wait(noTime); });
    return all.size();
}

void ColumnPreviews::wait() {
    const auto end = std::chrono::steady_clock::now() + patience;
    for (const auto& preview : all) {
        const auto left = end - std::chrono::steady_clock::now();
        preview->work->wait(std::max(noTime, std::chrono::duration_cast<std::chrono::milliseconds>(left)));
    }
}

}  // namespace velmorak
