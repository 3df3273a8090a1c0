#pragma once

#include "store/Sha256.h"

#include <velmorak/Mutex.h>

#include <atomic>
#include <cstdint>
#include <filesystem>
#include <map>
#include <optional>
#include <set>
#include <string>

namespace velmorak {

/// Identity and state of a file as the file system reports them. A change of the content changes the stamp; the stamp
/// may also change while the content stays the same.
struct FileStamp {
    std::uint64_t device = 0;
    std::uint64_t inode = 0;
    std::int64_t size = 0;
    std::int64_t modifiedNs = 0;
    std::int64_t changedNs = 0;

    bool operator==(const FileStamp&) const = default;
    auto operator<=>(const FileStamp&) const = default;  // NOLINT(modernize-use-nullptr)
};

/// @return whether the stamps differ at most by a renaming of the file.
bool hasSameContent(const FileStamp& one, const FileStamp& other);

/// @return empty if there is no such file, or it is not a regular file.
std::optional<FileStamp> stampOf(const std::filesystem::path& file);

/// @return whether a change right after the given time could leave the stamp as it is, because file systems count time
///         in steps of up to two seconds.
/// @param timeNs since 1970.
bool isYoung(const FileStamp& stamp, std::int64_t timeNs);

/// @return nanoseconds since 1970.
std::int64_t nowNs();

/// SHA-256 digests of files. A file is read again only if its stamp has changed, or is so young that a change right
/// after the reading could have left the stamp as it was.
/// Threads: every operation may be called on any thread.
class FileHashes {
public:
    /// Waits if another thread is reading the file already.
    /// @return empty if the file cannot be read, changes meanwhile, or stopping is set first.
    std::optional<Digest> of(const std::filesystem::path& file, const std::atomic<bool>& stopping);

    /// As of, but only for a file whose content may have been known at a time: it has a digest with this stamp, or some
    /// file of the same size had one then, so that this one may be the same under another name.
    /// @param timeNs since 1970.
    std::optional<Digest> ofKnown(const std::filesystem::path& file, const FileStamp& stamp, std::int64_t timeNs,
                                  const std::atomic<bool>& stopping);
    /// Adds the digest of a file that was read elsewhere.
    /// @param readNs when its reading began there.
    void learn(const std::filesystem::path& file, const FileStamp& stamp, const Digest& digest, std::int64_t readNs);

    /// All digests, for restore in a later program. @return empty if nothing was added since the last call.
    std::optional<std::string> changes();
    /// Adds the digests that changes returned, without replacing newer ones. Damaged bytes are ignored.
    void restore(const std::string& bytes);

private:
    struct Known {
        FileStamp stamp;
        Digest digest{};
        std::int64_t readNs = 0;  ///< When the reading began.
    };

    /// Orders the files of each size by the time at which they were read.
    struct Sized {
        std::int64_t size = 0;
        std::int64_t readNs = 0;
        std::string file;

        auto operator<=>(const Sized&) const = default;  // NOLINT(modernize-use-nullptr)
    };

    class Turn;

    std::optional<Digest> recall(const std::filesystem::path& file, const FileStamp& stamp) VELMORAK_EXCLUDES(mutex);
    bool mayBeKnown(const std::filesystem::path& file, const FileStamp& stamp, std::int64_t timeNs)
        VELMORAK_EXCLUDES(mutex);
    void remember(const std::string& file, const Known& digest) VELMORAK_REQUIRES(mutex);
    void forget(const std::string& file) VELMORAK_REQUIRES(mutex);
    void evictOldest() VELMORAK_REQUIRES(mutex);

    Mutex mutex;
    ConditionVariable change;
    std::map<std::string, Known> known VELMORAK_GUARDED_BY(mutex);       ///< By path.
    std::set<Sized> sizes VELMORAK_GUARDED_BY(mutex);                    ///< The same files.
    std::map<FileStamp, std::string> stamps VELMORAK_GUARDED_BY(mutex);  ///< One of those with each stamp.
    std::set<std::string> beingRead VELMORAK_GUARDED_BY(mutex);
    bool hasChanged VELMORAK_GUARDED_BY(mutex) = false;
};

}  // namespace velmorak
