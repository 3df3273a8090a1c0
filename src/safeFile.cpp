#include "safeFile.h"

#include "stateFolder.h"

#include <fcntl.h>
#include <signal.h>  // NOLINT(modernize-deprecated-headers): the signal masks of POSIX
#include <unistd.h>

#include <cerrno>
#include <ctime>
#include <tuple>

namespace {

namespace fs = std::filesystem;

constexpr int maxLinks = 40;  // in a chain, as in the kernel

// Blocks SIGXFSZ, which would otherwise end the program: writing beyond the user's file size limit then fails like
// writing to a full disk.
class SizeSignalBlock {
public:
    SizeSignalBlock();

    ~SizeSignalBlock();

    SizeSignalBlock(const SizeSignalBlock&) = delete;
    SizeSignalBlock& operator=(const SizeSignalBlock&) = delete;

private:
    sigset_t sizeSignal{};
    sigset_t former{};
};

SizeSignalBlock::SizeSignalBlock() {
    sigemptyset(&sizeSignal);
    sigaddset(&sizeSignal, SIGXFSZ);
    pthread_sigmask(SIG_BLOCK, &sizeSignal, &former);
}

SizeSignalBlock::~SizeSignalBlock() {
    const timespec atOnce{};
    while (sigismember(&former, SIGXFSZ) == 0 && sigtimedwait(&sizeSignal, nullptr, &atOnce) == SIGXFSZ) {
    }
    pthread_sigmask(SIG_SETMASK, &former, nullptr);
}

fs::path followLinks(const std::string& file) {
    fs::path target(file);
    std::error_code failure;
    for (int i = 0; i < maxLinks && fs::is_symlink(target, failure); ++i) {
        const fs::path next = fs::read_symlink(target, failure);
        target = target.parent_path() / next;
    }
    return target;
}

Descriptor openForWriting(const fs::path& file, const std::optional<struct stat>& status) {
    const bool isRegular = status && S_ISREG(status->st_mode);
    return Descriptor(isRegular ? open(file.c_str(), O_WRONLY | O_NONBLOCK | O_CLOEXEC) : -1);
}

// Reserves the blocks without changing the size, so that a file that is not written after all stays as it was. If the
// file system cannot reserve blocks, writing is attempted anyway.
bool hasRoom(const Descriptor& file, std::size_t size, off_t formerSize) {
    if (size == 0 || fallocate(file.get(), FALLOC_FL_KEEP_SIZE, 0, static_cast<off_t>(size)) == 0 ||
        (errno != ENOSPC && errno != EDQUOT && errno != EFBIG)) {
        return true;
    }
    std::ignore = ftruncate(file.get(), formerSize);  // frees the blocks reserved so far
    return false;
}

bool rewrite(const Descriptor& file, std::string_view text) {
    return lseek(file.get(), 0, SEEK_SET) == 0 && writeAll(file, text) &&
           ftruncate(file.get(), static_cast<off_t>(text.size())) == 0 && flush(file);
}

}  // namespace

SafeFile::SafeFile(const std::string& name, mode_t mode)
    : target(followLinks(name)), former(statusOf(target)), inPlace(openForWriting(target, former)) {
    std::error_code failure;
    if (!former && target.has_filename() && !fs::is_symlink(target, failure)) {  // a link here is part of a cycle
        beside.emplace(folderOf(target), mode);
    }
}

bool SafeFile::isOpen() const {
    return inPlace.isOpen() || (beside && beside->isOpen());
}

std::optional<std::string> SafeFile::formerContent() const {
    return former ? contentOfFile(target) : std::nullopt;
}

bool SafeFile::replace(std::string_view text) {
    if (!former) {
        return beside->write(text) && beside->renameTo(target);
    }
    if (former->st_nlink > 1) {
        return false;
    }
    TemporaryFile temporary(folderOf(target), privateFile);
    return temporary.isOpen() && temporary.copyMetadata(target, *former) && temporary.write(text) &&
           temporary.renameTo(target);
}

bool SafeFile::overwrite(std::string_view text) {
    const auto content = formerContent();
    const bool hasCopy = putCopy(target, text);
    if ((!content && !hasCopy) || !hasRoom(inPlace, text.size(), former->st_size)) {
        removeCopies(target);
        return false;
    }
    if (rewrite(inPlace, text)) {
        return true;
    }
    if (content && rewrite(inPlace, *content)) {
        removeCopies(target);
    }
    return false;
}

bool SafeFile::save(std::string_view text) {
    const SizeSignalBlock block;
    if (!isOpen()) {
        return false;
    }
    removeLeftovers(folderOf(target));
    const bool isSaved = replace(text) || (former && overwrite(text));
    if (isSaved) {
        removeCopies(target);
    }
    return isSaved;
}

bool saveFile(const std::string& file, std::string_view text) {
    return SafeFile(file).save(text);
}

std::optional<std::string> interruptedSaveOf(const std::string& file) {
    const fs::path target = followLinks(file);
    const auto copy = copyOf(target);
    const bool isOpenQuestion = copy && contentOfFile(*copy) != contentOfFile(target);
    return isOpenQuestion ? std::optional(copy->string()) : std::nullopt;
}

bool isThere(const std::string& file) {
    const auto status = statusOf(file);
    return status &&
           (!S_ISREG(status->st_mode) || Descriptor(open(file.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC)).isOpen());
}
