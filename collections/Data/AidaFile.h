#pragma once

#include "files/FileList.h"

#include <velmorak/Kind.h>

namespace velmorak {

/// Inputs of a kind that reads an AIDA file.
/// @param objects type of object, for the descriptions: "histogram", "tuple or cloud".
std::vector<InputSpec> aidaInputs(const std::string& objects, const std::string& example);

/// Sentence about an empty name of a file, after a blank.
inline constexpr const char* aidaIfEmpty = " Empty: the file given with -a on the command line.";

/// @return the file that the inputs name. @throws Failure if they name none.
std::filesystem::path aidaFileOf(const Arguments& arguments, const RunContext& context);

/// @return the files that the inputs name. @throws Failure if they name none, and as findFiles.
FileList aidaFilesOf(const Arguments& arguments, RunContext& context);

}  // namespace velmorak
