#include "FitProgram.h"

#include "ExpressionExp.h"
#include "ExpressionWide.h"

#include <algorithm>
#include <cmath>

namespace velmorak::fitting {

namespace {

template <typename Rule>
void each(std::size_t count, const Rule& rule) {
    for (std::size_t i = 0; i < count; ++i)
        rule(i);
}

/// What has no influence has none on a slope that is no number either.
double times(double weight, double slope) {
    const double product = weight * slope;
    return weight == 0.0 ? 0.0 : product;
}

double lesser(double x, double y) {
    return y < x || std::isnan(y) ? y : x;
}

double greater(double x, double y) {
    return x < y || std::isnan(y) ? y : x;
}

/// Values, and how the result changes with the step and its arguments. weight is null for an argument that does not
/// depend on parameters; isTouched says whether there is something in it to add to.
struct Chain {
    const double* value[3];
    double* weight[3];
    const double* result;
    const double* outer;
    std::size_t count;
    std::uint8_t* isTouched[3];

    template <typename Slope>
    void pass(std::size_t argument, const Slope& slope) const {
        double* const __restrict target = weight[argument];
        const double* const __restrict from = outer;
        if (target == nullptr)
            return;
        if (*isTouched[argument] != 0)
            for (std::size_t i = 0; i < count; ++i)
                target[i] += times(from[i], slope(i));
        else
            for (std::size_t i = 0; i < count; ++i)
                target[i] = times(from[i], slope(i));
        *isTouched[argument] = 1;
    }

