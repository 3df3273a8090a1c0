#include "store/FileHashes.h"

#include "table/ByteReader.h"
#include "table/ByteWriter.h"

#include <sys/stat.h>

#include <algorithm>
#include <chrono>
#include <fstream>
#include <limits>
#include <utility>
#include <vector>

namespace velmorak {
namespace {

constexpr std::int64_t nsPerSecond = 1'000'000'000;
constexpr std::uint64_t fileHashesMark = 0x31'4d'55'53'6b'6c'65'56;
constexpr std::size_t maxKnown = 100'000;
constexpr std::size_t blockBytes = std::size_t{1} << 18;

std::int64_t nanoseconds(const timespec& time) {
    return std::int64_t{time.tv_sec} * nsPerSecond + std::int64_t{time.tv_nsec};
}

std::optional<Digest> read(const std::filesystem::path& file, const std::atomic<bool>& stopping) {
    std::ifstream stream(file, std::ios::binary);
    if (!stream) {
        return std::nullopt;
    }
    Sha256 hash;
    std::vector<char> block(blockBytes);
    while (stream) {
        if (stopping) {
            return std::nullopt;
        }
        stream.read(block.data(), static_cast<std::streamsize>(block.size()));
        hash.add(block.data(), static_cast<std::size_t>(stream.gcount()));
    }
    return stream.bad() ? std::nullopt : std::optional(hash.finish());
}

}  // namespace

std::optional<FileStamp> stampOf(const std::filesystem::path& file) {
    struct stat status {};
    if (stat(file.c_str(), &status) != 0 || !S_ISREG(status.st_mode)) {
        return std::nullopt;
    }
    return FileStamp{status.st_dev, status.st_ino, status.st_size, nanoseconds(status.st_mtim),
                     nanoseconds(status.st_ctim)};
}

std::int64_t nowNs() {
    return std::chrono::duration_cast<std::chrono::nanoseconds>(std::chrono::system_clock::now().time_since_epoch())
        .count();
}

bool isYoung(const FileStamp& stamp, std::int64_t timeNs) {
    return stamp.changedNs >= timeNs - 2 * nsPerSecond;
}

bool hasSameContent(const FileStamp& one, const FileStamp& other) {
    FileStamp renamed = one;
    renamed.changedNs = other.changedNs;
    return renamed == other;
}

/// The right to read a file, which one thread has at a time. Others wait for it, and then usually find its digest.
class FileHashes::Turn {
public:
    Turn(FileHashes& hashes, const std::filesystem::path& file, const std::atomic<bool>& stopping);
    Turn(const Turn&) = delete;
    Turn& operator=(const Turn&) = delete;
    ~Turn();

private:
    FileHashes& hashes;
    const std::string& file;
    bool isOurs = false;  ///< Not if the run was stopped while another thread was reading.
};

FileHashes::Turn::Turn(FileHashes& hashes, const std::filesystem::path& file, const std::atomic<bool>& stopping)
    : hashes(hashes), file(file.native()) {
    const MutexLock lock(hashes.mutex);
    constexpr std::chrono::milliseconds stopCheckInterval(5);
    while (hashes.beingRead.contains(file) && !stopping) {
        hashes.change.waitFor(hashes.mutex, stopCheckInterval);
    }
    isOurs = hashes.beingRead.insert(file).second;
}

FileHashes::Turn::~Turn() {
    const MutexLock lock(hashes.mutex);
    if (isOurs) {
        hashes.beingRead.erase(file);
        hashes.change.notifyAll();
    }
}

std::optional<Digest> FileHashes::recall(const std::filesystem::path& file, const FileStamp& stamp) {
    const MutexLock lock(mutex);
    const auto isOf = [&stamp](const Known& digest) { return digest.stamp == stamp && !isYoung(stamp, digest.readNs); };
    const auto found = known.find(file.native());
    if (found != known.end() && isOf(found->second)) {
        return found->second.digest;
    }
    // In a folder that was moved, files keep their stamps.
    const auto same = stamps.find(stamp);
    if (same == stamps.end()) {
        return std::nullopt;
    }
    const Known& digest = known.at(same->second);
    return isOf(digest) ? std::optional(digest.digest) : std::nullopt;
}

bool FileHashes::mayBeKnown(const std::filesystem::path& file, const FileStamp& stamp, std::int64_t timeNs) {
    const MutexLock lock(mutex);
    const auto found = known.find(file.native());
    if (found != known.end() && found->second.stamp == stamp) {
        return true;
    }
    const auto first = sizes.lower_bound({stamp.size, std::numeric_limits<std::int64_t>::min(), {}});
    return first != sizes.end() && first->size == stamp.size && first->readNs < timeNs;
}

void FileHashes::remember(const std::string& file, const Known& digest) {
    forget(file);
    known[file] = digest;
    sizes.insert({digest.stamp.size, digest.readNs, file});
    stamps[digest.stamp] = file;
}

void FileHashes::forget(const std::string& file) {
    const auto found = known.find(file);
    if (found == known.end()) {
        return;
    }
    const Known& digest = found->second;
    sizes.erase({digest.stamp.size, digest.readNs, file});
    if (const auto same = stamps.find(digest.stamp); same != stamps.end() && same->second == file) {
        stamps.erase(same);
    }
    known.erase(found);
}

std::optional<Digest> FileHashes::of(const std::filesystem::path& file, const std::atomic<bool>& stopping) {
    const Turn turn(*this, file, stopping);
    const std::optional<FileStamp> stamp = stampOf(file);
    if (!stamp) {
        return std::nullopt;
    }
    if (const std::optional<Digest> digest = recall(file, *stamp)) {
        return digest;
    }
    const std::int64_t readNs = nowNs();
    const std::optional<Digest> digest = read(file, stopping);
    if (!digest || stampOf(file) != stamp) {
        return std::nullopt;
    }
    const MutexLock lock(mutex);
    remember(file.native(), {*stamp, *digest, readNs});
    hasChanged = true;
    return digest;
}

std::optional<Digest> FileHashes::ofKnown(const std::filesystem::path& file, const FileStamp& stamp,
                                          std::int64_t timeNs, const std::atomic<bool>& stopping) {
    return mayBeKnown(file, stamp, timeNs) ? of(file, stopping) : std::nullopt;
}

void FileHashes::learn(const std::filesystem::path& file, const FileStamp& stamp, const Digest& digest,
                       std::int64_t readNs) {
    const MutexLock lock(mutex);
    remember(file.native(), {stamp, digest, readNs});
    hasChanged = true;
}

void FileHashes::evictOldest() {
    if (known.size() <= maxKnown) {
        return;
    }
    std::vector<std::int64_t> times;
    for (const auto& [file, content] : known) {
        times.push_back(content.readNs);
    }
    const auto oldestKept = times.begin() + static_cast<std::ptrdiff_t>(times.size() - maxKnown);
    std::nth_element(times.begin(), oldestKept, times.end());
    std::vector<std::string> old;
    for (const auto& [file, content] : known) {
        if (content.readNs < *oldestKept) {
            old.push_back(file);
        }
    }
    for (const std::string& file : old) {
        forget(file);
    }
}

std::optional<std::string> FileHashes::changes() {
    const MutexLock lock(mutex);
    if (!std::exchange(hasChanged, false)) {
        return std::nullopt;
    }
    evictOldest();
    ByteWriter writer;
    writer.number(fileHashesMark);
    writer.number<std::uint64_t>(known.size());
    for (const auto& [file, content] : known) {
        writer.list(file);
        writer.number(content);
    }
    return writer.sealed();
}

void FileHashes::restore(const std::string& bytes) {
    const MutexLock lock(mutex);
    try {
        ByteReader reader(bytes, fileHashesMark);
        for (auto count = reader.number<std::uint64_t>(); count > 0; --count) {
            const auto file = reader.list<std::string>();
            const auto digest = reader.number<Known>();
            if (!known.contains(file)) {
                remember(file, digest);
            }
        }
    } catch (const std::invalid_argument&) {
        hasChanged = true;  // Replaces the damaged bytes.
    }
}

}  // namespace velmorak
