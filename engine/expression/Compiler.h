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

private:
    TypedOperand compile(const Tree& tree, Scope& scope);

    TypedOperand compiled(const Node& node);

    TypedOperand called(const Node& node);

    [[noreturn]] void failUnknown(const Node& node) const;

    TypedOperand reduced(const Node& node, const TypedOperand& list);

    /// @name Functions of lists
    /// @{
    using Arguments = std::vector<TypedOperand>;
    struct ListCall;
    static const ListCall* findListCall(std::string_view name);
    TypedOperand calledOnLists(const Node& node, const ListCall& function, const Arguments& arguments);
    TypedOperand indexed(const Node& node, const Arguments& arguments);
    TypedOperand taken(const Node& node, const TypedOperand& list, const TypedOperand& positions);
    TypedOperand asIndex(const Node& node, const Arguments& arguments);
    TypedOperand slicePositions(const Node& node, const Arguments& arguments);
    TypedOperand reversePositions(const Node& node, const Arguments& arguments);
    TypedOperand uniquePositions(const Node& node, const Arguments& arguments);
    TypedOperand order(const Node& node, const Arguments& arguments);
    TypedOperand pairs(const Node& node, const Arguments& arguments);
    TypedOperand triples(const Node& node, const Arguments& arguments);
    TypedOperand nearest(const Node& node, const Arguments& arguments);
    TypedOperand concat(const Node& node, const Arguments& arguments);
    TypedOperand element(const Node& node, const Arguments& arguments);
    TypedOperand elementOfCombinations(const Node& node, const TypedOperand& list);
    TypedOperand total(const Node& node, const Arguments& arguments);
    TypedOperand isMissing(const Node& node, const Arguments& arguments);
    TypedOperand checkedNumber(const Node& node, const Arguments& arguments);
    const TypedOperand& wantList(const Node& node, const TypedOperand& value) const;
    TypedOperand combinations(const Node& node, ListKernel kernel, const Arguments& lists, std::size_t width);
    std::string partOf(const Node& node) const;
    /// @}

    void checkArguments(const Node& node, const Function& function, const std::vector<TypedOperand>& arguments) const;

    TypedOperand applied(const Node& node, const Function& function, const std::vector<TypedOperand>& arguments);

    TypedOperand ofReals(const Node& node, const Function& function, const std::vector<TypedOperand>& arguments);
    TypedOperand ofTexts(const Node& node, const Function& function, const std::vector<TypedOperand>& arguments);
    /// @return the compiled regular expression that a text in quotes is, as a constant.
    TypedOperand pattern(const Node& node, const TypedOperand& text);

    TypedOperand arithmetic(const Node& node, const Function& function, const std::vector<TypedOperand>& arguments);

    /// Fuses a product with the sum or difference that follows into one step, which rounds twice as before.
    std::optional<TypedOperand> joinedWithProduct(const Node& node, const std::vector<TypedOperand>& values);

    /// @return the common type in which two values are compared or chosen.
    ColumnType compared(const Node& node, const std::vector<TypedOperand>& pair) const;

    std::vector<TypedOperand> conditions(const Node& node, const std::vector<TypedOperand>& arguments);

    TypedOperand choice(const Node& node, const Function& function, const std::vector<TypedOperand>& arguments);

    TypedOperand emit(const Node& node, const Function& function, ColumnType argumentType,
                      const std::vector<TypedOperand>& values, ColumnType type);

    TypedOperand converted(const Node& call, const Node& argument, const TypedOperand& value, ColumnType type);

    /// @return the values, converted to the type.
    std::vector<TypedOperand> all(const Node& node, const std::vector<TypedOperand>& values, ColumnType type);

    std::size_t placeOf(const Node& node) const { return definitionOffset.value_or(node.offset); }

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
