#include "store/FileHashes.h"

#include "table/Bytes.h"

#include <sys/stat.h>

#include <algorithm>
#include <chrono>
#include <fstream>
#include <utility>
#include <vector>

namespace velmorak {
namespace {

constexpr std::int64_t nsPerSecond = 1'000'000'000;
constexpr std::uint64_t mark = 0x31'4d'55'53'6b'6c'65'56;
constexpr std::size_t maxKnown = 10000;
constexpr std::size_t blockBytes = std::size_t{1} << 18;

std::int64_t nanoseconds(const timespec& time) {
    return std::int64_t{time.tv_sec} * nsPerSecond + std::int64_t{time.tv_nsec};
}

std::optional<Digest> read(const std::filesystem::path& file, const std::atomic<bool>& stopping) {
    std::ifstream stream(file, std::ios::binary);
    if (!stream) {
        return std::nullopt;
    }
    Sha256 digester;
    std::vector<char> block(blockBytes);
    while (stream) {
        if (stopping) {
            return std::nullopt;
        }
        stream.read(block.data(), static_cast<std::streamsize>(block.size()));
        digester.add(block.data(), static_cast<std::size_t>(stream.gcount()));
    }
    return stream.bad() ? std::nullopt : std::optional(digester.finish());
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

/// Only one thread reads a file; the others come after it, and mostly find what it left.
class FileHashes::Turn {
public:
    Turn(FileHashes& digests, const std::filesystem::path& file, const std::atomic<bool>& stopping);
    Turn(const Turn&) = delete;
    Turn& operator=(const Turn&) = delete;
    ~Turn();

private:
    FileHashes& digests;
    const std::filesystem::path& file;
    bool isOurs = false;  ///< Not when the run was stopped while another was reading.
};

FileHashes::Turn::Turn(FileHashes& digests, const std::filesystem::path& file, const std::atomic<bool>& stopping)
    : digests(digests), file(file) {
    std::unique_lock lock(digests.mutex);
    constexpr std::chrono::milliseconds untilNextLook(5);
    while (digests.beingRead.contains(file) && !stopping) {
        digests.change.wait_for(lock, untilNextLook);
    }
    isOurs = digests.beingRead.insert(file).second;
}

FileHashes::Turn::~Turn() {
    const std::scoped_lock lock(digests.mutex);
    if (isOurs) {
        digests.beingRead.erase(file);
        digests.change.notify_all();
    }
}

std::optional<Digest> FileHashes::recall(const std::filesystem::path& file, const FileStamp& stamp) {
    const std::scoped_lock lock(mutex);
    const auto found = known.find(file);
    const bool isKnown = found != known.end() && found->second.stamp == stamp && !isYoung(stamp, found->second.readNs);
    return isKnown ? std::optional(found->second.digest) : std::nullopt;
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
    const std::scoped_lock lock(mutex);
    known[file] = {*stamp, *digest, readNs};
    hasChanged = true;
    return digest;
}

std::optional<std::string> FileHashes::changes() {
    const std::scoped_lock lock(mutex);
    if (!std::exchange(hasChanged, false)) {
        return std::nullopt;
    }
    while (known.size() > maxKnown) {
        known.erase(std::min_element(known.begin(), known.end(), [](const auto& one, const auto& other) {
            return one.second.readNs < other.second.readNs;
        }));
    }
    ByteWriter writer;
    writer.number(mark);
    writer.number<std::uint64_t>(known.size());
    for (const auto& [file, content] : known) {
        writer.list(file.string());
        writer.number(content);
    }
    return writer.sealed();
}

void FileHashes::restore(const std::string& bytes) {
    const std::scoped_lock lock(mutex);
    try {
        ByteReader reader(bytes, mark);
        for (auto count = reader.number<std::uint64_t>(); count > 0; --count) {
            auto file = reader.list<std::string>();
            known.emplace(std::move(file), reader.number<Known>());
        }
    } catch (const std::invalid_argument&) {
        hasChanged = true;  // The rest of it is not worth keeping.
    }
}

}  // namespace velmorak
