#include "isolate/Area.h"

#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <bit>
#include <cerrno>
#include <system_error>
#include <utility>

namespace velmorak::isolation {
namespace {

constexpr std::size_t firstBytes = std::size_t{1} << 16U;

[[noreturn]] void failBySystem() {
    throw std::system_error(errno, std::generic_category());
}

}  // namespace

FileDescriptor newMemory() {
    FileDescriptor memory = FileDescriptor::of(memfd_create("velmorak", MFD_CLOEXEC));
    if (!memory.isOpen()) {
        failBySystem();
    }
    return memory;
}

Area::Area(FileDescriptor memory) : memory(std::move(memory)) {
    struct stat status {};
    if (fstat(this->memory.get(), &status) != 0) {
        failBySystem();
    }
    if (status.st_size == 0) {
        grow(firstBytes);
    } else {
        follow(static_cast<std::size_t>(status.st_size));
    }
}

Area::Area(Area&& other) noexcept
    : memory(std::move(other.memory)),
      bytes(std::exchange(other.bytes, nullptr)),
      length(std::exchange(other.length, 0)) {}

Area::~Area() {
    if (bytes) {
        munmap(bytes, length);
    }
}

void Area::grow(std::size_t atLeast) {
    if (atLeast > length) {
        const std::size_t newLength = std::bit_ceil(std::max(atLeast, firstBytes));
        if (ftruncate(memory.get(), static_cast<off_t>(newLength)) != 0) {
            failBySystem();
        }
        follow(newLength);
    }
}

void Area::follow(std::size_t newLength) {
    if (newLength <= length) {
        return;
    }
    void* const mapped = bytes ? mremap(bytes, length, newLength, MREMAP_MAYMOVE)
                               : mmap(nullptr, newLength, PROT_READ | PROT_WRITE, MAP_SHARED, memory.get(), 0);
    if (mapped == MAP_FAILED) {
        failBySystem();
    }
    bytes = static_cast<char*>(mapped);
    length = newLength;
}

}  // namespace velmorak::isolation
