#include "binary/PlainFile.h"

#include <velmorak/Failure.h>
#include <velmorak/RegularFile.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <string>
#include <system_error>

namespace velmorak {
namespace {

std::string systemError() {
    return std::generic_category().message(errno);
}

int opened(const std::filesystem::path& path) {
    requireRegular(path);
    const int descriptor = open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (descriptor < 0) {
        throw Failure(path.string() + " cannot be opened: " + systemError());
    }
    return descriptor;
}

}  // namespace

PlainFile::PlainFile(const std::filesystem::path& path) : name(path), descriptor(opened(path)) {
    struct stat status {};
    if (fstat(descriptor, &status) != 0) {
        const std::string reason = systemError();
        close(descriptor);
        throw Failure(path.string() + " cannot be read: " + reason);
    }
    bytes = static_cast<std::uint64_t>(status.st_size);
}

PlainFile::~PlainFile() {
    close(descriptor);
}

void PlainFile::read(std::uint64_t position, std::size_t count, char* target) const {
    while (count > 0) {
        const ssize_t done = pread(descriptor, target, count, static_cast<off_t>(position));
        if (done < 0 && errno == EINTR) {
            continue;
        }
        if (done < 0) {
            throw Failure(name.string() + " cannot be read: " + systemError());
        }
        if (done == 0) {
            throw Failure(name.string() + " ends at byte " + std::to_string(position) + ", before the data that it " +
                          "announces; it was cut off, or is still being written");
        }
        position += static_cast<std::uint64_t>(done);
        target += done;
        count -= static_cast<std::size_t>(done);
    }
}

}  // namespace velmorak
