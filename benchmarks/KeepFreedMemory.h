#pragma once

#include <malloc.h>

namespace velmorak::bench {

/// As velmorak-run begins: freed memory is kept for the next chunks. To be called first where a reader is measured.
inline void keepFreedMemory() {
    constexpr int maxBlock = 32 << 20;
    constexpr int keptBytes = 64 << 20;
    mallopt(M_MMAP_THRESHOLD, maxBlock);
    mallopt(M_TRIM_THRESHOLD, keptBytes);
}

}  // namespace velmorak::bench
