#pragma once

#include <velmorak/Kind.h>

namespace velmorak {

/// Inputs of a kind that reads an AIDA file.
/// @param objects what the file is searched for: "histogram", "tuple or cloud".
std::vector<InputSpec> aidaInputs(const std::string& objects, const std::string& example);

/// The file that the inputs name. @throws Failure when they name none.
std::filesystem::path aidaFileOf(const Arguments& arguments, const RunContext& context);

}  // namespace velmorak
