#include "store/AtomicFile.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <system_error>
#include <utility>

namespace velmorak {

AtomicFile::AtomicFile(std::filesystem::path file, std::string temporaryPrefix, mode_t mode)
    : file(std::move(file)), temporaryPrefix(std::move(temporaryPrefix)), mode(mode) {
    chooseTemporaryPath();
}

AtomicFile::~AtomicFile() {
    if (!isCommitted) {
        std::error_code ignored;
        std::filesystem::remove(temporaryPath, ignored);
    }
}

/// The address tells this file from others of the program, also from one that a run left behind.
void AtomicFile::chooseTemporaryPath() {
    temporaryPath =
        file.parent_path() / fmt::format("{}{}-{:x}-{}{}", temporaryPrefix, getpid(),
                                         reinterpret_cast<std::uintptr_t>(this), attempt, file.extension().string());
}

void AtomicFile::create() {
    descriptor = FileDescriptor(temporaryPath, O_WRONLY | O_CREAT | O_EXCL, mode);
    while (!descriptor.isOpen() && errno == EEXIST) {  // Of a killed program, or of one on another machine.
        ++attempt;
        chooseTemporaryPath();
        descriptor = FileDescriptor(temporaryPath, O_WRONLY | O_CREAT | O_EXCL, mode);
    }
    if (!descriptor.isOpen()) {
        throw std::system_error(errno, std::generic_category());
    }
}

void AtomicFile::write(std::string_view bytes) {
    if (!descriptor.isOpen()) {
        create();
    }
    descriptor.writeAll(bytes);
}

void AtomicFile::writeAt(off_t offset, std::string_view bytes) {
    descriptor.writeAllAt(offset, bytes);
}

void AtomicFile::commit() {
    if (!descriptor.isOpen()) {
        descriptor = FileDescriptor(temporaryPath, O_RDONLY);
    }
    if (!descriptor.isOpen()) {
        throw std::system_error(errno, std::generic_category());
    }
    descriptor.sync();
    commitUnsynced();
    const FileDescriptor folder(file.has_parent_path() ? file.parent_path() : ".", O_RDONLY | O_DIRECTORY);
    if (folder.isOpen()) {
        fsync(folder.get());  // Not every file system can; the rename is done in any case.
    }
}

void AtomicFile::commitUnsynced() {
    descriptor.close();
    if (std::rename(temporaryPath.c_str(), file.c_str()) != 0) {
        throw std::system_error(errno, std::generic_category());
    }
    isCommitted = true;
}

}  // namespace velmorak
