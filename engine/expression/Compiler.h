#pragma once

#include "expression/Emitter.h"
#include "expression/Syntax.h"
#include "expression/Tree.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace velmorak::expression {

class Compiler;

/// The meaning of names: columns and numbers of a table, or the variable, shapes and parameters of a fit.
class Scope {
public:
    virtual ~Scope() = default;

    /// @throws Failure for a name without a meaning.
    virtual TypedOperand named(const Node& node, Compiler& compiler) = 0;
    /// @return the value of a call that has a meaning here only; no value for the functions of the language.
    virtual std::optional<TypedOperand> called(const Node& /*call*/, const std::vector<TypedOperand>& /*arguments*/,
                                               Compiler& /*compiler*/) {
        return std::nullopt;
    }
    /// @return the names that called knows, for suggestions.
    virtual std::vector<std::string> callableNames() const { return {}; }
};

/// @return "a list of type real" and the like, for messages.
std::string shown(const TypedOperand& value);

/// Checks the types of a syntax tree and emits its steps: the one compiler of the language.
class Compiler {
public:
    Compiler(std::string_view source, Buffers buffers)
        : source(source), emitter(buffers), joinsEqual(buffers == Buffers::Reused) {}

    /// Compiles a tree whose nodes are those of the text.
    TypedOperand compile(const std::vector<Node>& parsed, Scope& scope);
    /// Compiles the tree of another text, the definition of what the text has at the offset. Messages point there.
    TypedOperand compileDefinition(const Tree& tree, Scope& scope, std::size_t offset);

    Emitter& steps() { return emitter; }
    Code finish(const TypedOperand& whole) && { return std::move(emitter).finish(whole); }
    /// @throws Failure that shows the text with a caret under the node.
    [[noreturn]] void fail(const Node& node, const std::string& reason,
                           Failure::Cause cause = Failure::Cause::Other) const;

    TypedOperand constant(double value) { return emitter.constant(value, ColumnType::Real); }
    /// @return the value as a real; booleans and integers are converted.
    TypedOperand asReal(const Node& node, const TypedOperand& value);

    /// @name For the functions of lists and texts
    /// @{
    /// An argument of a call in the tree that is compiled.
    const Node& child(const Node& call, std::size_t argument) const { return (*nodes)[call.children[argument]]; }
    /// @return the source text of a node.
    std::string sourceOf(const Node& node) const;
    /// @return the offset that a message about the node points to.
    std::size_t placeOf(const Node& node) const { return definitionOffset.value_or(node.offset); }
    /// The program is the model of a fit.
    bool isModel() const { return !joinsEqual; }
    TypedOperand emit(const Node& node, const Function& function, ColumnType argumentType,
                      const std::vector<TypedOperand>& values, ColumnType type);
    TypedOperand converted(const Node& call, const Node& argument, const TypedOperand& value, ColumnType type);
    /// @return the values, converted to the type.
    std::vector<TypedOperand> all(const Node& node, const std::vector<TypedOperand>& values, ColumnType type);
    /// @return the common type in which two values are compared or chosen.
    ColumnType compared(const Node& node, const std::vector<TypedOperand>& pair) const;
    /// @}

private:
    TypedOperand compile(const Tree& tree, Scope& scope);

    TypedOperand compiled(const Node& node);

    TypedOperand called(const Node& node);

    [[noreturn]] void failUnknown(const Node& node) const;

    void checkArguments(const Node& node, const Function& function, const std::vector<TypedOperand>& arguments) const;

    TypedOperand applied(const Node& node, const Function& function, const std::vector<TypedOperand>& arguments);

    TypedOperand ofReals(const Node& node, const Function& function, const std::vector<TypedOperand>& arguments);

    TypedOperand arithmetic(const Node& node, const Function& function, const std::vector<TypedOperand>& arguments);

    /// Fuses a product with the sum or difference that follows into one step, which rounds twice as before.
    std::optional<TypedOperand> joinedWithProduct(const Node& node, const std::vector<TypedOperand>& values);

    std::vector<TypedOperand> conditions(const Node& node, const std::vector<TypedOperand>& arguments);

    TypedOperand choice(const Node& node, const Function& function, const std::vector<TypedOperand>& arguments);

    std::string_view source;
    Emitter emitter;
    bool joinsEqual;
    const std::vector<Node>* nodes = nullptr;
    const std::vector<std::size_t>* uses = nullptr;  ///< Of each node.
    Scope* names = nullptr;
    std::vector<TypedOperand> typed;              ///< The value of each node.
    std::optional<std::size_t> definitionOffset;  ///< Of the definition being compiled.
};

}  // namespace velmorak::expression
