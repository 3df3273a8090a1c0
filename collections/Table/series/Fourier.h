#pragma once

#include <velmorak/Run.h>

#include <cstdint>
#include <vector>

/// Discrete Fourier transforms of any length with the same bits on every processor. The transforms of Eigen, like those
/// of its back ends, take their roots of unity from the C library, whose sine and cosine differ between processors.
namespace velmorak {

/// std::complex multiplies by a function of the compiler's that looks for NaN.
struct ComplexNumber {
    double re = 0.0;
    double im = 0.0;

    ComplexNumber conjugate() const { return {re, -im}; }
    double squared() const { return re * re + im * im; }
};

/// @param k below n.
/// @return exp(-2 pi i k / n), to the last bits.
ComplexNumber rootOfUnity(std::uint64_t k, std::uint64_t n);

/// @return for each k the sum over j of values[j] exp(-2 pi i j k / n), where n is the number of values. Where that is
/// a
///         power of two, by J. W. Cooley and J. W. Tukey, Math. Comp. 19 (1965) 297; else by the convolution of
///         L. I. Bluestein, IEEE Trans. Audio Electroacoust. 18 (1970) 451.
/// @throws Stopped.
std::vector<ComplexNumber> fourierTransform(std::vector<ComplexNumber> values, const RunContext& context);

}  // namespace velmorak
