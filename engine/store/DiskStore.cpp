#include "store/DiskStore.h"

#include "store/AtomicFile.h"
#include "store/FileDescriptor.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>

#include <algorithm>
#include <chrono>
#include <cstring>
#include <ctime>
#include <string_view>
#include <system_error>
#include <utility>

namespace velmorak {
namespace {

namespace fs = std::filesystem;

/// An entry is this mark, the digest of the content, and the content.
constexpr std::string_view mark = "velmorak store 1\n";
constexpr std::size_t headBytes = mark.size() + Digest().size();
constexpr std::string_view temporaryPrefix = ".new-";
constexpr std::size_t folderDigits = 2;
/// After which a temporary file belongs to no program that is still writing it.
constexpr std::chrono::hours leftoverAge{1};

std::string_view bytesIn(const Digest& digest) {
    return {reinterpret_cast<const char*>(digest.data()), digest.size()};
}

/// @return the content of an entry; empty if it is damaged.
std::optional<std::string> contentOf(const std::string& entry) {
    const std::string_view bytes(entry);
    if (bytes.size() < headBytes || !bytes.starts_with(mark)) {
        return std::nullopt;
    }
    const std::string_view content = bytes.substr(headBytes);
    Sha256 hash;
    hash.add(content.data(), content.size());
    if (bytesIn(hash.finish()) != bytes.substr(mark.size(), Digest().size())) {
        return std::nullopt;
    }
    return std::string(content);
}

std::optional<std::string> readContent(const FileDescriptor& file) {
    try {
        return contentOf(file.readAll());
    } catch (const std::system_error&) {
        return std::nullopt;
    }
}

bool isHexadecimal(const std::string& name, std::size_t length) {
    return name.size() == length && name.find_first_not_of("0123456789abcdef") == std::string::npos;
}

}  // namespace

DiskStore::DiskStore(CacheConfig config, Warn warn) : config(std::move(config)), warn(std::move(warn)) {}

fs::path DiskStore::fileOf(const Digest& key) const {
    const std::string name = hexOf(key);
    return config.folder / name.substr(0, folderDigits) / name.substr(folderDigits);
}

std::optional<std::string> DiskStore::read(const Digest& key) {
    if (config.folder.empty()) {
        return std::nullopt;
    }
    const FileDescriptor file(fileOf(key), O_RDONLY);
    if (!file.isOpen()) {
        return std::nullopt;
    }
    std::optional<std::string> content = readContent(file);
    if (content) {
        futimens(file.get(), nullptr);  // Marks the entry as used.
    } else {
        remove(key);
    }
    return content;
}

void DiskStore::write(const Digest& key, const std::string& content) {
    write(key, content.size(), [&](const ByteSink& sink) { sink(content); });
}

void DiskStore::write(const Digest& key, std::uint64_t bytes,
                      const std::function<void(const ByteSink& sink)>& content) {
    const std::uint64_t entryBytes = headBytes + bytes;
    if (!isUsed() || entryBytes > config.limitBytes) {
        return;
    }
    try {
        writeEntry(fileOf(key), content);
        makeRoom(entryBytes);
    } catch (const std::system_error& error) {
        giveUp(error.code().message());
    }
}

/// The digest is known only when the content has been written, and then replaces the one in front of it.
void DiskStore::writeEntry(const fs::path& file, const std::function<void(const ByteSink& sink)>& content) {
    std::error_code ignored;
    fs::create_directories(file.parent_path());
    fs::permissions(config.folder, fs::perms::owner_all, ignored);
    constexpr mode_t ownerOnly = 0600;
    AtomicFile entry(file, std::string(temporaryPrefix), ownerOnly);
    entry.write(mark);
    entry.write(bytesIn(Digest{}));
    Sha256 hash;
    content([&](std::string_view piece) {
        hash.add(piece.data(), piece.size());
        entry.write(piece);
    });
    entry.writeAt(mark.size(), bytesIn(hash.finish()));
    entry.commitUnsynced();  // The digest exposes what a power failure damages.
}

void DiskStore::giveUp(const std::string& reason) {
    if (!hasGivenUp.exchange(true)) {
        warn("Results are not cached: cannot write to " + config.folder.string() + ": " + reason);
    }
}

void DiskStore::remove(const Digest& key) {
    std::error_code ignored;
    fs::remove(fileOf(key), ignored);
}

void DiskStore::clear() {
    const MutexLock lock(countMutex);
    std::error_code ignored;
    for (const Entry& entry : entries()) {
        fs::remove(entry.file, ignored);
    }
    bytesKept.reset();
}

std::vector<DiskStore::Entry> DiskStore::entries() const {
    std::vector<Entry> all;
    std::error_code error;
    for (fs::directory_iterator folder(config.folder, error); !error && folder != fs::end(folder);
         folder.increment(error)) {
        if (isHexadecimal(folder->path().filename(), folderDigits)) {
            addEntries(folder->path(), all);
        }
    }
    return all;
}

/// Adds entries, and temporary files that killed programs left behind.
void DiskStore::addEntries(const fs::path& folder, std::vector<Entry>& all) {
    constexpr std::int64_t nsPerSecond = 1'000'000'000;
    std::error_code error;
    for (fs::directory_iterator file(folder, error); !error && file != fs::end(file); file.increment(error)) {
        struct stat status {};
        if (stat(file->path().c_str(), &status) != 0 || !S_ISREG(status.st_mode)) {
            continue;
        }
        const std::string name = file->path().filename();
        const bool isEntry = isHexadecimal(name, 2 * Digest().size() - folderDigits);
        const std::chrono::seconds age{std::time(nullptr) - status.st_mtim.tv_sec};
        if (isEntry || (name.starts_with(temporaryPrefix) && age > leftoverAge)) {
            all.push_back({file->path(), static_cast<std::uint64_t>(status.st_size),
                           status.st_mtim.tv_sec * nsPerSecond + status.st_mtim.tv_nsec});
        }
    }
}

/// Other programs add entries as well, so the folder is scanned each time a tenth of the limit has been added.
void DiskStore::makeRoom(std::uint64_t bytesAdded) {
    constexpr std::uint64_t scansPerLimit = 10;
    const MutexLock lock(countMutex);
    bytesUncounted += bytesAdded;
    if (bytesKept && bytesUncounted < config.limitBytes / scansPerLimit &&
        *bytesKept + bytesUncounted <= config.limitBytes) {
        return;
    }
    removeOldest();
    bytesUncounted = 0;
}

void DiskStore::removeOldest() {
    std::vector<Entry> all = entries();
    std::uint64_t sum = 0;
    for (const Entry& entry : all) {
        sum += entry.bytes;
    }
    bytesKept = sum;
    const FileDescriptor lock(config.folder / "lock", O_RDWR | O_CREAT, 0600);
    // Another program that is making room makes it for this one as well.
    if (sum <= config.limitBytes || !lock.isOpen() || flock(lock.get(), LOCK_EX | LOCK_NB) != 0) {
        return;
    }
    std::sort(all.begin(), all.end(), [](const Entry& one, const Entry& other) { return one.usedNs < other.usedNs; });
    std::error_code ignored;
    const std::uint64_t wanted = config.limitBytes - config.limitBytes / 5;
    for (auto entry = all.begin(); entry != all.end() && sum > wanted; ++entry) {
        fs::remove(entry->file, ignored);
        sum -= entry->bytes;
    }
    bytesKept = sum;
}

}  // namespace velmorak
