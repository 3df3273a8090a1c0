#pragma once

#include <velmorak/Ports.h>
#include <velmorak/Run.h>
#include <velmorak/Table.h>

#include <map>
#include <string>
#include <vector>

namespace velmorak {

/// Numbers that a plug-in's expressions use beside the columns of its table. A name with an @ before it, such as @cut,
/// always means a number: the plug-in has an input "cut" for it. A bare name means a column, or a number where the
/// pipeline gives one to an input of that name, by wire or as a value.
///
/// A name in back quotes always means a column, and so does the bare name of a fixed input of the plug-in. An
/// expression that arrives by wire can use columns only, because the ports exist before its names are known.
class NamedNumbers {
public:
    struct Text {
        std::string input;       ///< Name of the input that holds the expression.
        std::string expression;  ///< Contributes no names if it has mistakes or is empty.
    };

    /// @param fixed the plug-in's other inputs.
    NamedNumbers(std::vector<Text> expressions, const std::vector<InputSpec>& fixed);

    /// Further names get no input.
    static constexpr std::size_t maxNames = 64;

    /// One optional number input per name, in order of appearance, without @.
    std::vector<InputSpec> inputs() const;
    /// The same for names with @, and for bare names that the pipeline gives a number.
    /// @param given what Kind::ports receives: has an entry for every input with a wire or a value.
    std::vector<InputSpec> inputs(const ValueTexts& given) const;

    /// @return the numbers of the names that are not columns, as the expressions write them: with @, where it is. Warns
    ///         about an input with a number that a column of the same name hides.
    /// @throws Failure for a name that is not a column and has no number.
    std::map<std::string, double> values(const Arguments& arguments, const Schema& columns, RunContext& context) const;

    /// @return the input of a name as an expression writes it.
    static std::string inputOf(const std::string& name);

private:
    struct Name {
        std::string input;
        bool isMarked = false;  ///< Somewhere written with @.
        bool isBare = false;    ///< Somewhere written without.
    };

    void add(const std::string& written);
    void checkKnown(const Text& text, const Schema& columns, const std::map<std::string, double>& numbers) const;

    std::vector<Text> texts;
    std::vector<std::string> fixedNames;
    std::vector<Name> names;
};

/// The word can be written in an expression without quotes to mean a column of that name.
bool isColumnName(const std::string& word);

}  // namespace velmorak
