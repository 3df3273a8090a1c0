#include "histogram/LargeCells.h"

#include <sys/mman.h>

#include <cstring>
#include <memory>
#include <new>

namespace velmorak {

void expectLarge(void* memory, std::size_t bytes) {
    constexpr std::size_t page = std::size_t{2} << 20U;
    constexpr std::size_t worthIt = 16 * page;
    // Where the system has no such pages, or none to give, nothing is lost.
    if (bytes >= worthIt && std::align(page, worthIt - page, memory, bytes)) {
        madvise(memory, bytes / page * page, MADV_HUGEPAGE);
    }
}

namespace {

/// From here on the system is asked directly. Its pages are blank, and are not there until they are written.
constexpr std::size_t largeBytes = std::size_t{1} << 20U;

}  // namespace

void* BlankMemory::take(std::size_t bytes, std::size_t alignment) {
    if (bytes < largeBytes) {
        return std::memset(::operator new (bytes, std::align_val_t{alignment}), 0, bytes);
    }
    void* const memory = mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (memory == MAP_FAILED) {
        throw std::bad_alloc();
    }
    return memory;
}

void BlankMemory::giveBack(void* memory, std::size_t bytes, std::size_t alignment) noexcept {
    if (bytes < largeBytes) {
        ::operator delete (memory, std::align_val_t{alignment});
    } else {
        munmap(memory, bytes);
    }
}

}  // namespace velmorak
