#include "graph/ColumnPreview.h"

#include "run/LastExit.h"

#include <utility>

namespace velmorak {

ColumnLooks::~ColumnLooks() {
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

std::shared_ptr<ColumnLook> ColumnLooks::begin(const std::string& subject, std::shared_ptr<const ColumnsFound> found,
                                               std::function<void(WorkAside&)> work) {
    all.push_back(
        std::make_shared<ColumnLook>(ColumnLook{subject, WorkAside::begin(std::move(work)), std::move(found)}));
    return all.back();
}

std::size_t ColumnLooks::overdue() {
    std::erase_if(all, [](const auto& look) { return look->work->wait(std::chrono::milliseconds(0)); });
    return all.size();
}

}  // namespace velmorak
