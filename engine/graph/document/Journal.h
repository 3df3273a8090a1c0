#pragma once

#include "store/FileDescriptor.h"

#include <velmorak/Mutex.h>

#include <chrono>
#include <filesystem>
#include <functional>
#include <string>
#include <thread>

namespace velmorak {

/// A pipeline as it would be saved now.
struct UnsavedDocument {
    std::string text;
    std::string path;  ///< Of its file; empty if it has none yet.
    bool isEmpty = true;
};

/// Keeps the text of a document with unsaved changes in a file, so that it survives a crash. The file is written some
/// time after a change, on a thread of its own, and removed when the document is saved, or when the journal is
/// destroyed: then the user has had a chance to save. Beside NAME.zedra, NAME.origin contains the path of the document;
/// a running program holds a lock on it.
/// A document counts as saved if its file has the same text.
/// Errors: a journal that cannot be written is given up in silence: nothing that the user asked for has failed.
class Journal {
public:
    /// Time from a change to its being written.
    static constexpr std::chrono::milliseconds usualDelay{2000};

    /// @param folder empty: there is no journal.
    /// @param document is called on any thread, one at a time.
    Journal(std::filesystem::path folder, std::function<UnsavedDocument()> document,
            std::chrono::milliseconds delay = usualDelay);
    Journal(const Journal&) = delete;
    Journal& operator=(const Journal&) = delete;
    ~Journal();

    /// The document has changed, or has been saved. Takes no time. Threads: one at a time.
    void noteChange();
    /// Writes or removes the file at once. Threads: any.
    void update();

private:
    void watch();
    void write(const UnsavedDocument& unsaved) VELMORAK_REQUIRES(writing);
    bool openOrigin() VELMORAK_REQUIRES(writing);
    void removeFiles() VELMORAK_REQUIRES(writing);

    const std::filesystem::path folder;
    const std::function<UnsavedDocument()> document;
    const std::chrono::milliseconds delay;

    Mutex writing;
    std::filesystem::path file VELMORAK_GUARDED_BY(writing);  ///< Empty before the first one.
    FileDescriptor origin VELMORAK_GUARDED_BY(writing);       ///< Locked.
    std::string writtenText VELMORAK_GUARDED_BY(writing);
    std::string writtenPath VELMORAK_GUARDED_BY(writing);

    Mutex waiting;
    ConditionVariable wake;
    bool isChanged VELMORAK_GUARDED_BY(waiting) = false;
    bool isClosing VELMORAK_GUARDED_BY(waiting) = false;
    std::thread watcher;  ///< Starts with the first change.
};

/// @return how many journals programs have left that do not run any more.
std::size_t leftJournals(const std::filesystem::path& folder);

}  // namespace velmorak
