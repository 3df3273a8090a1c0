#include "fit/Program.h"

#include "fit/Chain.h"

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

void handPower(const AdjointStep& chain) {
    const double* const a = chain.value[0];
    const double* const b = chain.value[1];
    propagate(chain, 0, [&](std::size_t i) { return b[i] == 0.0 ? 0.0 : b[i] * std::pow(a[i], b[i] - 1.0); });
    propagate(chain, 1, [&](std::size_t i) { return a[i] == 0.0 ? 0.0 : chain.result[i] * std::log(a[i]); });
}

/// What calls functions of the mathematical library, or is rare.
void backwardScalar(const Step& step, const AdjointStep& chain) {
    const double* const a = chain.value[0];
    const double* const b = chain.value[1];
    switch (step.op) {
        case Op::Power:
            return handPower(chain);
        case Op::Remainder:
            propagate(chain, 0, [](std::size_t) { return 1.0; });
            return propagate(chain, 1, [&](std::size_t i) { return -std::trunc(a[i] / b[i]); });
        case Op::Arctangent2:
            propagate(chain, 0, [&](std::size_t i) { return b[i] / (a[i] * a[i] + b[i] * b[i]); });
            return propagate(chain, 1, [&](std::size_t i) { return -a[i] / (a[i] * a[i] + b[i] * b[i]); });
        case Op::Hypotenuse:
            propagate(chain, 0, [&](std::size_t i) { return a[i] / chain.result[i]; });
            return propagate(chain, 1, [&](std::size_t i) { return b[i] / chain.result[i]; });
        case Op::Function:
            return propagate(chain, 0, [&](std::size_t i) { return step.function->slope(a[i], chain.result[i]); });
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
        case Op::Power:
            return each(count, [=](std::size_t i) { out[i] = std::pow(a[i], b[i]); });
        case Op::Arctangent2:
            return each(count, [=](std::size_t i) { out[i] = std::atan2(a[i], b[i]); });
        case Op::Hypotenuse:
            return each(count, [=](std::size_t i) { out[i] = std::hypot(a[i], b[i]); });
        case Op::Function:
            return each(count, [&](std::size_t i) { out[i] = step.function->value(a[i]); });
        default:
            return;
    }
}

}  // namespace

void perform(const Step& step, const double* const in[3], std::size_t count, double* out, const Loops& loops) {
    if (!loops.perform(step.op, in, count, out)) {
        executeScalar(step, in, count, out);
    }
}

void AlignedDelete::operator()(double* values) const {
    ::operator delete[](values, std::align_val_t{cacheLine});
}

AlignedValues alignedValues(std::size_t count) {
    return AlignedValues(static_cast<double*>(::operator new[](count * sizeof(double), std::align_val_t{cacheLine})));
}

Workspace Program::workspace(std::size_t places) const {
    constexpr std::size_t whole = cacheLine / sizeof(double);
    const std::size_t stride = (places + whole - 1) / whole * whole;
    Workspace space;
    space.loops = &bestLoops();
    space.stride = stride;
    space.values = alignedValues(steps.size() * stride);
    space.weights = alignedValues(steps.size() * stride);
    space.hasAdjoint.resize(steps.size());
    for (std::size_t i = 0; i < steps.size(); ++i) {
        if (steps[i].op == Op::Constant) {
            std::fill_n(space.values.get() + i * stride, stride, steps[i].constant);
        }
    }
    return space;
}

const double* Program::values(const double* places, std::size_t count, const double* parameters,
                              Workspace& space) const {
    for (std::size_t i = 0; i < steps.size(); ++i) {
        const Step& step = steps[i];
        double* const out = space.values.get() + i * space.stride;
        const double* in[3] = {nullptr, nullptr, nullptr};
        for (std::size_t k = 0; k < 3 && step.in[k] != Step::none; ++k) {
            in[k] = space.values.get() + step.in[k] * space.stride;
        }
        if (step.op == Op::Variable) {
            std::copy_n(places, count, out);
        } else if (step.op == Op::Parameter) {
            std::fill_n(out, count, parameters[step.parameter]);
        } else if (step.dependsOnPlace) {
            perform(step, in, count, out, *space.loops);
        } else if (step.op != Op::Constant) {
            perform(step, in, 1, out, *space.loops);
            std::fill_n(out, count, out[0]);
        }
    }
    return space.values.get() + result * space.stride;
}

void Program::backward(std::size_t count, Workspace& space) const {
    std::fill(space.hasAdjoint.begin(), space.hasAdjoint.end(), std::uint8_t{0});
    space.hasAdjoint[result] = 1;
    std::fill_n(space.weights.get() + result * space.stride, count, 1.0);
    for (std::size_t i = result + 1; i-- > 0;) {
        const Step& step = steps[i];
        if (!step.dependsOnParameters || step.op == Op::Parameter || space.hasAdjoint[i] == 0) {
            continue;
        }
        AdjointStep chain{};
        chain.count = count;
        chain.result = space.values.get() + i * space.stride;
        chain.outer = space.weights.get() + i * space.stride;
        for (std::size_t k = 0; k < 3 && step.in[k] != Step::none; ++k) {
            const std::size_t from = step.in[k];
            chain.hasAdjoint[k] = &space.hasAdjoint[from];
            chain.isUniform[k] = !steps[from].dependsOnPlace;
            chain.value[k] = space.values.get() + from * space.stride;
            chain.weight[k] = steps[from].dependsOnParameters ? space.weights.get() + from * space.stride : nullptr;
        }
        if (!space.loops->backward(step.op, chain)) {
            backwardScalar(step, chain);
        }
    }
    for (const std::size_t step : stepOfParameter) {
        if (space.hasAdjoint[step] == 0) {
            std::fill_n(space.weights.get() + step * space.stride, count, 0.0);
        }
    }
}

}  // namespace velmorak::fitting
