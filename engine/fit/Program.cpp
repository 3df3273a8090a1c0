#include "fit/Program.h"

#include "expression/Syntax.h"

#include <algorithm>
#include <new>

namespace velmorak::fitting {

namespace {

using expression::Operand;
using expression::Step;

constexpr std::size_t cacheLine = 64;

/// Repeats the first value.
void fill(void* values, ColumnType type, std::size_t count, const FitKernels& kernels) {
    if (type == ColumnType::Boolean) {
        auto* const bytes = static_cast<std::uint8_t*>(values);
        std::fill_n(bytes, count, bytes[0]);
    } else {
        auto* const reals = static_cast<double*>(values);
        kernels.fill(reals[0], count, reals);
    }
}

}  // namespace

void AlignedDelete::operator()(double* values) const {
    ::operator delete[](values, std::align_val_t{cacheLine});
}

AlignedValues alignedValues(std::size_t count) {
    return AlignedValues(static_cast<double*>(::operator new[](count * sizeof(double), std::align_val_t{cacheLine})));
}

Program::Program(expression::Code program, std::size_t parameterCount, std::string text)
    : steps(std::move(program)), parameterCount(parameterCount), text(std::move(text)) {
    dependences.resize(1 + parameterCount + steps.buffers, {false, true});
    dependences[0] = {true, false};
    for (const Step& step : steps.steps) {
        Dependence all;
        for (const Operand& operand : step.in) {
            const Dependence one = dependenceOf(operand);
            all.onX = all.onX || one.onX;
            all.onParameters = all.onParameters || one.onParameters;
        }
        all.onParameters = all.onParameters && step.reverse != nullptr;
        dependences[slotOf(step.out)] = all;
    }
}

std::size_t Program::slotOf(const Operand& operand) const {
    return operand.in == Operand::In::Column ? operand.position : 1 + parameterCount + operand.position;
}

Program::Dependence Program::dependenceOf(const Operand& operand) const {
    const bool isFixed = operand.in == Operand::In::Constant || operand.in == Operand::In::Nothing;
    return isFixed ? Dependence{} : dependences[slotOf(operand)];
}

const void* Program::valuesOf(const Operand& operand, const Workspace& space) const {
    switch (operand.in) {
        case Operand::In::Nothing:
            return nullptr;
        case Operand::In::Constant:
            return steps.constantAt[operand.position]->bytes;
        default:
            return space.values.get() + slotOf(operand) * space.stride;
    }
}

Workspace Program::workspace(std::size_t points) const {
    constexpr std::size_t whole = cacheLine / sizeof(double);
    const std::size_t slots = dependences.size();
    Workspace space;
    space.kernels = &bestKernels();
    space.stride = (points + whole - 1) / whole * whole;
    space.values = alignedValues(slots * space.stride);
    space.adjoints = alignedValues(slots * space.stride);
    space.hasAdjoint.resize(slots);
    space.forward.reserve(steps.steps.size());
    space.reverse.reserve(steps.steps.size());
    for (const Step& step : steps.steps) {
        space.forward.push_back(bound(step, space));
    }
    std::for_each(steps.steps.rbegin(), steps.steps.rend(), [&](const Step& step) {
        if (dependenceOf(step.out).onParameters) {
            space.reverse.push_back(boundReverse(step, space));
        }
    });
    return space;
}

BoundStep Program::bound(const Step& step, const Workspace& space) const {
    BoundStep made{step.kernel, {}, step.type, !dependenceOf(step.out).onX, step.offset};
    made.args.out = space.values.get() + slotOf(step.out) * space.stride;
    for (std::size_t k = 0; k < 3; ++k) {
        made.args.in[k] = valuesOf(step.in[k], space);
    }
    return made;
}

BoundReverse Program::boundReverse(const Step& step, Workspace& space) const {
    const std::size_t slot = slotOf(step.out);
    BoundReverse made{step.reverse, {}, &space.hasAdjoint[slot]};
    made.step.result = space.values.get() + slot * space.stride;
    made.step.resultAdjoint = space.adjoints.get() + slot * space.stride;
    for (std::size_t k = 0; k < 3 && step.in[k].in != Operand::In::Nothing; ++k) {
        const Dependence dependence = dependenceOf(step.in[k]);
        made.step.value[k] = valuesOf(step.in[k], space);
        made.step.isUniform[k] = !dependence.onX;
        if (dependence.onParameters) {
            const std::size_t from = slotOf(step.in[k]);
            made.step.hasAdjoint[k] = &space.hasAdjoint[from];
            made.step.adjoint[k] = space.adjoints.get() + from * space.stride;
        }
    }
    return made;
}

const double* Program::evaluate(const double* x, std::size_t count, const double* parameters, Workspace& space) const {
    std::copy_n(x, count, space.values.get());
    for (std::size_t i = 0; i < parameterCount; ++i) {
        space.kernels->fill(parameters[i], count, space.values.get() + (1 + i) * space.stride);
    }
    for (BoundStep& step : space.forward) {
        execute(step, count, space);
    }
    return static_cast<const double*>(valuesOf(steps.result, space));
}

void Program::execute(BoundStep& step, std::size_t count, const Workspace& space) const {
    step.args.rows = step.isUniform ? 1 : count;
    if (!step.kernel(step.args)) {
        expression::throwAt(text, step.offset, "no integer can hold a result: it is too large, or a division by 0");
    }
    if (step.isUniform) {
        fill(step.args.out, step.type, count, *space.kernels);
    }
}

void Program::backward(std::size_t count, Workspace& space) const {
    std::fill(space.hasAdjoint.begin(), space.hasAdjoint.end(), std::uint8_t{0});
    if (dependenceOf(steps.result).onParameters) {
        const std::size_t slot = slotOf(steps.result);
        space.hasAdjoint[slot] = 1;
        space.kernels->fill(1.0, count, space.adjoints.get() + slot * space.stride);
    }
    for (BoundReverse& reverse : space.reverse) {
        if (*reverse.hasAdjoint != 0) {
            reverse.step.count = count;
            reverse.kernel(reverse.step);
        }
    }
    for (std::size_t i = 1; i <= parameterCount; ++i) {
        if (space.hasAdjoint[i] == 0) {
            space.kernels->fill(0.0, count, space.adjoints.get() + i * space.stride);
        }
    }
}

}  // namespace velmorak::fitting
