#include "fit/Program.h"

#include "fit/simd/Adjoint.h"

#include <velmorak/ElementaryFunctions.h>

#include <algorithm>
#include <cmath>
#include <new>

namespace velmorak::fitting {

namespace {

constexpr std::size_t cacheLine = 64;

template <typename Rule>
void each(std::size_t count, const Rule& rule) {
    for (std::size_t i = 0; i < count; ++i) {
        rule(i);
    }
}

void backwardPower(const AdjointStep& adjointStep) {
    const double* const a = adjointStep.value[0];
    const double* const b = adjointStep.value[1];
    propagate(adjointStep, 0,
              [&](std::size_t i) { return b[i] == 0.0 ? 0.0 : b[i] * elementary::pow(a[i], b[i] - 1.0); });
    propagate(adjointStep, 1,
              [&](std::size_t i) { return a[i] == 0.0 ? 0.0 : adjointStep.result[i] * elementary::log(a[i]); });
}

/// Operations without a vectorised kernel.
void backwardScalar(const Step& step, const AdjointStep& adjointStep) {
    const double* const a = adjointStep.value[0];
    const double* const b = adjointStep.value[1];
    switch (step.op) {
        case Op::Power:
            return backwardPower(adjointStep);
        case Op::Remainder:
            propagate(adjointStep, 0, [](std::size_t) { return 1.0; });
            return propagate(adjointStep, 1, [&](std::size_t i) { return -std::trunc(a[i] / b[i]); });
        case Op::NearestRemainder:
            propagate(adjointStep, 0, [](std::size_t) { return 1.0; });
            return propagate(adjointStep, 1, [&](std::size_t i) { return (adjointStep.result[i] - a[i]) / b[i]; });
        case Op::CopySign:
            propagate(adjointStep, 0,
                      [&](std::size_t i) { return std::signbit(a[i]) == std::signbit(b[i]) ? 1.0 : -1.0; });
            return propagate(adjointStep, 1, [](std::size_t) { return 0.0; });
        case Op::Arctangent2:
            propagate(adjointStep, 0, [&](std::size_t i) { return b[i] / (a[i] * a[i] + b[i] * b[i]); });
            return propagate(adjointStep, 1, [&](std::size_t i) { return -a[i] / (a[i] * a[i] + b[i] * b[i]); });
        case Op::Hypotenuse:
            propagate(adjointStep, 0, [&](std::size_t i) { return a[i] / adjointStep.result[i]; });
            return propagate(adjointStep, 1, [&](std::size_t i) { return b[i] / adjointStep.result[i]; });
        case Op::Function:
            return propagate(adjointStep, 0,
                             [&](std::size_t i) { return step.function->derivative(a[i], adjointStep.result[i]); });
        default:
            return;
    }
}

void executeScalar(const Step& step, const double* const in[3], std::size_t count, double* out) {
    const double* const a = in[0];
    const double* const b = in[1];
    switch (step.op) {
        case Op::Remainder:
            return each(count, [=](std::size_t i) { out[i] = std::fmod(a[i], b[i]); });
        case Op::NearestRemainder:
            return each(count, [=](std::size_t i) { out[i] = std::remainder(a[i], b[i]); });
        case Op::CopySign:
            return each(count, [=](std::size_t i) { out[i] = std::copysign(a[i], b[i]); });
        case Op::Power:
            return elementary::bestLoops().pow(a, b, count, out);
        case Op::Arctangent2:
            return elementary::bestLoops().atan2(a, b, count, out);
        case Op::Hypotenuse:
            return elementary::bestLoops().hypot(a, b, count, out);
        case Op::Function:
            return step.function->loop ? (elementary::bestLoops().*step.function->loop)(a, count, out)
                                       : each(count, [&](std::size_t i) { out[i] = step.function->value(a[i]); });
        default:
            return;
    }
}

}  // namespace

void executeStep(const Step& step, const double* const in[3], std::size_t count, double* out,
                 const FitKernels& kernels) {
    if (!kernels.forward(step.op, in, count, out)) {
        executeScalar(step, in, count, out);
    }
}

void AlignedDelete::operator()(double* values) const {
    ::operator delete[](values, std::align_val_t{cacheLine});
}

AlignedValues alignedValues(std::size_t count) {
    return AlignedValues(static_cast<double*>(::operator new[](count * sizeof(double), std::align_val_t{cacheLine})));
}

Workspace Program::workspace(std::size_t points) const {
    constexpr std::size_t whole = cacheLine / sizeof(double);
    const std::size_t stride = (points + whole - 1) / whole * whole;
    Workspace space;
    space.kernels = &bestKernels();
    space.stride = stride;
    space.values = alignedValues(steps.size() * stride);
    space.adjoints = alignedValues(steps.size() * stride);
    space.hasAdjoint.resize(steps.size());
    for (std::size_t i = 0; i < steps.size(); ++i) {
        if (steps[i].op == Op::Constant) {
            std::fill_n(space.values.get() + i * stride, stride, steps[i].constant);
        }
    }
    return space;
}

const double* Program::evaluate(const double* x, std::size_t count, const double* parameters, Workspace& space) const {
    for (std::size_t i = 0; i < steps.size(); ++i) {
        const Step& step = steps[i];
        double* const out = space.values.get() + i * space.stride;
        const double* in[3] = {nullptr, nullptr, nullptr};
        for (std::size_t k = 0; k < 3 && step.in[k] != Step::none; ++k) {
            in[k] = space.values.get() + step.in[k] * space.stride;
        }
        if (step.op == Op::Variable) {
            std::copy_n(x, count, out);
        } else if (step.op == Op::Parameter) {
            std::fill_n(out, count, parameters[step.parameter]);
        } else if (step.dependsOnX) {
            executeStep(step, in, count, out, *space.kernels);
        } else if (step.op != Op::Constant) {
            executeStep(step, in, 1, out, *space.kernels);
            std::fill_n(out, count, out[0]);
        }
    }
    return space.values.get() + result * space.stride;
}

void Program::backward(std::size_t count, Workspace& space) const {
    std::fill(space.hasAdjoint.begin(), space.hasAdjoint.end(), std::uint8_t{0});
    space.hasAdjoint[result] = 1;
    std::fill_n(space.adjoints.get() + result * space.stride, count, 1.0);
    for (std::size_t i = result + 1; i-- > 0;) {
        const Step& step = steps[i];
        if (!step.dependsOnParameters || step.op == Op::Parameter || space.hasAdjoint[i] == 0) {
            continue;
        }
        AdjointStep adjointStep{};
        adjointStep.count = count;
        adjointStep.result = space.values.get() + i * space.stride;
        adjointStep.resultAdjoint = space.adjoints.get() + i * space.stride;
        for (std::size_t k = 0; k < 3 && step.in[k] != Step::none; ++k) {
            const std::size_t from = step.in[k];
            adjointStep.hasAdjoint[k] = &space.hasAdjoint[from];
            adjointStep.isUniform[k] = !steps[from].dependsOnX;
            adjointStep.value[k] = space.values.get() + from * space.stride;
            adjointStep.adjoint[k] =
                steps[from].dependsOnParameters ? space.adjoints.get() + from * space.stride : nullptr;
        }
        if (!space.kernels->backward(step.op, adjointStep)) {
            backwardScalar(step, adjointStep);
        }
    }
    for (const std::size_t step : stepOfParameter) {
        if (space.hasAdjoint[step] == 0) {
            std::fill_n(space.adjoints.get() + step * space.stride, count, 0.0);
        }
    }
}

}  // namespace velmorak::fitting
