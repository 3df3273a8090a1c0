#include "isolate/Declaration.h"

#include "isolate/Codec.h"
#include "run/messages/NodeError.h"
#include "run/record/KindBuild.h"

#include <velmorak/Parts.h>

#include <utility>

namespace velmorak::isolation {
namespace {

Shape shapeOf(const Kind* kind) {
    if (!kind) {
        return Shape::Null;
    }
    if (dynamic_cast<const Source*>(kind)) {
        return Shape::Source;
    }
    if (dynamic_cast<const RowWise*>(kind)) {
        return dynamic_cast<const CountingKind*>(kind) ? Shape::CountingRowWise : Shape::RowWise;
    }
    if (dynamic_cast<const Concatenation*>(kind)) {
        return Shape::Concatenation;
    }
    if (dynamic_cast<const Accumulator*>(kind)) {
        return Shape::Accumulator;
    }
    return dynamic_cast<const Function*>(kind) ? Shape::Function : Shape::Other;
}

void ask(const Kind& kind, Declaration& said) {
    said.name = kind.name();
    said.summary = kind.summary();
    said.notes = kind.notes();
    said.build = buildOf(kind);
    said.version = kind.version();
    said.isRunReporter = kind.isRunReporter();
    said.ports = kind.ports({});
    if (const auto* const source = dynamic_cast<const Source*>(&kind)) {
        said.tellsColumns = source->tellsColumns();
    } else if (const auto* const accumulator = dynamic_cast<const Accumulator*>(&kind)) {
        said.isOrdered = accumulator->mergeOrder() == Accumulator::MergeOrder::FirstToLast;
    }
}

void write(MessageWriter& message, const Declaration& said) {
    for (const std::string* const text :
         {&said.group, &said.error, &said.name, &said.summary, &said.notes, &said.build}) {
        message.text(*text);
    }
    message.number(said.shape);
    message.number(said.version);
    message.flag(said.isRunReporter);
    message.flag(said.tellsColumns);
    message.flag(said.isOrdered);
    isolation::write(message, said.ports);
}

Declaration readDeclaration(MessageReader& message) {
    Declaration said;
    for (std::string* const text : {&said.group, &said.error, &said.name, &said.summary, &said.notes, &said.build}) {
        *text = message.text();
    }
    said.shape = message.number<Shape>();
    said.version = message.number<int>();
    said.isRunReporter = message.flag();
    said.tellsColumns = message.flag();
    said.isOrdered = message.flag();
    said.ports = readPorts(message);
    return said;
}

}  // namespace

Declaration declarationOf(const Kind* kind, std::string group) {
    Declaration said;
    said.group = std::move(group);
    said.shape = shapeOf(kind);
    if (kind) {
        if (const auto error = errorIn([&] { ask(*kind, said); })) {
            said.error = error->sentence;
        }
    }
    return said;
}

void write(MessageWriter& message, const Declarations& declarations) {
    message.number<std::uint64_t>(declarations.kinds.size());
    for (const Declaration& each : declarations.kinds) {
        write(message, each);
    }
    message.flag(declarations.hasFormats);
}

Declarations readDeclarations(MessageReader& message) {
    Declarations declarations;
    for (std::size_t left = message.count(); left > 0; --left) {
        declarations.kinds.push_back(readDeclaration(message));
    }
    declarations.hasFormats = message.flag();
    return declarations;
}

}  // namespace velmorak::isolation
