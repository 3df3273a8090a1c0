#pragma once

#include "elementary/Loops.h"
#include "fit/simd/FitKernels.h"

// Compiled for several instruction sets: nothing here may be an inline function that other sources share.

namespace velmorak::fitting {

namespace {

template <auto rule>
bool ofOne(const double* __restrict a, std::size_t count, double* __restrict out) {
    for (std::size_t i = 0; i < count; ++i) {
        out[i] = rule(a[i]);
    }
    return true;
}

template <auto rule>
bool ofTwo(const double* const in[3], std::size_t count, double* __restrict out) {
    const double* const __restrict a = in[0];
    const double* const __restrict b = in[1];
    for (std::size_t i = 0; i < count; ++i) {
        out[i] = rule(a[i], b[i]);
    }
    return true;
}

inline bool choose(const double* const in[3], std::size_t count, double* __restrict out) {
    const double* const __restrict a = in[0];
    const double* const __restrict b = in[1];
    const double* const __restrict c = in[2];
    for (std::size_t i = 0; i < count; ++i) {
        const double ifTrue = b[i];
        const double ifFalse = c[i];
        out[i] = a[i] != 0.0 ? ifTrue : ifFalse;
    }
    return true;
}

/// NaN if either argument is NaN.
inline double lesser(double x, double y) {
    return y < x || y != y ? y : x;
}

inline double greater(double x, double y) {
    return x < y || y != y ? y : x;
}

inline bool forwardTest(Op op, const double* const in[3], std::size_t count, double* out) {
    switch (op) {
        case Op::Less:
            return ofTwo<[](double a, double b) { return a < b ? 1.0 : 0.0; }>(in, count, out);
        case Op::LessOrEqual:
            return ofTwo<[](double a, double b) { return a <= b ? 1.0 : 0.0; }>(in, count, out);
        case Op::Equal:
            return ofTwo<[](double a, double b) { return a == b ? 1.0 : 0.0; }>(in, count, out);
        case Op::Unequal:
            return ofTwo<[](double a, double b) { return a != b ? 1.0 : 0.0; }>(in, count, out);
        case Op::And:
            return ofTwo<[](double a, double b) { return a != 0.0 && b != 0.0 ? 1.0 : 0.0; }>(in, count, out);
        case Op::Or:
            return ofTwo<[](double a, double b) { return a != 0.0 || b != 0.0 ? 1.0 : 0.0; }>(in, count, out);
        case Op::Not:
            return ofOne<[](double a) { return a == 0.0 ? 1.0 : 0.0; }>(in[0], count, out);
        default:
            return false;
    }
}

inline bool forward(Op op, const double* const in[3], std::size_t count, double* out) {
    switch (op) {
        case Op::Add:
            return ofTwo<[](double a, double b) { return a + b; }>(in, count, out);
        case Op::Subtract:
            return ofTwo<[](double a, double b) { return a - b; }>(in, count, out);
        case Op::Multiply:
            return ofTwo<[](double a, double b) { return a * b; }>(in, count, out);
        case Op::Divide:
            return ofTwo<[](double a, double b) { return a / b; }>(in, count, out);
        case Op::Negate:
            return ofOne<[](double a) { return -a; }>(in[0], count, out);
        case Op::Square:
            return ofOne<[](double a) { return a * a; }>(in[0], count, out);
        case Op::Exponential:
            return elementary::bestLoops().exp(in[0], count, out), true;
        case Op::Minimum:
            return ofTwo<lesser>(in, count, out);
        case Op::Maximum:
            return ofTwo<greater>(in, count, out);
        case Op::Choice:
            return choose(in, count, out);
        default:
            return forwardTest(op, in, count, out);
    }
}

}  // namespace

}  // namespace velmorak::fitting
