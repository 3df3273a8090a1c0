#pragma once

namespace velmorak {

/// Whether kernels for AVX2 and FMA may run: the processor has both, and the environment variable VELMORAK_VECTORS is
/// not "none".
bool hasAvx2();

/// Whether kernels for AVX-512 F, BW, DQ and VL may run: hasAvx2(), the processor has them, and VELMORAK_VECTORS is not
/// "avx2".
bool hasAvx512();

}  // namespace velmorak
