#include "table/CpuFeatures.h"

#include <algorithm>
#include <cstdlib>
#include <string_view>

namespace velmorak {

namespace {

enum class Vectors { None, Avx2, Avx512 };

Vectors vectorsOfProcessor() {
    if (!static_cast<bool>(__builtin_cpu_supports("avx2")) || !static_cast<bool>(__builtin_cpu_supports("fma"))) {
        return Vectors::None;
    }
    const bool isWide =
        static_cast<bool>(__builtin_cpu_supports("avx512f")) && static_cast<bool>(__builtin_cpu_supports("avx512bw")) &&
        static_cast<bool>(__builtin_cpu_supports("avx512dq")) && static_cast<bool>(__builtin_cpu_supports("avx512vl"));
    return isWide ? Vectors::Avx512 : Vectors::Avx2;
}

Vectors allowedVectors() {
    const char* const setting = std::getenv("VELMORAK_VECTORS");
    const std::string_view limit = setting ? setting : "";
    return limit == "none" ? Vectors::None : limit == "avx2" ? Vectors::Avx2 : Vectors::Avx512;
}

/// Read once: kernels must not change during a run.
Vectors usableVectors() {
    static const Vectors usable = std::min(vectorsOfProcessor(), allowedVectors());
    return usable;
}

}  // namespace

bool hasAvx2() {
    return usableVectors() >= Vectors::Avx2;
}

bool hasAvx512() {
    return usableVectors() >= Vectors::Avx512;
}

}  // namespace velmorak
