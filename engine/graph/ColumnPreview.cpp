#include "graph/ColumnPreview.h"

#include "run/LastExit.h"

#include <utility>

namespace velmorak {

ColumnPreviews::~ColumnPreviews() {
    constexpr std::chrono::milliseconds timeToStop(250);
    for (const auto& look : all) {
        look->work->stop();
    }
    for (const auto& look : all) {
        if (!look->work->wait(timeToStop)) {
            endWithoutDestructors();
            return;
        }
    }
}

std::shared_ptr<ColumnPreview> ColumnPreviews::begin(const std::string& subject,
                                                     std::shared_ptr<const PreviewedColumns> found,
                                                     std::function<void(BackgroundTask&)> work) {
    all.push_back(std::make_shared<ColumnPreview>(
        ColumnPreview{subject, BackgroundTask::begin(std::move(work)), std::move(found)}));
    return all.back();
}

std::size_t ColumnPreviews::overdue() {
    std::erase_if(all, [](const auto& look) { return look->work->wait(std::chrono::milliseconds(0)); });
    return all.size();
}

}  // namespace velmorak
