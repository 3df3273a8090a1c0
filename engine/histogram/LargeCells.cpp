#include "histogram/LargeCells.h"

#include <sys/mman.h>

#include <cstring>
#include <memory>
#include <new>

namespace velmorak {

void expectLarge(void* memory, std::size_t bytes) {
    constexpr std::size_t page = std::size_t{2} << 20U;
    constexpr std::size_t worthIt = 16 * page;
    // A hint: without huge pages the memory works as well.
    if (bytes >= worthIt && std::align(page, worthIt - page, memory, bytes)) {
        madvise(memory, bytes / page * page, MADV_HUGEPAGE);
    }
}

namespace {

/// Larger blocks come directly from the system, whose pages are zero and occupy memory only once they are written.
constexpr std::size_t largeBytes = std::size_t{1} << 20U;

}  // namespace

void* ZeroedMemory::allocate(std::size_t bytes, std::size_t alignment) {
    if (bytes < largeBytes) {
        return std::memset(::operator new (bytes, std::align_val_t{alignment}), 0, bytes);
    }
    void* const memory = mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (memory == MAP_FAILED) {
        throw std::bad_alloc();
    }
    return memory;
}

void ZeroedMemory::release(void* memory, std::size_t bytes, std::size_t alignment) noexcept {
    if (bytes < largeBytes) {
        ::operator delete (memory, std::align_val_t{alignment});
    } else {
        munmap(memory, bytes);
    }
}

}  // namespace velmorak
