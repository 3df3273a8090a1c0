#pragma once

#include <velmorak/Kind.h>

#include <string>

/// The inputs of kinds that write a file into the results folder.
namespace velmorak {

/// The plug-in's name as a file name: path separators become "_".
std::string asFileName(const std::string& pluginName);

/// The input "file".
/// @param ending such as ".csv".
/// @param remark follows "results folder" in the description, for example ", which is gzipped if it ends with .gz".
InputSpec writtenFileInput(const std::string& ending, const std::string& remark = "");

/// @return the value of the input "file"; if it is empty, the name of the plug-in with the ending.
std::string writtenFileName(const Arguments& arguments, const RunContext& context, const std::string& ending);

}  // namespace velmorak
