#pragma once

#include "graph/preview/BackgroundTask.h"

#include <velmorak/Mutex.h>

#include <chrono>
#include <cstddef>
#include <deque>
#include <memory>
#include <string>
#include <vector>

namespace velmorak {

/// The result of previewing the beginning of a table.
struct PreviewedColumns {
    std::string key{};       ///< Differs whenever the columns could; empty where nothing was found.
    std::string sentence{};  ///< Empty where nothing was found.
};

/// A preview of the table that a reader would read, in the background: its file may lie where no answer comes from.
struct ColumnPreview {
    std::string subject;  ///< Identifies the previewed file or object; a change requires another preview.
    std::shared_ptr<BackgroundTask> work;           ///< Waited for before found is read.
    std::shared_ptr<const PreviewedColumns> found;  ///< Once the work has ended.
};

/// The previews of one manager. At most eight run at the same time; the others queue. A file that does not answer
/// occupies one of the eight threads and delays nobody else.
/// Threads: used by the main thread.
class ColumnPreviews {
public:
    ColumnPreviews() = default;
    /// Asks unfinished previews to stop. If one does not, its thread is left behind, and the program then ends without
    /// destructors, because the thread may still use what they destroy.
    ~ColumnPreviews();
    ColumnPreviews(const ColumnPreviews&) = delete;
    ColumnPreviews& operator=(const ColumnPreviews&) = delete;

    /// @param work sets found, and owns everything that it uses.
    std::shared_ptr<ColumnPreview> begin(const std::string& subject, std::shared_ptr<const PreviewedColumns> found,
                                         BackgroundTask::Work work);
    /// @return number of previews that have not ended.
    std::size_t unfinished();
    /// Waits until all have ended, at most as long as the patience lasts.
    void wait();

    std::chrono::milliseconds patience{500};  ///< For which previews may keep a user waiting.

private:
    /// Shared with the threads, which may outlive this.
    struct Queue {
        Mutex mutex;
        std::deque<std::shared_ptr<BackgroundTask>> waiting VELMORAK_GUARDED_BY(mutex);
        std::size_t threads VELMORAK_GUARDED_BY(mutex) = 0;
    };

    static void runWaiting(Queue& queue);

    std::shared_ptr<Queue> queue = std::make_shared<Queue>();
    std::vector<std::shared_ptr<ColumnPreview>> all;  ///< But for those that are known to have ended.
};

}  // namespace velmorak
