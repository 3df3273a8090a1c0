#include "expression/Emitter.h"

namespace velmorak::expression {

namespace {

/// Bytes of a value in a buffer; a text stands there by its address.
std::size_t bytesOf(ColumnType type) {
    return type == ColumnType::Boolean ? 1 : 8;
}

std::size_t bytesInColumn(ColumnType type) {
    return type == ColumnType::Text ? sizeof(std::string) : bytesOf(type);
}

}  // namespace

TypedOperand Emitter::text(const std::string& value) {
    return constant(static_cast<const std::string*>(&code.texts.emplace_back(value)), ColumnType::Text);
}

TypedOperand Emitter::column(std::size_t position, const ColumnInfo& info) {
    auto& used = code.usedColumns;
    if (std::find(used.begin(), used.end(), position) == used.end()) {
        used.push_back(position);
    }
    return {{Operand::In::Column, position}, info.type, info.isList, position, bytesInColumn(info.type)};
}

TypedOperand Emitter::emit(Kernel kernel, const std::vector<TypedOperand>& values, ColumnType type, std::size_t place) {
    const auto list =
        std::find_if(values.begin(), values.end(), [](const TypedOperand& value) { return value.isList; });
    Step step;
    step.kernel = kernel;
    step.place = place;
    if (list == values.end()) {
        return emitStep(step, values, type);
    }
    step.over = IterationDomain::Lists;
    step.shape = list->shape;
    std::vector<TypedOperand> lists;
    for (const TypedOperand& value : values) {
        if (value.isList) {
            demandEqualLengths(step.shape, value.shape, place);
        }
        const bool isSingle = !value.isList && value.place.in != Operand::In::Constant;
        lists.push_back(isSingle ? spread(value, step.shape, place) : value);
    }
    return emitStep(step, lists, type);
}

TypedOperand Emitter::emitReduction(Kernel kernel, const std::vector<TypedOperand>& values, ColumnType type,
                                    std::size_t place) {
    Step step;
    step.kernel = kernel;
    step.place = place;
    step.over = IterationDomain::RowsOfLists;
    step.shape = values.front().shape;
    return emitStep(step, values, type);
}

/// The result has a buffer that none of the step's own values stands in: their sizes may differ.
TypedOperand Emitter::emitStep(Step step, const std::vector<TypedOperand>& values, ColumnType type) {
    const bool isList = step.over == IterationDomain::Lists || step.over == IterationDomain::Broadcast;
    step.out = isList ? Operand{Operand::In::List, taken(freeLists, code.lists)}
                      : Operand{Operand::In::Buffer, taken(freeBuffers, code.buffers)};
    step.outBytes = bytesOf(type);
    for (std::size_t i = 0; i < values.size(); ++i) {
        step.in[i] = values[i].place;
        step.inBytes[i] = values[i].elementBytes;
    }
    code.steps.push_back(step);
    for (const TypedOperand& value : values) {
        if (value.place.in == Operand::In::Buffer) {
            freeBuffers.push_back(value.place.position);
        } else if (value.place.in == Operand::In::List) {
            freeLists.push_back(value.place.position);
        }
    }
    lastValues = values;
    return {step.out, type, isList, step.shape, step.outBytes};
}

std::optional<std::vector<TypedOperand>> Emitter::popIfProducedBy(const TypedOperand& value, Kernel kernel) {
    if (code.steps.empty() || value.place.in != Operand::In::Buffer) {
        return std::nullopt;
    }
    const Step& last = code.steps.back();
    if (last.kernel != kernel || last.over != IterationDomain::Rows || last.out.position != value.place.position) {
        return std::nullopt;
    }
    for (const TypedOperand& taken : lastValues) {
        if (taken.place.in == Operand::In::Buffer) {
            freeBuffers.pop_back();
        }
    }
    freeBuffers.push_back(last.out.position);
    code.steps.pop_back();
    return std::exchange(lastValues, {});
}

TypedOperand Emitter::spread(const TypedOperand& value, std::size_t shape, std::size_t place) {
    Step step;
    step.kernel = spreading(value.type);
    step.place = place;
    step.over = IterationDomain::Broadcast;
    step.shape = shape;
    return emitStep(step, {value}, value.type);
}

void Emitter::demandEqualLengths(std::size_t shape, std::size_t other, std::size_t place) {
    if (shape == other || !equalShapes.insert({shape, other}).second) {
        return;
    }
    Step step;
    step.place = place;
    step.over = IterationDomain::Lengths;
    step.shape = shape;
    step.otherShape = other;
    code.steps.push_back(step);
}

std::size_t Emitter::taken(std::vector<std::size_t>& free, std::size_t& count) {
    if (free.empty()) {
        return count++;
    }
    const std::size_t buffer = free.back();
    free.pop_back();
    return buffer;
}

Code Emitter::finish(const TypedOperand& whole) && {
    code.result = whole.place;
    code.resultShape = whole.shape;
    code.type = whole.type;
    code.isList = whole.isList;
    std::sort(code.usedColumns.begin(), code.usedColumns.end());
    return std::move(code);
}

}  // namespace velmorak::expression
