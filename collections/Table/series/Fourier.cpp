#include "Table/series/Fourier.h"

#include <velmorak/ElementaryFunctions.h>
#include <velmorak/Failure.h>

#include <bit>
#include <cstddef>
#include <numbers>
#include <utility>

namespace velmorak {

namespace {

ComplexNumber operator*(const ComplexNumber& one, const ComplexNumber& other) {
    return {one.re * other.re - one.im * other.im, one.re * other.im + one.im * other.re};
}
ComplexNumber operator+(const ComplexNumber& one, const ComplexNumber& other) {
    return {one.re + other.re, one.im + other.im};
}
ComplexNumber operator-(const ComplexNumber& one, const ComplexNumber& other) {
    return {one.re - other.re, one.im - other.im};
}

void pollStop(const RunContext& context) {
    if (context.isStopping()) {
        throw Stopped();
    }
}

/// Puts each value where the bits of its number in reverse order say.
void reverseBits(std::vector<ComplexNumber>& values) {
    for (std::size_t i = 1, reversed = 0; i < values.size(); ++i) {
        std::size_t bit = values.size() >> 1U;
        for (; (reversed & bit) != 0; bit >>= 1U) {
            reversed ^= bit;
        }
        reversed ^= bit;
        if (i < reversed) {
            std::swap(values[i], values[reversed]);
        }
    }
}

/// Transforms as many values as a power of two.
class PowerOfTwo {
public:
    PowerOfTwo(std::size_t size, const RunContext& context);

    void transform(std::vector<ComplexNumber>& values) const;

private:
    void join(std::vector<ComplexNumber>& values, std::size_t half) const;

    std::vector<ComplexNumber> roots;  ///< The first half of them.
    const RunContext& context;
};

PowerOfTwo::PowerOfTwo(std::size_t size, const RunContext& context) : context(context) {
    roots.reserve(size / 2);
    for (std::size_t k = 0; k < size / 2; ++k) {
        roots.push_back(rootOfUnity(k, size));
    }
}

void PowerOfTwo::transform(std::vector<ComplexNumber>& values) const {
    reverseBits(values);
    for (std::size_t half = 1; half < values.size(); half *= 2) {
        pollStop(context);
        join(values, half);
    }
}

/// Makes transforms of twice the length from pairs of transforms.
void PowerOfTwo::join(std::vector<ComplexNumber>& values, std::size_t half) const {
    const std::size_t stride = roots.size() / half;
    for (std::size_t begin = 0; begin < values.size(); begin += 2 * half) {
        for (std::size_t k = 0; k < half; ++k) {
            const ComplexNumber even = values[begin + k];
            const ComplexNumber odd = values[begin + half + k] * roots[k * stride];
            values[begin + k] = even + odd;
            values[begin + half + k] = even - odd;
        }
    }
}

/// A product j k of two numbers is (j² + k² - (k - j)²) / 2, so that the transform is a convolution with a chirp.
std::vector<ComplexNumber> byConvolution(const std::vector<ComplexNumber>& values, const RunContext& context) {
    const std::size_t count = values.size();
    const std::size_t size = std::bit_ceil(2 * count - 1);
    const PowerOfTwo whole(size, context);
    std::vector<ComplexNumber> chirp;
    chirp.reserve(count);
    for (std::uint64_t j = 0; j < count; ++j) {
        chirp.push_back(rootOfUnity(j * j % (2 * count), 2 * count));
    }
    std::vector<ComplexNumber> made(size);
    std::vector<ComplexNumber> kernel(size);
    for (std::size_t j = 0; j < count; ++j) {
        made[j] = values[j] * chirp[j];
        kernel[j] = chirp[j].conjugate();
        kernel[(size - j) % size] = kernel[j];
    }
    whole.transform(made);
    whole.transform(kernel);
    for (std::size_t k = 0; k < size; ++k) {
        made[k] = (made[k] * kernel[k]).conjugate();  // The inverse is the conjugate of the transform of conjugates.
    }
    whole.transform(made);
    made.resize(count);
    for (std::size_t k = 0; k < count; ++k) {
        const ComplexNumber sum = made[k].conjugate() * chirp[k];
        made[k] = {sum.re / static_cast<double>(size), sum.im / static_cast<double>(size)};
    }
    return made;
}

}  // namespace

/// The angle is reduced to an eighth of the circle in whole numbers.
ComplexNumber rootOfUnity(std::uint64_t k, std::uint64_t n) {
    std::uint64_t quarters = 4 * k;  // Of the angle in units of 2 pi / 4 n.
    const bool isBelow = quarters <= 2 * n;
    quarters = isBelow ? quarters : 4 * n - quarters;
    const bool isLeft = quarters > n;
    quarters = isLeft ? 2 * n - quarters : quarters;
    const bool isSteep = 2 * quarters > n;
    quarters = isSteep ? n - quarters : quarters;
    const double angle = 0.5 * std::numbers::pi * static_cast<double>(quarters) / static_cast<double>(n);
    double cosine = elementary::cos(angle);
    double sine = elementary::sin(angle);
    if (isSteep) {
        std::swap(cosine, sine);
    }
    return {isLeft ? -cosine : cosine, isBelow ? -sine : sine};
}

std::vector<ComplexNumber> fourierTransform(std::vector<ComplexNumber> values, const RunContext& context) {
    if (values.size() < 2) {
        return values;
    }
    if (!std::has_single_bit(values.size())) {
        return byConvolution(values, context);
    }
    PowerOfTwo(values.size(), context).transform(values);
    return values;
}

}  // namespace velmorak
