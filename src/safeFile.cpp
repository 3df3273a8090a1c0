#include "safeFile.h"

#include <fcntl.h>
#include <signal.h>  // NOLINT(modernize-deprecated-headers): the signal masks of POSIX
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <ctime>
#include <filesystem>
#include <optional>
#include <system_error>
#include <tuple>

namespace {

namespace fs = std::filesystem;

constexpr int longestChain = 40;  // of links, as the kernel has it
constexpr mode_t modeBits = 07777;
constexpr mode_t newFileMode = 0666;  // less the user's mask

class Descriptor {
public:
    explicit Descriptor(int number) : number(number) {}
    ~Descriptor() { close(); }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    bool isOpen() const { return number >= 0; }
    int get() const { return number; }

    bool close() {
        const int open = number;
        number = -1;
        return open < 0 || ::close(open) == 0;
    }

private:
    int number;
};

// A file that grows beyond the user's limit fails like one on a full disk; unblocked, the signal would end the program.
class SizeSignalBlock {
public:
    SizeSignalBlock() {
        sigemptyset(&sizeSignal);
        sigaddset(&sizeSignal, SIGXFSZ);
        pthread_sigmask(SIG_BLOCK, &sizeSignal, &former);
    }

    ~SizeSignalBlock() {
        const timespec atOnce{};
        while (sigismember(&former, SIGXFSZ) == 0 && sigtimedwait(&sizeSignal, nullptr, &atOnce) == SIGXFSZ) {
        }
        pthread_sigmask(SIG_SETMASK, &former, nullptr);
    }

    SizeSignalBlock(const SizeSignalBlock&) = delete;
    SizeSignalBlock& operator=(const SizeSignalBlock&) = delete;

private:
    sigset_t sizeSignal{};
    sigset_t former{};
};

fs::path followLinks(const std::string& file) {
    fs::path target(file);
    std::error_code failure;
    for (int i = 0; i < longestChain && fs::is_symlink(target, failure); ++i) {
        const fs::path next = fs::read_symlink(target, failure);
        target = target.parent_path() / next;
    }
    return target;
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
    return fsync(file.get()) == 0 || errno == EINVAL || errno == EROFS;  // what has no disk below it
}

std::optional<struct stat> statusOf(const fs::path& file) {
    struct stat status {};
    return stat(file.c_str(), &status) == 0 ? std::optional(status) : std::nullopt;
}

struct Neighbour {
    fs::path path;
    Descriptor file;
};

int createNew(const fs::path& path) {
    return open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, newFileMode);
}

// The name is short and does not depend on the target's, which may be as long as the file system allows.
Neighbour makeNeighbour(const fs::path& target) {
    const std::string stem = ".velmorak-" + std::to_string(getpid()) + "-";
    for (unsigned count = 0;; ++count) {
        const fs::path path = target.parent_path() / (stem + std::to_string(count));
        const int number = createNew(path);
        if (number >= 0 || errno != EEXIST) {
            return {path, Descriptor(number)};
        }
    }
}

bool makeAlike(const Descriptor& file, const struct stat& wanted) {
    struct stat made {};
    if (fstat(file.get(), &made) != 0) {
        return false;
    }
    const bool isOwnerRight = made.st_uid == wanted.st_uid && made.st_gid == wanted.st_gid;
    return (isOwnerRight || fchown(file.get(), wanted.st_uid, wanted.st_gid) == 0) &&
           fchmod(file.get(), wanted.st_mode & modeBits) == 0;
}

void flushFolder(const fs::path& target) {
    const fs::path folder = target.has_parent_path() ? target.parent_path() : fs::path(".");
    const Descriptor file(open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (file.isOpen()) {
        fsync(file.get());
    }
}

enum class Outcome { saved, failed, notPossible };

Outcome replace(const fs::path& target, std::string_view text, const std::optional<struct stat>& former) {
    Neighbour neighbour = makeNeighbour(target);
    if (!neighbour.file.isOpen()) {
        return Outcome::notPossible;
    }
    Outcome outcome = Outcome::failed;
    if (former && !makeAlike(neighbour.file, *former)) {
        outcome = Outcome::notPossible;
    } else if (writeAll(neighbour.file, text) && flush(neighbour.file) && neighbour.file.close()) {
        const bool isRenamed = std::rename(neighbour.path.c_str(), target.c_str()) == 0;
        outcome = isRenamed ? Outcome::saved : Outcome::notPossible;
    }
    if (outcome == Outcome::saved) {
        flushFolder(target);
    } else {
        unlink(neighbour.path.c_str());
    }
    return outcome;
}

// What cannot reserve (EINVAL, EOPNOTSUPP) is tried all the same.
bool hasRoom(const Descriptor& file, off_t formerSize, std::size_t size) {
    const int failure = size == 0 ? 0 : posix_fallocate(file.get(), 0, static_cast<off_t>(size));
    if (failure == 0 || failure == EINVAL || failure == EOPNOTSUPP) {
        return true;
    }
    std::ignore = ftruncate(file.get(), formerSize);  // what was reserved until there was no more
    return false;
}

bool writeInPlace(const fs::path& target, std::string_view text) {
    Descriptor file(open(target.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, newFileMode));
    struct stat status {};
    if (!file.isOpen() || fstat(file.get(), &status) != 0) {
        return false;
    }
    if (!S_ISREG(status.st_mode)) {
        return writeAll(file, text) && file.close();
    }
    return hasRoom(file, status.st_size, text.size()) && writeAll(file, text) &&
           ftruncate(file.get(), static_cast<off_t>(text.size())) == 0 && flush(file) && file.close();
}

bool mayWrite(const fs::path& target) {
    return Descriptor(open(target.c_str(), O_WRONLY | O_CLOEXEC)).isOpen();
}

}  // namespace

bool saveFile(const std::string& file, std::string_view text) {
    const SizeSignalBlock block;
    const fs::path target = followLinks(file);
    const auto former = statusOf(target);
    std::error_code failure;
    if ((former && !S_ISREG(former->st_mode)) || fs::is_symlink(target, failure)) {  // a device, a circle of links
        return writeInPlace(target, text);
    }
    // Taking the place of a file asks for no right to it; writing it does.
    if (former && !mayWrite(target)) {
        return false;
    }
    const Outcome outcome = replace(target, text, former);
    return outcome == Outcome::notPossible ? writeInPlace(target, text) : outcome == Outcome::saved;
}
