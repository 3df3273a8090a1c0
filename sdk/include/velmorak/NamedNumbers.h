#pragma once

#include <velmorak/Ports.h>
#include <velmorak/Run.h>
#include <velmorak/Table.h>

#include <map>
#include <string>
#include <vector>

namespace velmorak {

/// Numbers that a plug-in's expressions use beside the columns of its table. Each bare name in the expressions is an
/// optional number input of that name, which may be written or fed by a wire. Which of the names are columns shows only
/// in the run: a column goes before the number.
///
/// A name in back quotes is always a column, and so is one that is also the name of an input that the plug-in has
/// anyway. Expressions that came by wire have columns only: their names were not known when the ports were made.
class NamedNumbers {
public:
    struct Text {
        std::string input;       ///< That the expression stands in.
        std::string expression;  ///< May hold mistakes, or be empty: it then has no names.
    };

    /// @param fixed inputs of the plug-in without those of the names.
    NamedNumbers(std::vector<Text> expressions, const std::vector<InputSpec>& fixed);

    /// Most names that get an input; those that follow are columns.
    static constexpr std::size_t most = 64;

    /// The inputs, in the order in which the names appear.
    std::vector<InputSpec> inputs() const;

    /// What the run found at the inputs, of names that are no columns. Warns of an input with a number whose name is a
    /// column.
    /// @throws Failure for a name that is neither a column nor has a number.
    std::map<std::string, double> values(const Arguments& arguments, const Schema& columns, RunContext& context) const;

private:
    void refuseUnknown(const Text& text, const Schema& columns, const std::map<std::string, double>& numbers) const;

    std::vector<Text> texts;
    std::vector<std::string> fixedNames;
    std::vector<std::string> names;
};

/// @return true for a word that an expression takes, without quotes, as the name of a column.
bool isColumnName(const std::string& word);

}  // namespace velmorak
