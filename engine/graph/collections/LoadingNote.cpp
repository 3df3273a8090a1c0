#include "graph/collections/LoadingNote.h"

#include "store/FileHashes.h"
#include "store/Sha256.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <optional>
#include <system_error>

namespace velmorak {
namespace {

namespace fs = std::filesystem;

/// Identifies the file on disk: another one of the same name may be loaded.
std::string textFor(const fs::path& object) {
    std::string text = object.string() + '\n';
    if (const std::optional<FileStamp> stamp = stampOf(object)) {
        for (const std::int64_t number : {static_cast<std::int64_t>(stamp->inode), stamp->size, stamp->modifiedNs}) {
            text += std::to_string(number) + '\n';
        }
    }
    return text;
}

std::string nameFor(const fs::path& object) {
    constexpr std::size_t enoughDigits = 16;
    Sha256 digester;
    digester.addText(object.string());
    return object.stem().string() + '-' + hexOf(digester.finish()).substr(0, enoughDigits);
}

std::string contentOf(int descriptor) {
    std::array<char, 8192> bytes{};
    const ssize_t count = pread(descriptor, bytes.data(), bytes.size(), 0);
    return {bytes.data(), static_cast<std::size_t>(count < 0 ? 0 : count)};
}

bool isRemoved(int descriptor) {
    struct stat status {};
    return fstat(descriptor, &status) == 0 && status.st_nlink == 0;
}

/// @return the open file, which exists, with the right to change it; -1 if it cannot be opened, or another program that
///         is loading the object right now has this right.
int openLocked(const fs::path& path) {
    for (;;) {
        const int descriptor = open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, S_IRUSR | S_IWUSR);
        if (descriptor < 0) {
            return -1;
        }
        const bool isLocked = flock(descriptor, LOCK_EX | LOCK_NB) == 0;
        // Another program may have loaded the object and removed its note after this one was opened.
        if (isLocked && !isRemoved(descriptor)) {
            return descriptor;
        }
        close(descriptor);
        if (!isLocked) {
            return -1;
        }
    }
}

}  // namespace

LoadingNote::LoadingNote(const fs::path& folder, const fs::path& object) {
    std::error_code error;
    fs::create_directories(folder, error);
    if (folder.empty() || error) {
        return;
    }
    path = folder / nameFor(object);
    descriptor = openLocked(path);
    if (descriptor < 0) {
        return;
    }
    const std::string text = textFor(object);
    isLeftBehind = contentOf(descriptor) == text;
    if (!isLeftBehind) {
        write(text);
    }
}

LoadingNote::~LoadingNote() {
    if (descriptor < 0) {
        return;
    }
    if (!isLeftBehind) {
        unlink(path.c_str());
    }
    close(descriptor);
}

void LoadingNote::write(const std::string& text) const {
    // An incomplete note has no effect.
    if (ftruncate(descriptor, 0) == 0) {
        [[maybe_unused]] const ssize_t written = pwrite(descriptor, text.data(), text.size(), 0);
    }
}

}  // namespace velmorak
