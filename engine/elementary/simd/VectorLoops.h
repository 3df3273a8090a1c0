#pragma once

#include "elementary/Loops.h"
#include "elementary/simd/Exp.h"
#include "elementary/simd/Extremes.h"
#include "elementary/simd/Hypot.h"
#include "elementary/simd/InverseHyperbolic.h"
#include "elementary/simd/Log.h"
#include "elementary/simd/Pow.h"

#include <velmorak/ElementaryFunctions.h>

#include <immintrin.h>

// Compiled for several instruction sets. Nothing here may be an inline function that other sources share: the linker
// might keep this copy for all of them, also on a processor without these instructions.

namespace velmorak::elementary {

namespace {

template <typename Vector>
inline constexpr std::size_t widthOf = sizeof(Vector) / sizeof(double);

/// Loads count values. A remainder is padded, so that it takes the same instructions as the others.
template <typename Vector>
[[gnu::always_inline]] inline Vector load(const double* values, std::size_t count) {
    Vector vector;
    if (count >= widthOf<Vector>) {
        __builtin_memcpy(&vector, values, sizeof vector);
        return vector;
    }
    double padded[widthOf<Vector>];
    for (std::size_t i = 0; i < widthOf<Vector>; ++i) {
        padded[i] = i < count ? values[i] : 1.0;
    }
    __builtin_memcpy(&vector, padded, sizeof vector);
    return vector;
}

template <typename Vector>
[[gnu::always_inline]] inline void store(double* out, Vector values, std::size_t count) {
    __builtin_memcpy(out, &values, count >= widthOf<Vector> ? sizeof values : count * sizeof(double));
}

template <typename Vector, auto function>
void ofOne(const double* x, std::size_t count, double* out) {
    for (std::size_t i = 0; i < count; i += widthOf<Vector>) {
        store<Vector>(out + i, function(load<Vector>(x + i, count - i)), count - i);
    }
}

template <typename Vector, auto function>
void ofTwo(const double* x, const double* y, std::size_t count, double* out) {
    for (std::size_t i = 0; i < count; i += widthOf<Vector>) {
        store<Vector>(out + i, function(load<Vector>(x + i, count - i), load<Vector>(y + i, count - i)), count - i);
    }
}

/// Takes the scalar function for the arguments at which the vector function is inaccurate.
template <typename Vector, auto function, bool (*isExtreme)(double), double (*scalar)(double)>
void corrected(const double* x, std::size_t count, double* out) {
    ofOne<Vector, function>(x, count, out);
    for (std::size_t i = 0; i < count; ++i) {
        if (isExtreme(x[i])) {
            out[i] = scalar(x[i]);
        }
    }
}

template <double (*function)(double)>
void inlined(const double* __restrict x, std::size_t count, double* __restrict out) {
    for (std::size_t i = 0; i < count; ++i) {
        out[i] = function(x[i]);
    }
}

/// So few that one unusual argument costs little, and so many that the loops are worth it.
inline constexpr std::size_t blockSize = 256;

/// Inlines the function for the usual arguments and marks the others by NaN, where the other function decides.
template <Usual (*usual)(double), double (*other)(double)>
void mostlyInlined(const double* __restrict x, std::size_t count, double* __restrict out) {
    for (std::size_t first = 0; first < count; first += blockSize) {
        const std::size_t end = count - first < blockSize ? count : first + blockSize;
        std::uint64_t unusual = 0;
        for (std::size_t i = first; i < end; ++i) {
            const Usual result = usual(x[i]);
            out[i] = numberOf(bitsOf(result.value) | result.unusual);
            unusual |= result.unusual;
        }
        for (std::size_t i = first; unusual != 0 && i < end; ++i) {
            out[i] = out[i] != out[i] ? other(x[i]) : out[i];
        }
    }
}

template <Usual (*usual)(double, double), double (*other)(double, double)>
void mostlyInlinedOfTwo(const double* __restrict x, const double* __restrict y, std::size_t count,
                        double* __restrict out) {
    for (std::size_t first = 0; first < count; first += blockSize) {
        const std::size_t end = count - first < blockSize ? count : first + blockSize;
        std::uint64_t unusual = 0;
        for (std::size_t i = first; i < end; ++i) {
            const Usual result = usual(x[i], y[i]);
            out[i] = numberOf(bitsOf(result.value) | result.unusual);
            unusual |= result.unusual;
        }
        for (std::size_t i = first; unusual != 0 && i < end; ++i) {
            out[i] = out[i] != out[i] ? other(x[i], y[i]) : out[i];
        }
    }
}

}  // namespace

}  // namespace velmorak::elementary