    /// For a slope of 1 everywhere.
    void passOn(std::size_t argument) const {
        double* const __restrict target = weight[argument];
        if (target == nullptr)
            return;
        if (*isTouched[argument] == 0)
            std::copy_n(outer, count, target);
        else
            for (std::size_t i = 0; i < count; ++i)
                target[i] += outer[i];
        *isTouched[argument] = 1;
    }
};

void chainPower(const Chain& chain) {
    const double* const a = chain.value[0];
    const double* const b = chain.value[1];
    chain.pass(0, [&](std::size_t i) { return b[i] == 0.0 ? 0.0 : b[i] * std::pow(a[i], b[i] - 1.0); });
    chain.pass(1, [&](std::size_t i) { return a[i] == 0.0 ? 0.0 : chain.result[i] * std::log(a[i]); });
}

void chainOfTwo(Op op, const Chain& chain) {
    const double* const a = chain.value[0];
    const double* const b = chain.value[1];
    if (op == Op::Power)
        return chainPower(chain);
    if (op == Op::Remainder) {
        chain.pass(0, [](std::size_t) { return 1.0; });
        chain.pass(1, [&](std::size_t i) { return -std::trunc(a[i] / b[i]); });
    } else if (op == Op::Arctangent2) {
        chain.pass(0, [&](std::size_t i) { return b[i] / (a[i] * a[i] + b[i] * b[i]); });
        chain.pass(1, [&](std::size_t i) { return -a[i] / (a[i] * a[i] + b[i] * b[i]); });
    } else if (op == Op::Hypotenuse) {
        chain.pass(0, [&](std::size_t i) { return a[i] / chain.result[i]; });
        chain.pass(1, [&](std::size_t i) { return b[i] / chain.result[i]; });
    } else if (op == Op::Minimum || op == Op::Maximum) {
        chain.pass(0, [&](std::size_t i) { return chain.result[i] == a[i] ? 1.0 : 0.0; });
        chain.pass(1, [&](std::size_t i) { return chain.result[i] == a[i] ? 0.0 : 1.0; });
    }
}

void chainRule(const Step& step, const Chain& chain) {
    const double* const a = chain.value[0];
    const double* const b = chain.value[1];
    switch (step.op) {
        case Op::Add:
            chain.passOn(0);
            return chain.passOn(1);
        case Op::Subtract:
            chain.passOn(0);
            return chain.pass(1, [](std::size_t) { return -1.0; });
        case Op::Multiply:
            chain.pass(0, [&](std::size_t i) { return b[i]; });
            return chain.pass(1, [&](std::size_t i) { return a[i]; });
        case Op::Divide:
            chain.pass(0, [&](std::size_t i) { return 1.0 / b[i]; });
            return chain.pass(1, [&](std::size_t i) { return -chain.result[i] / b[i]; });
        case Op::Negate:
            return chain.pass(0, [](std::size_t) { return -1.0; });
        case Op::Square:
            return chain.pass(0, [&](std::size_t i) { return 2.0 * a[i]; });
        case Op::Exponential:
            return chain.pass(0, [&](std::size_t i) { return chain.result[i]; });
        case Op::Function:
            return chain.pass(0, [&](std::size_t i) { return step.function->slope(a[i], chain.result[i]); });
        case Op::Choice:
            chain.pass(1, [&](std::size_t i) { return a[i] != 0.0 ? 1.0 : 0.0; });
            return chain.pass(2, [&](std::size_t i) { return a[i] != 0.0 ? 0.0 : 1.0; });
        default:
            return chainOfTwo(step.op, chain);
    }
}

/// With the vectors that the processor has; the bits are the same without.
void exponential(const double* a, std::size_t count, double* out) {
    static const expression::Kernel wide = expression::wideKernel("exp", ColumnType::Real);
    if (wide == nullptr)
        return each(count, [=](std::size_t i) { out[i] = expression::exponential(a[i]); });
    expression::Lane lane;
    lane.out = out;
    lane.in[0] = a;
    lane.rows = count;
    wide(lane);
}

void performTest(Op op, const double* a, const double* b, std::size_t count, double* out) {
    switch (op) {
        case Op::Less:
            return each(count, [=](std::size_t i) { out[i] = a[i] < b[i] ? 1.0 : 0.0; });
        case Op::LessOrEqual:
            return each(count, [=](std::size_t i) { out[i] = a[i] <= b[i] ? 1.0 : 0.0; });
        case Op::Equal:
            return each(count, [=](std::size_t i) { out[i] = a[i] == b[i] ? 1.0 : 0.0; });
        case Op::Unequal:
            return each(count, [=](std::size_t i) { out[i] = a[i] != b[i] ? 1.0 : 0.0; });
        case Op::And:
            return each(count, [=](std::size_t i) { out[i] = a[i] != 0.0 && b[i] != 0.0 ? 1.0 : 0.0; });
        case Op::Or:
            return each(count, [=](std::size_t i) { out[i] = a[i] != 0.0 || b[i] != 0.0 ? 1.0 : 0.0; });
        default:
            return each(count, [=](std::size_t i) { out[i] = a[i] == 0.0 ? 1.0 : 0.0; });
    }
}

void performOfTwo(Op op, const double* a, const double* b, std::size_t count, double* out) {
    switch (op) {
        case Op::Remainder:
            return each(count, [=](std::size_t i) { out[i] = std::fmod(a[i], b[i]); });
        case Op::Power:
            return each(count, [=](std::size_t i) { out[i] = std::pow(a[i], b[i]); });
        case Op::Arctangent2:
            return each(count, [=](std::size_t i) { out[i] = std::atan2(a[i], b[i]); });
        case Op::Hypotenuse:
            return each(count, [=](std::size_t i) { out[i] = std::hypot(a[i], b[i]); });
        case Op::Minimum:
            return each(count, [=](std::size_t i) { out[i] = lesser(a[i], b[i]); });
        case Op::Maximum:
            return each(count, [=](std::size_t i) { out[i] = greater(a[i], b[i]); });
        default:
            return performTest(op, a, b, count, out);
    }
}

}  // namespace

void perform(const Step& step, const double* const in[3], std::size_t count, double* __restrict out) {
    const double* const a = in[0];
    const double* const b = in[1];
    const double* const c = in[2];
    switch (step.op) {
        case Op::Add:
            return each(count, [=](std::size_t i) { out[i] = a[i] + b[i]; });
        case Op::Subtract:
            return each(count, [=](std::size_t i) { out[i] = a[i] - b[i]; });
        case Op::Multiply:
            return each(count, [=](std::size_t i) { out[i] = a[i] * b[i]; });
        case Op::Divide:
            return each(count, [=](std::size_t i) { out[i] = a[i] / b[i]; });
        case Op::Negate:
            return each(count, [=](std::size_t i) { out[i] = -a[i]; });
        case Op::Square:
            return each(count, [=](std::size_t i) { out[i] = a[i] * a[i]; });
        case Op::Exponential:
            return exponential(a, count, out);
        case Op::Function:
            return each(count, [&](std::size_t i) { out[i] = step.function->value(a[i]); });
        case Op::Choice:
            return each(count, [=](std::size_t i) { out[i] = a[i] != 0.0 ? b[i] : c[i]; });
        default:
            return performOfTwo(step.op, a, b, count, out);
    }
}

Workspace Program::workspace(std::size_t places) const {
    Workspace space{places, std::vector<double>(steps.size() * places), std::vector<double>(steps.size() * places),
                    std::vector<std::uint8_t>(steps.size())};
    for (std::size_t i = 0; i < steps.size(); ++i)
        if (steps[i].op == Op::Constant)
            std::fill_n(space.values.data() + i * places, places, steps[i].constant);
    return space;
}

const double* Program::values(const double* places, std::size_t count, const double* parameters,
                              Workspace& space) const {
    for (std::size_t i = 0; i < steps.size(); ++i) {
        const Step& step = steps[i];
        double* const out = space.values.data() + i * space.stride;
        const double* in[3] = {nullptr, nullptr, nullptr};
        for (std::size_t k = 0; k < 3 && step.in[k] != Step::none; ++k)
            in[k] = space.values.data() + step.in[k] * space.stride;
        if (step.op == Op::Variable)
            std::copy_n(places, count, out);
        else if (step.op == Op::Parameter)
            std::fill_n(out, count, parameters[step.parameter]);
        else if (step.op != Op::Constant)
            perform(step, in, count, out);
    }
    return space.values.data() + result * space.stride;
}

void Program::derive(std::size_t count, Workspace& space) const {
    std::fill(space.isTouched.begin(), space.isTouched.end(), std::uint8_t{0});
    space.isTouched[result] = 1;
    std::fill_n(space.weights.data() + result * space.stride, count, 1.0);
    for (std::size_t i = result + 1; i-- > 0;) {
        const Step& step = steps[i];
        if (!step.dependsOnParameters || step.op == Op::Parameter || space.isTouched[i] == 0)
            continue;
        Chain chain{};
        chain.count = count;
        chain.result = space.values.data() + i * space.stride;
        chain.outer = space.weights.data() + i * space.stride;
        for (std::size_t k = 0; k < 3 && step.in[k] != Step::none; ++k) {
            const std::size_t from = step.in[k];
            chain.isTouched[k] = &space.isTouched[from];
            chain.value[k] = space.values.data() + from * space.stride;
            chain.weight[k] = steps[from].dependsOnParameters ? space.weights.data() + from * space.stride : nullptr;
        }
        chainRule(step, chain);
    }
    for (const std::size_t step : stepOfParameter)
        if (space.isTouched[step] == 0)
            std::fill_n(space.weights.data() + step * space.stride, count, 0.0);
}

}  // namespace velmorak::fitting
