#include "store/FileDescriptor.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>
#include <utility>

namespace velmorak {
namespace {

[[noreturn]] void throwError(int reason) {
    throw std::system_error(reason, std::generic_category());
}

/// @param count result of a system call. @return it, or 0 when a signal interrupted the call.
std::size_t checked(ssize_t count) {
    if (count < 0 && errno != EINTR) {
        throwError(errno);
    }
    return count < 0 ? 0 : static_cast<std::size_t>(count);
}

}  // namespace

FileDescriptor::FileDescriptor(const std::filesystem::path& file, int flags, mode_t mode)
    : number(open(file.c_str(), flags | O_CLOEXEC, mode)) {}

FileDescriptor FileDescriptor::of(int opened) {
    FileDescriptor descriptor;
    descriptor.number = opened;
    return descriptor;
}

FileDescriptor::FileDescriptor(FileDescriptor&& other) noexcept : number(std::exchange(other.number, -1)) {}

FileDescriptor& FileDescriptor::operator=(FileDescriptor&& other) noexcept {
    std::swap(number, other.number);
    return *this;
}

FileDescriptor::~FileDescriptor() {
    if (isOpen()) {
        ::close(number);
    }
}

std::string FileDescriptor::readAll() const {
    struct stat status {};
    if (fstat(number, &status) != 0) {
        throwError(errno);
    }
    if (!S_ISREG(status.st_mode)) {
        throwError(EINVAL);
    }
    std::string bytes(static_cast<std::size_t>(status.st_size), '\0');
    for (std::size_t done = 0; done < bytes.size();) {
        const ssize_t count = ::read(number, bytes.data() + done, bytes.size() - done);
        if (count == 0) {
            bytes.resize(done);  // Truncated meanwhile.
        }
        done += checked(count);
    }
    return bytes;
}

void FileDescriptor::writeAll(std::string_view bytes) const {
    while (!bytes.empty()) {
        bytes.remove_prefix(checked(::write(number, bytes.data(), bytes.size())));
    }
}

void FileDescriptor::writeAllAt(off_t offset, std::string_view bytes) const {
    while (!bytes.empty()) {
        const std::size_t count = checked(pwrite(number, bytes.data(), bytes.size(), offset));
        bytes.remove_prefix(count);
        offset += static_cast<off_t>(count);
    }
}

void FileDescriptor::sync() const {
    if (fsync(number) != 0) {
        throwError(errno);
    }
}

void FileDescriptor::close() {
    if (isOpen() && ::close(std::exchange(number, -1)) != 0) {
        throwError(errno);
    }
}

}  // namespace velmorak
