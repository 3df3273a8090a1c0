#include "expression/Emitter.h"

#include <cstring>

namespace velmorak::expression {

namespace {

/// Bytes of a value in a buffer, which holds texts by address.
std::size_t bytesOf(ColumnType type) {
    return type == ColumnType::Boolean ? 1 : 8;
}

std::size_t bytesInColumn(ColumnType type) {
    return type == ColumnType::Text ? sizeof(std::string) : bytesOf(type);
}

/// Fills a block with a value.
void repeat(const std::byte* value, ColumnType type, Block& block) {
    if (bytesOf(type) == 1) {
        std::fill_n(block.bytes, blockRows, *value);
        return;
    }
    for (std::size_t row = 0; row < blockRows; ++row) {
        std::memcpy(block.bytes + 8 * row, value, 8);
    }
}

template <typename T>
double firstOf(const Block& block) {
    T value{};
    std::memcpy(&value, block.bytes, sizeof(T));
    return static_cast<double>(value);
}

}  // namespace

double numberIn(const Block& constant, ColumnType type) {
    switch (type) {
        case ColumnType::Real:
            return firstOf<double>(constant);
        case ColumnType::Integer:
            return firstOf<std::int64_t>(constant);
        default:
            return firstOf<std::uint8_t>(constant);
    }
}

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

TypedOperand Emitter::emit(const Operation& operation, const std::vector<TypedOperand>& values, ColumnType type,
                           std::size_t offset) {
    if (const auto constant = folded(operation.kernel, values, type)) {
        return *constant;
    }
    const auto list =
        std::find_if(values.begin(), values.end(), [](const TypedOperand& value) { return value.isList; });
    Step step;
    step.kernel = operation.kernel;
    step.function = operation.function;
    step.reverse = operation.reverse;
    step.offset = offset;
    if (list == values.end()) {
        return emitStep(step, values, type);
    }
    step.domain = IterationDomain::Lists;
    step.listColumn = list->listColumn;
    std::vector<TypedOperand> lists;
    for (const TypedOperand& value : values) {
        if (value.isList) {
            emitLengthCheck(step.listColumn, value.listColumn, offset);
        }
        const bool isSingle = !value.isList && value.operand.in != Operand::In::Constant;
        lists.push_back(isSingle ? broadcast(value, step.listColumn, offset) : value);
    }
    return emitStep(step, lists, type);
}

std::optional<TypedOperand> Emitter::folded(Kernel kernel, const std::vector<TypedOperand>& values, ColumnType type) {
    KernelArgs args;
    args.rows = 1;
    for (std::size_t i = 0; i < values.size(); ++i) {
        if (values[i].operand.in != Operand::In::Constant) {
            return std::nullopt;
        }
        args.in[i] = code.constantAt[values[i].operand.position]->bytes;
    }
    alignas(8) std::byte result[8];
    args.out = result;
    if (!kernel(args)) {
        return std::nullopt;
    }
    // The block of an operand is free if nothing else can use it.
    TypedOperand made = buffers == Buffers::Kept ? constant(0.0, type) : values.front();
    made.type = type;
    repeat(result, type, *code.constantAt[made.operand.position]);
    return made;
}

std::optional<double> Emitter::numberOf(const TypedOperand& value) const {
    if (value.operand.in != Operand::In::Constant || value.type == ColumnType::Text) {
        return std::nullopt;
    }
    return numberIn(*code.constantAt[value.operand.position], value.type);
}

TypedOperand Emitter::emitReduction(Kernel kernel, const std::vector<TypedOperand>& values, ColumnType type,
                                    std::size_t offset) {
    Step step;
    step.kernel = kernel;
    step.offset = offset;
    step.domain = IterationDomain::RowsOfLists;
    step.listColumn = values.front().listColumn;
    return emitStep(step, values, type);
}

/// The output buffer differs from the input buffers, because the sizes of values may differ.
TypedOperand Emitter::emitStep(Step step, const std::vector<TypedOperand>& values, ColumnType type) {
    const bool isList = step.domain == IterationDomain::Lists || step.domain == IterationDomain::Broadcast;
    step.out = isList ? Operand{Operand::In::List, allocate(freeLists, code.lists)}
                      : Operand{Operand::In::Buffer, allocate(freeBuffers, code.buffers)};
    step.outBytes = bytesOf(type);
    step.type = type;
    for (std::size_t i = 0; i < values.size(); ++i) {
        step.in[i] = values[i].operand;
        step.inBytes[i] = values[i].elementBytes;
        step.inType[i] = values[i].type;
    }
    code.steps.push_back(step);
    if (buffers == Buffers::Kept) {
        return {step.out, type, isList, step.listColumn, step.outBytes};
    }
    for (const TypedOperand& value : values) {
        if (value.operand.in == Operand::In::Buffer) {
            freeBuffers.push_back(value.operand.position);
        } else if (value.operand.in == Operand::In::List) {
            freeLists.push_back(value.operand.position);
        }
    }
    lastValues = values;
    return {step.out, type, isList, step.listColumn, step.outBytes};
}

std::optional<std::vector<TypedOperand>> Emitter::popIfProducedBy(const TypedOperand& value, Kernel kernel) {
    if (buffers == Buffers::Kept || code.steps.empty() || value.operand.in != Operand::In::Buffer) {
        return std::nullopt;
    }
    const Step& last = code.steps.back();
    if (last.kernel != kernel || last.domain != IterationDomain::Rows || last.out.position != value.operand.position) {
        return std::nullopt;
    }
    for (const TypedOperand& taken : lastValues) {
        if (taken.operand.in == Operand::In::Buffer) {
            freeBuffers.pop_back();
        }
    }
    freeBuffers.push_back(last.out.position);
    code.steps.pop_back();
    return std::exchange(lastValues, {});
}

TypedOperand Emitter::broadcast(const TypedOperand& value, std::size_t listColumn, std::size_t offset) {
    Step step;
    step.kernel = broadcastKernel(value.type);
    step.offset = offset;
    step.domain = IterationDomain::Broadcast;
    step.listColumn = listColumn;
    return emitStep(step, {value}, value.type);
}

void Emitter::emitLengthCheck(std::size_t listColumn, std::size_t other, std::size_t offset) {
    if (listColumn == other || !equalLengths.insert({listColumn, other}).second) {
        return;
    }
    Step step;
    step.offset = offset;
    step.domain = IterationDomain::Lengths;
    step.listColumn = listColumn;
    step.otherListColumn = other;
    code.steps.push_back(step);
}

std::size_t Emitter::allocate(std::vector<std::size_t>& free, std::size_t& count) {
    if (free.empty()) {
        return count++;
    }
    const std::size_t buffer = free.back();
    free.pop_back();
    return buffer;
}

Code Emitter::finish(const TypedOperand& whole) && {
    code.result = whole.operand;
    code.resultListColumn = whole.listColumn;
    code.type = whole.type;
    code.isList = whole.isList;
    std::sort(code.usedColumns.begin(), code.usedColumns.end());
    return std::move(code);
}

}  // namespace velmorak::expression
