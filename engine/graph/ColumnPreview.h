#pragma once

#include "graph/BackgroundTask.h"

#include <chrono>
#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace velmorak {

/// What a look at the beginning of a table has found.
struct PreviewedColumns {
    std::string key{};       ///< Differs whenever the columns could; empty where nothing can be told.
    std::string sentence{};  ///< Empty where nothing can be told.
};

/// A look at what a table reader would read, aside: the file may lie where no answer comes from.
struct ColumnPreview {
    std::string subject;                   ///< What is looked at; another look is needed when that has changed.
    std::shared_ptr<BackgroundTask> work;  ///< Waited for before found is read.
    std::shared_ptr<const PreviewedColumns> found;  ///< Once the work has ended.
};

/// The looks of one manager.
/// Threads: used by the main thread.
class ColumnPreviews {
public:
    ColumnPreviews() = default;
    /// Tells those that go on to stop. One that does not is left behind, and the program then ends without destroying
    /// what it may be in.
    ~ColumnPreviews();
    ColumnPreviews(const ColumnPreviews&) = delete;
    ColumnPreviews& operator=(const ColumnPreviews&) = delete;

    /// @param work sets found, and owns all that it uses.
    std::shared_ptr<ColumnPreview> begin(const std::string& subject, std::shared_ptr<const PreviewedColumns> found,
                                         std::function<void(BackgroundTask&)> work);
    /// How many go on though nobody waits for them any more.
    std::size_t overdue();

    std::chrono::milliseconds patience{500};  ///< For which a look may keep a user waiting.

private:
    std::vector<std::shared_ptr<ColumnPreview>> all;
};

}  // namespace velmorak
