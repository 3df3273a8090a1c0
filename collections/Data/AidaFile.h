#pragma once

#include <velmorak/Kind.h>

namespace velmorak {

/// Inputs of a kind that reads an AIDA file.
/// @param objects type of object, for the descriptions: "histogram", "tuple or cloud".
std::vector<InputSpec> aidaInputs(const std::string& objects, const std::string& example);

/// @return the file that the inputs name. @throws Failure if they name none.
std::filesystem::path aidaFileOf(const Arguments& arguments, const RunContext& context);

}  // namespace velmorak
