#pragma once

#include <velmorak/Ports.h>
#include <velmorak/Run.h>
#include <velmorak/Table.h>

#include <map>
#include <string>
#include <vector>

namespace velmorak {

/// Numbers that a plug-in's expressions use beside the columns of its table. Each bare name in the expressions becomes
/// an optional number input, set as text or fed by a wire. Whether a name is a column is known only during the run: a
/// column takes precedence over the number.
///
/// A name in back quotes always means a column, and so does the name of a fixed input of the plug-in. An expression
/// that arrives by wire can use columns only, because the ports exist before its names are known.
class NamedNumbers {
public:
    struct Text {
        std::string input;       ///< Name of the input that holds the expression.
        std::string expression;  ///< Contributes no names if it has mistakes or is empty.
    };

    /// @param fixed the plug-in's other inputs.
    NamedNumbers(std::vector<Text> expressions, const std::vector<InputSpec>& fixed);

    /// Further names get no input: they mean columns.
    static constexpr std::size_t maxNames = 64;

    /// One input per name, in order of appearance.
    std::vector<InputSpec> inputs() const;

    /// @return the numbers of the names that are not columns. Warns about an input with a number that a column of the
    ///         same name hides.
    /// @throws Failure for a name that is not a column and has no number.
    std::map<std::string, double> values(const Arguments& arguments, const Schema& columns, RunContext& context) const;

private:
    void checkKnown(const Text& text, const Schema& columns, const std::map<std::string, double>& numbers) const;

    std::vector<Text> texts;
    std::vector<std::string> fixedNames;
    std::vector<std::string> names;
};

/// The word can be written in an expression without quotes to mean a column of that name.
bool isColumnName(const std::string& word);

}  // namespace velmorak
