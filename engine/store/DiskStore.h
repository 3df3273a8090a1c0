#pragma once

#include "store/CacheConfig.h"
#include "store/Sha256.h"

#include <velmorak/Mutex.h>
#include <velmorak/ObjectBytes.h>

#include <atomic>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace velmorak {

/// Bytes by key in a folder, for this program and later ones. Any number of programs may use the folder at once: each
/// entry is a file that takes its name when it is complete, and carries a checksum. A damaged entry counts as missing.
/// Beyond the size limit, the least recently used entries are removed.
/// Threads: every operation may be called on any thread.
/// Errors:  none are thrown; if the folder cannot be written, the store warns once and stores nothing any more.
class DiskStore {
public:
    using Warn = std::function<void(const std::string& message)>;

    /// @param warn called synchronously from write.
    DiskStore(CacheConfig config, Warn warn);

    /// @return whether there is a folder that can be written, as far as is known.
    bool isUsed() const { return !config.folder.empty() && !hasGivenUp; }
    std::uint64_t limitBytes() const { return config.limitBytes; }
    std::chrono::milliseconds minReadingTime() const { return config.minReadingTime; }

    std::optional<std::string> read(const Digest& key);
    void write(const Digest& key, const std::string& content);
    /// @param bytes size of the content.
    /// @param content passes it to the sink in pieces. If it throws, no entry is left behind.
    void write(const Digest& key, std::uint64_t bytes, const std::function<void(const ByteSink& sink)>& content);
    void remove(const Digest& key);
    /// Removes all entries, also those of other programs.
    void clear() VELMORAK_EXCLUDES(countMutex);

private:
    struct Entry {
        std::filesystem::path file;
        std::uint64_t bytes = 0;
        std::int64_t usedNs = 0;
    };

    std::filesystem::path fileOf(const Digest& key) const;
    void writeEntry(const std::filesystem::path& file, const std::function<void(const ByteSink& sink)>& content);
    void giveUp(const std::string& reason);
    std::vector<Entry> entries() const;
    static void addEntries(const std::filesystem::path& folder, std::vector<Entry>& all);
    void makeRoom(std::uint64_t bytesAdded) VELMORAK_EXCLUDES(countMutex);
    void removeOldest() VELMORAK_REQUIRES(countMutex);

    const CacheConfig config;
    const Warn warn;
    std::atomic<bool> hasGivenUp = false;
    Mutex countMutex;
    std::optional<std::uint64_t> bytesKept VELMORAK_GUARDED_BY(countMutex);  ///< As far as this program knows.
    std::uint64_t bytesUncounted VELMORAK_GUARDED_BY(countMutex) = 0;  ///< Added since the last scan of the folder.
};

}  // namespace velmorak
