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
    for (std::size_t i = 0; i < count; ++i)
        rule(i);
}

void handPower(const Chain& chain) {
    const double* const a = chain.value[0];
    const double* const b = chain.value[1];
    pass(chain, 0, [&](std::size_t i) { return b[i] == 0.0 ? 0.0 : b[i] * std::pow(a[i], b[i] - 1.0); });
    pass(chain, 1, [&](std::size_t i) { return a[i] == 0.0 ? 0.0 : chain.result[i] * std::log(a[i]); });
}

/// What calls functions of the mathematical library, or is rare.
void handByCalls(const Step& step, const Chain& chain) {
    const double* const a = chain.value[0];
    const double* const b = chain.value[1];
    switch (step.op) {
        case Op::Power:
            return handPower(chain);
        case Op::Remainder:
            pass(chain, 0, [](std::size_t) { return 1.0; });
            return pass(chain, 1, [&](std::size_t i) { return -std::trunc(a[i] / b[i]); });
        case Op::Arctangent2:
            pass(chain, 0, [&](std::size_t i) { return b[i] / (a[i] * a[i] + b[i] * b[i]); });
            return pass(chain, 1, [&](std::size_t i) { return -a[i] / (a[i] * a[i] + b[i] * b[i]); });
        case Op::Hypotenuse:
            pass(chain, 0, [&](std::size_t i) { return a[i] / chain.result[i]; });
            return pass(chain, 1, [&](std::size_t i) { return b[i] / chain.result[i]; });
        case Op::Function:
            return pass(chain, 0, [&](std::size_t i) { return step.function->slope(a[i], chain.result[i]); });
        default:
            return;
    }
}

void performByCalls(const Step& step, const double* const in[3], std::size_t count, double* out) {
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
    if (!loops.perform(step.op, in, count, out))
        performByCalls(step, in, count, out);
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
    space.isTouched.resize(steps.size());
    for (std::size_t i = 0; i < steps.size(); ++i)
        if (steps[i].op == Op::Constant)
            std::fill_n(space.values.get() + i * stride, stride, steps[i].constant);
    return space;
}

const double* Program::values(const double* places, std::size_t count, const double* parameters,
                              Workspace& space) const {
    for (std::size_t i = 0; i < steps.size(); ++i) {
        const Step& step = steps[i];
        double* const out = space.values.get() + i * space.stride;
        const double* in[3] = {nullptr, nullptr, nullptr};
        for (std::size_t k = 0; k < 3 && step.in[k] != Step::none; ++k)
            in[k] = space.values.get() + step.in[k] * space.stride;
        if (step.op == Op::Variable)
            std::copy_n(places, count, out);
        else if (step.op == Op::Parameter)
            std::fill_n(out, count, parameters[step.parameter]);
        else if (step.dependsOnPlace)
            perform(step, in, count, out, *space.loops);
        else if (step.op != Op::Constant) {
            perform(step, in, 1, out, *space.loops);
            std::fill_n(out, count, out[0]);
        }
    }
    return space.values.get() + result * space.stride;
}

void Program::derive(std::size_t count, Workspace& space) const {
    std::fill(space.isTouched.begin(), space.isTouched.end(), std::uint8_t{0});
    space.isTouched[result] = 1;
    std::fill_n(space.weights.get() + result * space.stride, count, 1.0);
    for (std::size_t i = result + 1; i-- > 0;) {
        const Step& step = steps[i];
        if (!step.dependsOnParameters || step.op == Op::Parameter || space.isTouched[i] == 0)
            continue;
        Chain chain{};
        chain.count = count;
        chain.result = space.values.get() + i * space.stride;
        chain.outer = space.weights.get() + i * space.stride;
        for (std::size_t k = 0; k < 3 && step.in[k] != Step::none; ++k) {
            const std::size_t from = step.in[k];
            chain.isTouched[k] = &space.isTouched[from];
            chain.isUniform[k] = !steps[from].dependsOnPlace;
            chain.value[k] = space.values.get() + from * space.stride;
            chain.weight[k] = steps[from].dependsOnParameters ? space.weights.get() + from * space.stride : nullptr;
        }
        if (!space.loops->hand(step.op, chain))
            handByCalls(step, chain);
    }
    for (const std::size_t step : stepOfParameter)
        if (space.isTouched[step] == 0)
            std::fill_n(space.weights.get() + step * space.stride, count, 0.0);
}

}  // namespace velmorak::fitting
