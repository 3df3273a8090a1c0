#include "LargeCells.h"

#include <sys/mman.h>

#include <memory>

namespace velmorak {

void expectLarge(void* memory, std::size_t bytes) {
    constexpr std::size_t page = std::size_t{2} << 20U;
    constexpr std::size_t worthIt = 16 * page;
    // Where the system has no such pages, or none to give, nothing is lost.
    if (bytes >= worthIt && std::align(page, worthIt - page, memory, bytes) != nullptr) {
        madvise(memory, bytes / page * page, MADV_HUGEPAGE);
    }
}

}  // namespace velmorak
