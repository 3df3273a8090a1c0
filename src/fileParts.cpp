#include "fileParts.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <vector>

namespace {

namespace fs = std::filesystem;

constexpr mode_t modeBits = 07777;
constexpr const char* temporaryPrefix = ".velmorak-save-";

// Short, and independent of the target's name, which may be as long as the file system allows.
fs::path temporaryName(const fs::path& folder, unsigned number) {
    return folder / (temporaryPrefix + std::to_string(getpid()) + '-' + std::to_string(number));
}

// On a file system without locks, removeLeftovers cannot lock the file either and keeps it.
bool isOurs(const Descriptor& file) {
    if (flock(file.get(), LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK) {
        return false;
    }
    struct stat status {};
    return fstat(file.get(), &status) == 0 && status.st_nlink > 0;
}

Descriptor createTemporary(const fs::path& folder, mode_t mode, fs::path& path) {
    for (unsigned number = 0;; ++number) {
        path = temporaryName(folder, number);
        Descriptor made(open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, mode));
        if (made.isOpen() ? isOurs(made) : errno != EEXIST) {
            return made;
        }
    }
}

std::vector<std::string> attributeNames(const fs::path& file) {
    const ssize_t room = listxattr(file.c_str(), nullptr, 0);
    std::string list(room > 0 ? static_cast<std::size_t>(room) : 0, '\0');
    const ssize_t got = list.empty() ? 0 : listxattr(file.c_str(), list.data(), list.size());
    list.resize(got > 0 ? static_cast<std::size_t>(got) : 0);
    std::vector<std::string> names;
    for (std::size_t at = 0; at < list.size(); at += names.back().size() + 1) {
        names.emplace_back(list.c_str() + at);
    }
    return names;
}

std::optional<std::string> attributeOf(const fs::path& file, const std::string& name) {
    const ssize_t room = getxattr(file.c_str(), name.c_str(), nullptr, 0);
    std::string value(room > 0 ? static_cast<std::size_t>(room) : 0, '\0');
    const ssize_t got = room > 0 ? getxattr(file.c_str(), name.c_str(), value.data(), value.size()) : room;
    return got == room && got >= 0 ? std::optional(value) : std::nullopt;
}

// Some attributes can be set by the system only; the new file already has these.
bool copyAttributes(const fs::path& from, const fs::path& to, const Descriptor& file) {
    const auto names = attributeNames(from);
    return std::all_of(names.begin(), names.end(), [&](const std::string& name) {
        const auto value = attributeOf(from, name);
        return value && (attributeOf(to, name) == value ||
                         fsetxattr(file.get(), name.c_str(), value->data(), value->size(), 0) == 0);
    });
}

void removeIfLeft(const fs::path& path) {
    const Descriptor file(open(path.c_str(), O_RDONLY | O_NONBLOCK | O_NOFOLLOW | O_CLOEXEC));
    if (file.isOpen() && flock(file.get(), LOCK_EX | LOCK_NB) == 0) {
        unlink(path.c_str());
    }
}

}  // namespace

Descriptor::~Descriptor() {
    if (number >= 0) {
        close(number);
    }
}

TemporaryFile::TemporaryFile(const fs::path& folder, mode_t mode) : file(createTemporary(folder, mode, path)) {}

TemporaryFile::~TemporaryFile() {
    if (file.isOpen() && !path.empty()) {
        unlink(path.c_str());
    }
}

bool TemporaryFile::copyMetadata(const fs::path& model, const struct stat& status) const {
    struct stat made {};
    if (fstat(file.get(), &made) != 0) {
        return false;
    }
    const bool isOwnerRight = made.st_uid == status.st_uid && made.st_gid == status.st_gid;
    return (isOwnerRight || fchown(file.get(), status.st_uid, status.st_gid) == 0) &&
           fchmod(file.get(), status.st_mode & modeBits) == 0 && copyAttributes(model, path, file);
}

bool TemporaryFile::write(std::string_view text) const {
    return writeAll(file, text) && flush(file);
}

bool TemporaryFile::renameTo(const fs::path& target) {
    if (std::rename(path.c_str(), target.c_str()) != 0) {
        return false;
    }
    path.clear();
    flushFolder(folderOf(target));
    return true;
}

void removeLeftovers(const fs::path& folder) {
    std::error_code failure;
    for (fs::directory_iterator entry(folder, failure); !failure && entry != fs::directory_iterator();
         entry.increment(failure)) {
        if (entry->path().filename().native().starts_with(temporaryPrefix)) {
            removeIfLeft(entry->path());
        }
    }
}

bool writeAll(const Descriptor& file, std::string_view text) {
    while (!text.empty()) {
        const ssize_t written = write(file.get(), text.data(), text.size());
        if (written < 0 && errno != EINTR) {
            return false;
        }
        text.remove_prefix(written < 0 ? 0 : static_cast<std::size_t>(written));
    }
    return true;
}

bool flush(const Descriptor& file) {
    return fsync(file.get()) == 0 || errno == EINVAL || errno == EROFS;  // not stored on a disk
}

void flushFolder(const fs::path& folder) {
    const Descriptor file(open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (file.isOpen()) {
        fsync(file.get());
    }
}

fs::path folderOf(const fs::path& file) {
    return file.has_parent_path() ? file.parent_path() : fs::path(".");
}

std::optional<struct stat> statusOf(const fs::path& file) {
    struct stat status {};
    return stat(file.c_str(), &status) == 0 ? std::optional(status) : std::nullopt;
}

std::optional<std::string> contentOfFile(const fs::path& file) {
    const Descriptor opened(open(file.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
    struct stat status {};
    if (!opened.isOpen() || fstat(opened.get(), &status) != 0 || !S_ISREG(status.st_mode)) {
        return std::nullopt;
    }
    std::string content(static_cast<std::size_t>(status.st_size), '\0');
    std::size_t length = 0;
    while (length < content.size()) {
        const ssize_t got = read(opened.get(), content.data() + length, content.size() - length);
        if (got == 0 || (got < 0 && errno != EINTR)) {
            break;
        }
        length += got < 0 ? 0 : static_cast<std::size_t>(got);
    }
    return length == content.size() ? std::optional(content) : std::nullopt;
}
