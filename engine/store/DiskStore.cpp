#include "store/DiskStore.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <system_error>
#include <utility>

namespace velmorak {
namespace {

namespace fs = std::filesystem;

constexpr std::string_view mark = "velmorak store 1\n";
constexpr std::string_view temporaryMark = ".new-";
constexpr std::size_t folderDigits = 2;
constexpr std::chrono::hours leftoverAge{1};

/// An open file, closed with its holder.
class OpenFile {
public:
    OpenFile(const fs::path& file, int flags) : number(open(file.c_str(), flags | O_CLOEXEC, 0600)) {}
    ~OpenFile();
    OpenFile(const OpenFile&) = delete;
    OpenFile& operator=(const OpenFile&) = delete;

    const int number;
};

OpenFile::~OpenFile() {
    if (number >= 0) {
        close(number);
    }
}

std::optional<std::string> readAll(int file) {
    struct stat status {};
    if (fstat(file, &status) != 0 || !S_ISREG(status.st_mode)) {
        return std::nullopt;
    }
    std::string bytes(static_cast<std::size_t>(status.st_size), '\0');
    std::size_t done = 0;
    while (done < bytes.size()) {
        const ssize_t count = ::read(file, bytes.data() + done, bytes.size() - done);
        if (count <= 0) {
            return std::nullopt;
        }
        done += static_cast<std::size_t>(count);
    }
    return bytes;
}

bool writeAll(int file, std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t count = ::write(file, bytes.data(), bytes.size());
        if (count < 0 && errno != EINTR) {
            return false;
        }
        bytes.remove_prefix(count < 0 ? 0 : static_cast<std::size_t>(count));
    }
    return true;
}

Digest sumOf(std::string_view content) {
    Sha256 digester;
    digester.add(content.data(), content.size());
    return digester.finish();
}

/// @return what stands behind mark and checksum; nothing when it is not what was written.
std::optional<std::string> contentOf(std::string bytes) {
    const std::size_t head = mark.size() + Digest().size();
    if (bytes.size() < head || std::string_view(bytes).substr(0, mark.size()) != mark) {
        return std::nullopt;
    }
    const Digest sum = sumOf(std::string_view(bytes).substr(head));
    if (std::memcmp(sum.data(), bytes.data() + mark.size(), sum.size()) != 0) {
        return std::nullopt;
    }
    return bytes.substr(head);
}

/// A name that is free again when its holder is gone, unless the file was given another.
class TemporaryFile {
public:
    explicit TemporaryFile(fs::path name) : path(std::move(name)) {}
    ~TemporaryFile();
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;

    const fs::path path;
};

TemporaryFile::~TemporaryFile() {
    const int reason = errno;
    unlink(path.c_str());
    errno = reason;
}

/// Writes mark, checksum and content. The checksum is known when the content has been written.
bool writeEntry(int file, const std::function<void(const ByteSink& sink)>& content) {
    Digest sum{};
    const std::string_view sumBytes(reinterpret_cast<const char*>(sum.data()), sum.size());
    if (!writeAll(file, mark) || !writeAll(file, sumBytes)) {
        return false;
    }
    Sha256 digester;
    bool isWritten = true;
    content([&](std::string_view piece) {
        digester.add(piece.data(), piece.size());
        isWritten = isWritten && writeAll(file, piece);
    });
    sum = digester.finish();
    return isWritten && lseek(file, static_cast<off_t>(mark.size()), SEEK_SET) >= 0 && writeAll(file, sumBytes);
}

bool isHexadecimal(const std::string& name, std::size_t length) {
    return name.size() == length && name.find_first_not_of("0123456789abcdef") == std::string::npos;
}

}  // namespace

DiskStore::DiskStore(CacheConfig place, Say say) : place(std::move(place)), say(std::move(say)) {}

fs::path DiskStore::fileOf(const Digest& key) const {
    const std::string name = hexOf(key);
    return place.folder / name.substr(0, folderDigits) / name.substr(folderDigits);
}

