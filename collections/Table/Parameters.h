#pragma once

#include <velmorak/Kind.h>

/// Numbers that an expression may use beside the columns. Their names are listed in the value "parameters"; each name
/// is an input of its own, so that a cut can come by wire.
namespace velmorak {

inline constexpr std::size_t maxParameters = 16;

/// @return true for a word that an expression takes as the name of a column or number.
bool isColumnName(const std::string& word);

/// The usable names of a list separated by blanks or commas, each once, at most maxParameters. Never throws: a document
/// may hold any text.
/// @param taken names of the kind's other inputs, which are left out.
std::vector<std::string> parameterNames(const std::string& list, const std::vector<std::string>& taken);

/// @return an empty text, or why the list cannot be used, as a sentence.
std::string parameterRefusal(const std::string& list, const std::vector<std::string>& taken);

/// The input that holds the list.
InputSpec parameterListInput();

/// Appends an input for each name that the values list.
void addParameterInputs(Ports& ports, const ValueTexts& values);

/// The numbers that the run found at these inputs.
/// @throws Failure if the list came by wire, or a name is also that of a column.
std::map<std::string, double> parameterNumbers(const Arguments& arguments, const Schema& schema,
                                               const std::vector<std::string>& taken);

/// @return an empty text, or the mistake in the expression. An empty expression is no mistake yet.
std::string expressionRefusal(const std::string& text);

}  // namespace velmorak
