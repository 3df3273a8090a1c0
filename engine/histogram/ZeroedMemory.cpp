#include <velmorak/ZeroedArray.h>

#include <sys/mman.h>

namespace velmorak {

namespace {

/// Larger blocks come directly from the system, whose pages are zero and occupy memory only once they are written.
constexpr std::size_t mappedBytes = std::size_t{1} << 20U;
/// Larger blocks are worth huge pages.
constexpr std::size_t hugeBytes = std::size_t{16} << 20U;

}  // namespace

void* ZeroedMemory::allocate(std::size_t bytes, std::size_t alignment) {
    if (bytes < mappedBytes) {
        return std::memset(::operator new (bytes, std::align_val_t{alignment}), 0, bytes);
    }
    void* const memory = mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (memory == MAP_FAILED) {
        throw std::bad_alloc();
    }
    if (bytes >= hugeBytes) {
        // A hint: without huge pages the memory works as well.
        madvise(memory, bytes, MADV_HUGEPAGE);
    }
    return memory;
}

void ZeroedMemory::release(void* memory, std::size_t bytes, std::size_t alignment) noexcept {
    if (bytes < mappedBytes) {
        ::operator delete (memory, std::align_val_t{alignment});
    } else {
        munmap(memory, bytes);
    }
}

}  // namespace velmorak