std::optional<std::string> DiskStore::read(const Digest& key) {
    if (place.folder.empty()) {
        return std::nullopt;
    }
    const OpenFile file(fileOf(key), O_RDONLY);
    if (file.number < 0) {
        return std::nullopt;
    }
    std::optional<std::string> bytes = readAll(file.number);
    std::optional<std::string> content = bytes ? contentOf(std::move(*bytes)) : std::nullopt;
    if (content) {
        futimens(file.number, nullptr);
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
    const std::uint64_t bytesOfAll = mark.size() + Digest().size() + bytes;
    if (place.folder.empty() || hasGivenUp || bytesOfAll > place.limitBytes) {
        return;
    }
    const fs::path file = fileOf(key);
    std::error_code error;
    fs::create_directories(file.parent_path(), error);
    if (error) {
        return abandon(error.message());
    }
    fs::permissions(place.folder, fs::perms::owner_all, error);
    const TemporaryFile temporary(file.parent_path() /
                                  fmt::format("{}{}-{}", temporaryMark, getpid(), temporaries.fetch_add(1)));
    const OpenFile written(temporary.path, O_WRONLY | O_CREAT | O_EXCL);
    if (written.number < 0 || !writeEntry(written.number, content) ||
        std::rename(temporary.path.c_str(), file.c_str()) != 0) {
        return abandon(std::generic_category().message(errno));
    }
    makeRoom(bytesOfAll);
}

void DiskStore::abandon(const std::string& reason) {
    if (!hasGivenUp.exchange(true)) {
        say("Results are not kept for later: " + place.folder.string() + " cannot be written: " + reason);
    }
}

void DiskStore::remove(const Digest& key) {
    std::error_code ignored;
    fs::remove(fileOf(key), ignored);
}

void DiskStore::clear() {
    const std::scoped_lock lock(countMutex);
    std::error_code ignored;
    for (const Entry& entry : entries()) {
        fs::remove(entry.file, ignored);
    }
    bytesKept.reset();
}

/// Entries, and what programs that were killed have left of theirs.
std::vector<DiskStore::Entry> DiskStore::entries() const {
    std::vector<Entry> all;
    std::error_code error;
    for (fs::directory_iterator folder(place.folder, error); !error && folder != fs::end(folder);
         folder.increment(error)) {
        if (!isHexadecimal(folder->path().filename(), folderDigits)) {
            continue;
        }
        std::error_code inner;
        for (fs::directory_iterator file(folder->path(), inner); !inner && file != fs::end(file);
             file.increment(inner)) {
            struct stat status {};
            const std::string name = file->path().filename();
            const bool isEntry = isHexadecimal(name, 2 * Digest().size() - folderDigits);
            if (stat(file->path().c_str(), &status) != 0 || !S_ISREG(status.st_mode)) {
                continue;
            }
            const std::chrono::seconds age{std::time(nullptr) - status.st_mtim.tv_sec};
            if (isEntry || (name.starts_with(temporaryMark) && age > leftoverAge)) {
                constexpr std::int64_t nsPerSecond = 1'000'000'000;
                all.push_back({file->path(), static_cast<std::uint64_t>(status.st_size),
                               status.st_mtim.tv_sec * nsPerSecond + status.st_mtim.tv_nsec});
            }
        }
    }
    return all;
}

/// Other programs add entries as well, so the folder is looked through now and then.
void DiskStore::makeRoom(std::uint64_t bytesAdded) {
    constexpr std::uint64_t looks = 10;
    const std::scoped_lock lock(countMutex);
    bytesUncounted += bytesAdded;
    if (bytesKept && bytesUncounted < place.limitBytes / looks && *bytesKept + bytesUncounted <= place.limitBytes) {
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
    const OpenFile turn(place.folder / "lock", O_RDWR | O_CREAT);
    // Another program that makes room at the moment makes it for this one, too.
    if (sum <= place.limitBytes || turn.number < 0 || flock(turn.number, LOCK_EX | LOCK_NB) != 0) {
        return;
    }
    std::sort(all.begin(), all.end(), [](const Entry& one, const Entry& other) { return one.usedNs < other.usedNs; });
    std::error_code ignored;
    const std::uint64_t wanted = place.limitBytes - place.limitBytes / 5;
    for (auto entry = all.begin(); entry != all.end() && *bytesKept > wanted; ++entry) {
        fs::remove(entry->file, ignored);
        *bytesKept -= entry->bytes;
    }
}

}  // namespace velmorak
