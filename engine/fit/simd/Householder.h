#pragma once

#include "fit/simd/FitKernels.h"

// Compiled for several instruction sets: nothing here may be an inline function that other sources share.

namespace velmorak::fitting {

namespace {

/// Partial sums, so that the rounding does not depend on the width of the vectors.
inline constexpr std::size_t parts = rowsPerUpdate;

inline double sumOf(const double (&sums)[parts]) {
    return ((sums[0] + sums[1]) + (sums[2] + sums[3])) + ((sums[4] + sums[5]) + (sums[6] + sums[7]));
}

inline double product(const double* a, const double* b, std::size_t count) {
    double sums[parts] = {};
    std::size_t i = 0;
    for (; i + parts <= count; i += parts) {
        for (std::size_t part = 0; part < parts; ++part) {
            sums[part] += a[i + part] * b[i + part];
        }
    }
    for (std::size_t part = 0; i < count; ++i, ++part) {
        sums[part] += a[i] * b[i];
    }
    return sumOf(sums);
}

/// product for counts that are a multiple of parts: the loop over a remainder would take longer than the rest.
inline double wholeProduct(const double* a, const double* b, std::size_t count) {
    double sums[parts] = {};
    for (std::size_t i = 0; i < count / parts * parts; i += parts) {
        for (std::size_t part = 0; part < parts; ++part) {
            sums[part] += a[i + part] * b[i + part];
        }
    }
    return sumOf(sums);
}

inline void householderUpdate(double* rFactor, std::size_t columns, double* rows, std::size_t stride,
                              std::size_t count) {
    const std::size_t whole = (count + parts - 1) / parts * parts;
    for (std::size_t k = 0; k < columns; ++k) {
        for (std::size_t i = count; i < whole; ++i) {
            rows[k * stride + i] = 0.0;
        }
    }
    for (std::size_t k = 0; k < columns; ++k) {
        const double* const __restrict axis = rows + k * stride;
        const double rest = wholeProduct(axis, axis, whole);
        if (rest == 0.0) {
            continue;
        }
        const double head = rFactor[k * columns + k];
        const double length = -__builtin_copysign(__builtin_sqrt(head * head + rest), head);
        const double scale = 1.0 / (head - length);
        const double part = (length - head) / length;
        rFactor[k * columns + k] = length;
        for (std::size_t j = k + 1; j < columns; ++j) {
            double* const __restrict other = rows + j * stride;
            double& top = rFactor[j * columns + k];
            const double along = part * (top + scale * wholeProduct(axis, other, whole));
            top -= along;
            const double below = along * scale;
            for (std::size_t i = 0; i < whole / parts * parts; ++i) {
                other[i] -= below * axis[i];
            }
        }
    }
}

}  // namespace

}  // namespace velmorak::fitting
