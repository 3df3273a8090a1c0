#include "aida/containers/VectorState.h"

#include <immintrin.h>

namespace velmorak::io {

namespace {

[[gnu::target("avx")]] void zeroUpperParts() {
    _mm256_zeroupper();
}

}  // namespace

void clearVectorState() {
    if (__builtin_cpu_supports("avx")) {
        zeroUpperParts();
    }
}

}  // namespace velmorak::io
