#include "FitRotation.h"

#include <cmath>

namespace velmorak::fitting {

double product(const double* a, const double* b, std::size_t count) {
    constexpr std::size_t parts = 8;
    double sums[parts] = {};
    std::size_t i = 0;
    for (; i + parts <= count; i += parts)
        for (std::size_t part = 0; part < parts; ++part)
            sums[part] += a[i + part] * b[i + part];
    for (std::size_t part = 0; i < count; ++i, ++part)
        sums[part] += a[i] * b[i];
    return ((sums[0] + sums[1]) + (sums[2] + sums[3])) + ((sums[4] + sums[5]) + (sums[6] + sums[7]));
}

void rotate(double* matrix, std::size_t rows, std::size_t columns, std::size_t stride) {
    for (std::size_t k = 0; k < columns; ++k) {
        double* const __restrict axis = matrix + k * stride + k;
        const std::size_t below = rows - k - 1;
        const double rest = product(axis + 1, axis + 1, below);
        if (rest == 0.0)
            continue;
        const double head = axis[0];
        const double length = -std::copysign(std::sqrt(head * head + rest), head);
        const double scale = 1.0 / (head - length);
        for (std::size_t i = 1; i <= below; ++i)
            axis[i] *= scale;
        axis[0] = length;
        const double part = (length - head) / length;
        for (std::size_t j = k + 1; j < columns; ++j) {
            double* const __restrict other = matrix + j * stride + k;
            const double along = part * (other[0] + product(axis + 1, other + 1, below));
            other[0] -= along;
            for (std::size_t i = 1; i <= below; ++i)
                other[i] -= along * axis[i];
        }
    }
}

}  // namespace velmorak::fitting
