#pragma once

#include <cstddef>

// Part of loops that are compiled several times: nothing here may be an inline function that other sources share.

namespace velmorak::fitting {

namespace {

constexpr std::size_t parts = 8;

double sumOf(const double (&sums)[parts]) {
    return ((sums[0] + sums[1]) + (sums[2] + sums[3])) + ((sums[4] + sums[5]) + (sums[6] + sums[7]));
}

double product(const double* a, const double* b, std::size_t count) {
    double sums[parts] = {};
    std::size_t i = 0;
    for (; i + parts <= count; i += parts)
        for (std::size_t part = 0; part < parts; ++part)
            sums[part] += a[i + part] * b[i + part];
    for (std::size_t part = 0; i < count; ++i, ++part)
        sums[part] += a[i] * b[i];
    return sumOf(sums);
}

/// Without a rest, which would take longer than all before it.
double wholeProduct(const double* a, const double* b, std::size_t blocks) {
    double sums[parts] = {};
    for (std::size_t i = 0; i < blocks * parts; i += parts)
        for (std::size_t part = 0; part < parts; ++part)
            sums[part] += a[i + part] * b[i + part];
    return sumOf(sums);
}

void rotate(double* matrix, std::size_t rows, std::size_t columns, std::size_t stride) {
    for (std::size_t k = 0; k < columns; ++k) {
        double* const __restrict axis = matrix + k * stride + k;
        const std::size_t blocks = (rows - k - 1 + parts - 1) / parts;
        const double rest = wholeProduct(axis + 1, axis + 1, blocks);
        if (rest == 0.0)
            continue;
        const double head = axis[0];
        const double length = -__builtin_copysign(__builtin_sqrt(head * head + rest), head);
        const double scale = 1.0 / (head - length);
        for (std::size_t i = 1; i <= blocks * parts; ++i)
            axis[i] *= scale;
        axis[0] = length;
        const double part = (length - head) / length;
        for (std::size_t j = k + 1; j < columns; ++j) {
            double* const __restrict other = matrix + j * stride + k;
            const double along = part * (other[0] + wholeProduct(axis + 1, other + 1, blocks));
            other[0] -= along;
            for (std::size_t i = 1; i <= blocks * parts; ++i)
                other[i] -= along * axis[i];
        }
    }
}

}  // namespace

}  // namespace velmorak::fitting
