#pragma once

namespace velmorak {

/// AVX2 and FMA, for which the narrower of the wide loops are compiled.
inline bool hasAvx2() {
    return __builtin_cpu_supports("avx2") != 0 && __builtin_cpu_supports("fma") != 0;
}

/// Beside these AVX-512 F, BW, DQ and VL, for which the widest are.
inline bool hasAvx512() {
    return hasAvx2() && __builtin_cpu_supports("avx512f") != 0 && __builtin_cpu_supports("avx512bw") != 0 &&
           __builtin_cpu_supports("avx512dq") != 0 && __builtin_cpu_supports("avx512vl") != 0;
}

}  // namespace velmorak
