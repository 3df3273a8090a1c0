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
struct ColumnsFound {
    std::string key{};       ///< Differs whenever the columns could; empty where nothing can be told.
    std::string sentence{};  ///< Empty where nothing can be told.
};

/// A look at what a table reader would read, aside: the file may lie where no answer comes from.
struct ColumnLook {
    std::string subject;                        ///< What is looked at; another look is needed when that has changed.
    std::shared_ptr<WorkAside> work;            ///< Waited for before found is read.
    std::shared_ptr<const ColumnsFound> found;  ///< Once the work has ended.
};

/// The looks of one manager.
/// Threads: used by the main thread.
class ColumnLooks {
public:
    ColumnLooks() = default;
    /// Tells those that go on to stop. One that does not is left behind, and the program then ends without destroying
    /// what it may be in.
    ~ColumnLooks();
    ColumnLooks(const ColumnLooks&) = delete;
    ColumnLooks& operator=(const ColumnLooks&) = delete;

    /// @param work sets found, and owns all that it uses.
    std::shared_ptr<ColumnLook> begin(const std::string& subject, std::shared_ptr<const ColumnsFound> found,
                                      std::function<void(WorkAside&)> work);
    /// How many go on though nobody waits for them any more.
    std::size_t overdue();

    std::chrono::milliseconds patience{500};  ///< For which a look may keep a user waiting.

private:
    std::vector<std::shared_ptr<ColumnLook>> all;
};

}  // namespace velmorak
