#pragma once

#include "store/CacheConfig.h"
#include "store/Sha256.h"

#include <velmorak/ObjectBytes.h>

#include <atomic>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace velmorak {

/// Bytes by key in a folder, for this program and later ones. Any number of programs may use the folder at once: an
/// entry is a file of its own that takes its name when it is complete, and carries a checksum. An entry that is damaged
/// is as good as none. When there is more than the limit, those that were used longest ago go.
/// Threads: every operation may be called on any thread.
/// Errors:  none; when the folder cannot be written this is said once, and nothing is kept.
class DiskStore {
public:
    using Say = std::function<void(const std::string& sentence)>;

    /// @param say outlives nothing: called during write only, on its thread.
    DiskStore(CacheConfig place, Say say);

    /// Something that is written can be found again.
    bool isUsed() const { return !place.folder.empty() && !hasGivenUp; }
    std::uint64_t limitBytes() const { return place.limitBytes; }

    std::optional<std::string> read(const Digest& key);
    void write(const Digest& key, const std::string& content);
    /// @param bytes of the content.
    /// @param content gives them to the sink in pieces. What it throws leaves no entry behind.
    void write(const Digest& key, std::uint64_t bytes, const std::function<void(const ByteSink& sink)>& content);
    void remove(const Digest& key);
    /// Removes all entries, also those of other programs.
    void clear();

private:
    struct Entry {
        std::filesystem::path file;
        std::uint64_t bytes = 0;
        std::int64_t usedNs = 0;
    };

    std::filesystem::path fileOf(const Digest& key) const;
    void abandon(const std::string& reason);
    std::vector<Entry> entries() const;
    void makeRoom(std::uint64_t bytesAdded);
    void removeOldest();

    CacheConfig place;
    Say say;
    std::atomic<bool> hasGivenUp = false;
    std::atomic<unsigned> temporaries = 0;
    std::mutex countMutex;
    std::optional<std::uint64_t> bytesKept;  ///< As far as this program knows.
    std::uint64_t bytesUncounted = 0;        ///< Added since the folder was looked through.
};

}  // namespace velmorak
