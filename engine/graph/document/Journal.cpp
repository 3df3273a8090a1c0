#include "graph/document/Journal.h"

#include "graph/document/Document.h"
#include "store/AtomicFile.h"

#include <fcntl.h>
#include <fmt/chrono.h>
#include <fmt/format.h>
#include <sys/file.h>
#include <unistd.h>

#include <algorithm>
#include <ctime>
#include <system_error>
#include <utility>

namespace velmorak {
namespace {

namespace fs = std::filesystem;

constexpr mode_t privateFile = 0600;
constexpr const char* originExtension = ".origin";

fs::path originOf(fs::path file) {
    return file.replace_extension(originExtension);
}

/// @return false if the file is large, cannot be read, or has another content.
bool hasContent(const fs::path& path, const std::string& text) {
    try {
        std::error_code failure;
        if (!fs::is_regular_file(path, failure) || fs::file_size(path, failure) != text.size() || failure) {
            return false;
        }
        const FileDescriptor descriptor(path, O_RDONLY | O_NONBLOCK);
        return descriptor.isOpen() && descriptor.readAll() == text;
    } catch (const std::exception&) {
        return false;
    }
}

/// Names begin with the time, so that they sort by age.
std::string stemOf(const Journal* journal) {
    return fmt::format("{:%Y%m%dT%H%M%SZ}-{}-{:x}", fmt::gmtime(std::time(nullptr)), getpid(),
                       reinterpret_cast<std::uintptr_t>(journal));
}

/// @return whether no running program has the journal with this origin.
bool isLeft(const fs::path& origin) {
    const FileDescriptor descriptor(origin, O_RDONLY | O_NONBLOCK);
    return descriptor.isOpen() && flock(descriptor.get(), LOCK_SH | LOCK_NB) == 0;
}

}  // namespace

Journal::Journal(fs::path folder, std::function<UnsavedDocument()> document, std::chrono::milliseconds delay)
    : folder(std::move(folder)), document(std::move(document)), delay(delay) {}

Journal::~Journal() {
    {
        const MutexLock lock(waiting);
        isClosing = true;
        wake.notifyAll();
    }
    if (watcher.joinable()) {
        watcher.join();
    }
    const MutexLock lock(writing);
    removeFiles();
}

void Journal::noteChange() {
    if (folder.empty()) {
        return;
    }
    const MutexLock lock(waiting);
    isChanged = true;
    if (watcher.joinable()) {
        wake.notifyAll();
    } else {
        watcher = std::thread([this] { watch(); });
    }
}

void Journal::update() {
    if (folder.empty()) {
        return;
    }
    const MutexLock lock(writing);
    try {
        const UnsavedDocument unsaved = document();
        if (unsaved.isEmpty || (!unsaved.path.empty() && hasContent(unsaved.path, unsaved.text))) {
            removeFiles();
        } else {
            write(unsaved);
        }
    } catch (const std::exception&) {
        // The next change tries again.
        writtenText.clear();
    }
}

void Journal::watch() {
    while (true) {
        {
            const MutexLock lock(waiting);
            while (!isChanged && !isClosing) {
                wake.wait(waiting);
            }
            const auto end = std::chrono::steady_clock::now() + delay;
            while (!isClosing && std::chrono::steady_clock::now() < end) {
                wake.waitFor(waiting, end - std::chrono::steady_clock::now());
            }
            if (isClosing) {
                return;
            }
            isChanged = false;
        }
        update();
    }
}

/// The origin comes first: a text never exists without it.
void Journal::write(const UnsavedDocument& unsaved) {
    if (unsaved.text == writtenText && unsaved.path == writtenPath) {
        return;
    }
    if (file.empty()) {
        fs::create_directories(folder);
        fs::permissions(folder, fs::perms::owner_all);
        file = folder / (stemOf(this) + std::string(documentExtension));
    }
    if (!origin.isOpen() && !openOrigin()) {
        return;
    }
    if (unsaved.path != writtenPath) {
        if (ftruncate(origin.get(), 0) != 0 || lseek(origin.get(), 0, SEEK_SET) != 0) {
            throw std::system_error(errno, std::generic_category());
        }
        origin.writeAll(unsaved.path);
        writtenPath = unsaved.path;
    }
    AtomicFile target(file, ".new-", privateFile);
    target.write(unsaved.text);
    target.commit();
    writtenText = unsaved.text;
}

bool Journal::openOrigin() {
    FileDescriptor opened(originOf(file), O_RDWR | O_CREAT | O_EXCL, privateFile);
    if (!opened.isOpen() || flock(opened.get(), LOCK_EX | LOCK_NB) != 0) {
        return false;
    }
    writtenPath.clear();
    origin = std::move(opened);
    return true;
}

void Journal::removeFiles() {
    if (file.empty()) {
        return;
    }
    std::error_code ignored;
    fs::remove(file, ignored);
    fs::remove(originOf(file), ignored);
    origin = FileDescriptor();
    writtenText.clear();
    writtenPath.clear();
    file.clear();
}

std::size_t leftJournals(const fs::path& folder) {
    std::error_code failure;
    std::size_t count = 0;
    for (fs::directory_iterator entry(folder, failure); !failure && entry != fs::directory_iterator();
         entry.increment(failure)) {
        const fs::path& path = entry->path();
        if (path.extension() == documentExtension && !path.filename().string().starts_with('.')) {
            count += isLeft(originOf(path)) ? 1U : 0U;
        }
    }
    return count;
}

}  // namespace velmorak
