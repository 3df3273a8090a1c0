#include "FilesBelow.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <utility>

namespace {

constexpr std::size_t maxEntries = 5000;
constexpr int maxDepth = 4;

class Descriptor {
public:
    explicit Descriptor(int number) : number(number) {}
    Descriptor(Descriptor&& other) noexcept : number(std::exchange(other.number, -1)) {}
    Descriptor& operator=(Descriptor&& other) noexcept;
    ~Descriptor();
    bool isOpen() const { return number >= 0; }
    int get() const { return number; }
    int release() { return std::exchange(number, -1); }

private:
    int number;
};

Descriptor& Descriptor::operator=(Descriptor&& other) noexcept {
    std::swap(number, other.number);
    return *this;
}

Descriptor::~Descriptor() {
    if (number >= 0) {
        close(number);
    }
}

Descriptor openFolder(const std::string& folder) {
    return Descriptor(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
}

/// The parts of a path; nothing if it may lead elsewhere.
std::optional<std::vector<std::string>> partsOf(const std::string& name) {
    std::vector<std::string> parts;
    std::size_t begin = 0;
    while (begin <= name.size()) {
        const std::size_t end = std::min(name.find('/', begin), name.size());
        parts.push_back(name.substr(begin, end - begin));
        const std::string& part = parts.back();
        if (part.empty() || part == "." || part == ".." || part.find('\0') != std::string::npos) {
            return std::nullopt;
        }
        begin = end + 1;
    }
    return parts;
}

std::shared_ptr<const FilesBelow::File> regularFile(Descriptor file) {
    struct stat status {};
    if (!file.isOpen() || fstat(file.get(), &status) != 0 || !S_ISREG(status.st_mode)) {
        return nullptr;
    }
    return std::make_shared<FilesBelow::File>(file.release(), static_cast<std::uint64_t>(status.st_size));
}

using Folder = std::unique_ptr<DIR, int (*)(DIR*)>;

/// Appends the files of an open folder and of the folders in it.
void collect(Descriptor opened, const std::string& prefix, int depth, std::vector<FilesBelow::Entry>& entries) {
    const Folder folder(fdopendir(opened.get()), closedir);
    if (!folder) {
        return;
    }
    const int number = opened.release();  // The folder closes it.
    while (const dirent* const entry = readdir(folder.get())) {
        const std::string name = entry->d_name;
        struct stat status {};
        if (name.starts_with('.') || entries.size() >= maxEntries ||
            fstatat(number, entry->d_name, &status, AT_SYMLINK_NOFOLLOW) != 0) {
            continue;
        }
        if (S_ISREG(status.st_mode)) {
            entries.push_back({prefix + name, static_cast<std::uint64_t>(status.st_size),
                               status.st_mtim.tv_sec * 1000LL + status.st_mtim.tv_nsec / 1000000});
        } else if (S_ISDIR(status.st_mode) && depth < maxDepth) {
            Descriptor inner(openat(number, entry->d_name, O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
            if (inner.isOpen()) {
                collect(std::move(inner), prefix + name + "/", depth + 1, entries);
            }
        }
    }
}

}  // namespace

FilesBelow::File::~File() {
    close(descriptor);
}

std::string FilesBelow::File::read(std::uint64_t offset, std::size_t most) const {
    std::string piece(most, '\0');
    const ssize_t got = pread(descriptor, piece.data(), piece.size(), static_cast<off_t>(offset));
    piece.resize(static_cast<std::size_t>(std::max<ssize_t>(0, got)));
    return piece;
}

std::shared_ptr<const FilesBelow::File> FilesBelow::open(const std::string& name) const {
    const auto parts = partsOf(name);
    Descriptor at = openFolder(folder);
    if (!parts) {
        return nullptr;
    }
    for (std::size_t i = 0; i + 1 < parts->size() && at.isOpen(); ++i) {
        at = Descriptor(openat(at.get(), (*parts)[i].c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    }
    if (!at.isOpen()) {
        return nullptr;
    }
    // A FIFO must not block, and is refused later.
    return regularFile(
        Descriptor(openat(at.get(), parts->back().c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC)));
}

std::vector<FilesBelow::Entry> FilesBelow::list() const {
    std::vector<Entry> entries;
    Descriptor root = openFolder(folder);
    if (root.isOpen()) {
        collect(std::move(root), "", 0, entries);
    }
    std::sort(entries.begin(), entries.end(), [](const Entry& one, const Entry& two) { return one.name < two.name; });
    return entries;
}
