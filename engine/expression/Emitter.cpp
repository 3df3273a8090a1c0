#include "expression/Emitter.h"

#include "expression/TextKernels.h"

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

/// Fills the first rows of a block with a value.
void repeat(const std::byte* value, ColumnType type, std::size_t rows, Block& block) {
    if (bytesOf(type) == 1) {
        std::fill_n(block.bytes, rows, *value);
        return;
    }
    for (std::size_t row = 0; row < rows; ++row) {
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

TypedOperand Emitter::pattern(const std::string& regularExpression) {
    code.patterns.push_back(compiledPattern(regularExpression));
    return constant(code.patterns.back().get(), ColumnType::Text);
}

TypedOperand Emitter::column(std::size_t position, const ColumnInfo& info) {
    auto& used = code.usedColumns;
    if (std::find(used.begin(), used.end(), position) == used.end()) {
        used.push_back(position);
    }
    return {{Operand::In::Column, position}, info.type, info.isList, {false, position}, bytesInColumn(info.type)};
}

TypedOperand Emitter::emit(const Operation& operation, const std::vector<TypedOperand>& values, ColumnType type,
                           std::size_t offset) {
    if (const auto constant = folded(operation.kernel, values, type)) {
        return *constant;
    }
    Step step;
    step.kernel = operation.kernel;
    step.function = operation.function;
    step.reverse = operation.reverse;
    step.offset = offset;
    const auto model = std::max_element(values.begin(), values.end(), [](const TypedOperand& a, const TypedOperand& b) {
        return (a.isList ? a.width : 0) < (b.isList ? b.width : 0);
    });
    if (!model->isList) {
        return emitStep(step, values, type);
    }
    step.domain = IterationDomain::Lists;
    step.shape = model->shape;
    step.width = model->width;
    std::vector<TypedOperand> lists;
    lists.reserve(values.size());
    for (const TypedOperand& value : values) {
        lists.push_back(asLong(value, *model, offset));
    }
    return emitStep(step, lists, type);
}

TypedOperand Emitter::asLong(const TypedOperand& value, const TypedOperand& model, std::size_t offset) {
    if (value.operand.in == Operand::In::Constant) {
        return value;
    }
    if (value.isList) {
        emitLengthCheck(model.shape, value.shape, offset);
    }
    const TypedOperand list =
        value.isList ? value : repeated(value, IterationDomain::Broadcast, model.shape, 1, offset);
    return list.width == model.width ? list : repeated(list, IterationDomain::Repeat, model.shape, model.width, offset);
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
    args.texts = &code.texts;
    if (!kernel(args)) {
        return std::nullopt;
    }
    // The block of an operand is free if nothing else can use it.
    TypedOperand made = buffers == Buffers::Kept ? constant(0.0, type) : values.front();
    made.type = type;
    repeat(result, type, constantRows, *code.constantAt[made.operand.position]);
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
    const TypedOperand& list = values.front();
    Step step;
    step.kernel = kernel;
    step.offset = offset;
    step.domain = list.width > 1 ? IterationDomain::Combinations : IterationDomain::RowsOfLists;
    step.shape = list.shape;
    step.width = list.width;
    return emitStep(step, values, type);
}

TypedOperand Emitter::emitLists(const ListOperation& operation, const std::vector<TypedOperand>& values,
                                ColumnType type, std::size_t offset) {
    Step step;
    step.listKernel = operation.kernel;
    step.offset = offset;
    step.domain = IterationDomain::WholeLists;
    step.width = operation.widthRead;
    step.secondWidth = values.size() > 1 ? values[1].width : 1;
    step.makesShape = !operation.madeShape.empty();
    for (std::size_t i = 0; i < values.size(); ++i) {
        if (values[i].isList) {
            step.inShape[i] = values[i].shape;
        }
    }
    if (step.makesShape) {
        step.shape = {true, code.madeShapes.size()};
        code.madeShapes.push_back(operation.madeShape);
    } else if (operation.shape) {
        step.shape = *operation.shape;
    }
    code.makesCombinations |= operation.makesCombinations;
    TypedOperand made = emitStep(step, values, type);
    made.isList = step.makesShape || operation.shape;
    made.width = operation.width;
    return made;
}

/// The output buffer differs from the input buffers, because the sizes of values may differ.
TypedOperand Emitter::emitStep(Step step, const std::vector<TypedOperand>& values, ColumnType type) {
    const bool isList = step.domain != IterationDomain::Rows && step.domain != IterationDomain::RowsOfLists;
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
    const std::size_t width = step.domain == IterationDomain::Combinations ? 1 : step.width;
    const TypedOperand made{step.out, type, isList, step.shape, step.outBytes, width};
    if (buffers == Buffers::Kept) {
        return made;
    }
    areLastValuesFree = std::none_of(values.begin(), values.end(), [this](const TypedOperand& value) {
        return moreUses.contains({value.operand.in, value.operand.position});
    });
    for (const TypedOperand& value : values) {
        release(value);
    }
    lastValues = values;
    return made;
}

void Emitter::announceUses(const TypedOperand& value, std::size_t more) {
    const bool isHeld = value.operand.in == Operand::In::Buffer || value.operand.in == Operand::In::List;
    if (more > 0 && isHeld && buffers == Buffers::Reused) {
        moreUses[{value.operand.in, value.operand.position}] += more;
    }
}

TypedOperand Emitter::forOneUse(const TypedOperand& value) {
    if (value.operand.in != Operand::In::Constant) {
        return value;
    }
    TypedOperand copy = value;
    code.constants.push_back(*code.constantAt[value.operand.position]);
    code.constantAt.push_back(&code.constants.back());
    copy.operand.position = code.constantAt.size() - 1;
    return copy;
}

void Emitter::release(const TypedOperand& value) {
    if (const auto more = moreUses.find({value.operand.in, value.operand.position}); more != moreUses.end()) {
        if (--more->second == 0) {
            moreUses.erase(more);
        }
    } else if (value.operand.in == Operand::In::Buffer) {
        freeBuffers.push_back(value.operand.position);
    } else if (value.operand.in == Operand::In::List) {
        freeLists.push_back(value.operand.position);
    }
}

std::optional<std::vector<TypedOperand>> Emitter::popIfProducedBy(const TypedOperand& value, Kernel kernel) {
    const bool isUsedOnce = !moreUses.contains({value.operand.in, value.operand.position}) && areLastValuesFree;
    if (buffers == Buffers::Kept || code.steps.empty() || value.operand.in != Operand::In::Buffer || !isUsedOnce) {
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

TypedOperand Emitter::repeated(const TypedOperand& value, IterationDomain domain, const Shape& shape, std::size_t width,
                               std::size_t offset) {
    Step step;
    step.kernel = broadcastKernel(value.type);
    step.offset = offset;
    step.domain = domain;
    step.shape = shape;
    step.width = width;
    return emitStep(step, {value}, value.type);
}

void Emitter::emitLengthCheck(const Shape& shape, const Shape& other, std::size_t offset) {
    if (shape == other || !equalLengths.insert({shape, other}).second) {
        return;
    }
    Step step;
    step.offset = offset;
    step.domain = IterationDomain::Lengths;
    step.shape = shape;
    step.otherShape = other;
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
    code.resultShape = whole.shape;
    code.type = whole.type;
    code.isList = whole.isList;
    std::sort(code.usedColumns.begin(), code.usedColumns.end());
    return std::move(code);
}

}  // namespace velmorak::expression
