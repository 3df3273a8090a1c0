#pragma once

#include "isolate/Message.h"

#include <cstdint>
#include <optional>
#include <string>

namespace velmorak::isolation {

/// What a helper process is told at its beginning.
struct Task {
    std::uint64_t kind = 0;  ///< Its number in the collection.
    std::string folder{};    ///< The current one; empty if there is none.
    int priority = 0;
    bool hasContext = false;
    std::string plugin{};
    bool isPreview = false;
    double maxCells = 0.0;
    std::optional<double> fixedDate{};
    bool isShared = false;  ///< The context is a SharedRun.
    bool isPlanned = false;
    std::string partial{};
    std::uint64_t rowBytes = 0;  ///< Of the run's memory for rows.
};

/// Reads what Helper.cpp writes.
inline Task readTask(MessageReader& message) {
    Task task;
    task.kind = message.number<std::uint64_t>();
    task.folder = message.text();
    task.priority = message.number<int>();
    task.hasContext = message.flag();
    if (task.hasContext) {
        task.plugin = message.text();
        task.isPreview = message.flag();
        task.maxCells = message.number<double>();
        const bool hasDate = message.flag();
        const auto date = message.number<double>();
        task.fixedDate = hasDate ? std::optional(date) : std::nullopt;
        task.isShared = message.flag();
        task.isPlanned = message.flag();
        task.partial = message.text();
        task.rowBytes = message.number<std::uint64_t>();
    }
    return task;
}

}  // namespace velmorak::isolation
