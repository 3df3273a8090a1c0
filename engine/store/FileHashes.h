#pragma once

#include "store/Sha256.h"

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <filesystem>
#include <map>
#include <mutex>
#include <optional>
#include <set>
#include <string>

namespace velmorak {

/// What the file system knows of a file's state. Whoever changes the content changes the stamp; a stamp may change
/// while the content stays.
struct FileStamp {
    std::uint64_t device = 0;
    std::uint64_t inode = 0;
    std::int64_t size = 0;
    std::int64_t modifiedNs = 0;
    std::int64_t changedNs = 0;

    bool operator==(const FileStamp&) const = default;
};

/// As far as the two stamps tell; a file that only got another name has the same content.
bool hasSameContent(const FileStamp& one, const FileStamp& other);

/// @return nothing when there is no such file, or it is no plain file.
std::optional<FileStamp> stampOf(const std::filesystem::path& file);

/// @return whether a change right after the given time could have left the stamp as it was, because file systems count
///         time in steps of up to two seconds.
/// @param timeNs since 1970.
bool isYoung(const FileStamp& stamp, std::int64_t timeNs);

/// @return nanoseconds since 1970.
std::int64_t nowNs();

/// Content sums of files. A file is read again only when its stamp has changed, or is so young that a change right
/// after the reading could have left the stamp as it was.
/// Threads: every operation may be called on any thread.
class FileHashes {
public:
    /// Waits where another thread is reading the file already.
    /// @return nothing when the file cannot be read, changes meanwhile, or stopping is set first.
    std::optional<Digest> of(const std::filesystem::path& file, const std::atomic<bool>& stopping);

    /// What is known, for a later program. @return nothing when it is what restore was given.
    std::optional<std::string> changes();
    /// Takes in what changes gave, as far as nothing newer is known. Anything else is ignored.
    void restore(const std::string& bytes);

private:
    struct Known {
        FileStamp stamp;
        Digest digest{};
        std::int64_t readNs = 0;  ///< When the reading began.
    };

    class Turn;

    std::optional<Digest> recall(const std::filesystem::path& file, const FileStamp& stamp);

    std::mutex mutex;
    std::condition_variable change;
    std::map<std::filesystem::path, Known> known;
    std::set<std::filesystem::path> beingRead;
    bool hasChanged = false;
};

}  // namespace velmorak
