#pragma once

#include "isolate/Message.h"

#include <velmorak/Kind.h>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace velmorak::isolation {

/// The base class of a kind.
enum class Shape : std::uint8_t { Null, Other, Source, RowWise, CountingRowWise, Concatenation, Accumulator, Function };

/// What a kind says about itself, as its host has asked it.
struct Declaration {
    std::string group;  ///< Empty for the one that a collection begins with.
    Shape shape = Shape::Null;
    std::string error{};  ///< Why the kind cannot say it.
    std::string name{};
    std::string summary{};
    std::string notes{};
    std::string build{};  ///< As buildOf.
    int version = 0;
    bool isRunReporter = false;
    bool tellsColumns = false;  ///< Of a source.
    bool isOrdered = false;     ///< Of an accumulator: states are merged from first to last.
    Ports ports{};              ///< Of a new plug-in.
};

Declaration declarationOf(const Kind* kind, std::string group);

/// What a collection has registered.
struct Declarations {
    std::vector<Declaration> kinds;
    bool hasFormats = false;
};

void write(MessageWriter& message, const Declarations& declarations);
Declarations readDeclarations(MessageReader& message);

}  // namespace velmorak::isolation
