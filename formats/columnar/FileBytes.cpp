#include "columnar/FileBytes.h"

#include <velmorak/Failure.h>
#include <velmorak/RegularFile.h>

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>

namespace velmorak::columnar {

FileBytes::FileBytes(const std::filesystem::path& path) : filePath(path) {
    requireRegular(path);
    descriptor = open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (descriptor < 0) {
        throw Failure(fmt::format("cannot open {}: {}", path.string(), std::generic_category().message(errno)));
    }
    struct stat status {};
    if (fstat(descriptor, &status) != 0) {
        close(descriptor);
        throw Failure("cannot read " + path.string());
    }
    fileSize = static_cast<std::uint64_t>(status.st_size);
}

FileBytes::~FileBytes() {
    close(descriptor);
}

Block FileBytes::read(std::uint64_t position, std::uint64_t count) const {
    if (position > fileSize || count > fileSize - position) {
        throw Failure(fmt::format("the file ends at byte {}, before {} bytes at byte {}", fileSize, count, position));
    }
    Block block(count);
    read(position, {block.data(), block.size()});
    return block;
}

void FileBytes::read(std::uint64_t position, std::span<std::uint8_t> target) const {
    while (!target.empty()) {
        const ssize_t count = pread(descriptor, target.data(), target.size(), static_cast<off_t>(position));
        if (count < 0 && errno == EINTR) {
            continue;
        }
        if (count <= 0) {
            throw Failure(fmt::format("cannot read at byte {}: {}", position,
                                      count < 0 ? std::generic_category().message(errno) : "the file ends there"));
        }
        target = target.subspan(static_cast<std::size_t>(count));
        position += static_cast<std::uint64_t>(count);
    }
}

}  // namespace velmorak::columnar
