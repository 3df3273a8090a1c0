#pragma once

#include "files/FileChain.h"

#include <velmorak/Kind.h>

#include <memory>
#include <string>
#include <vector>

namespace velmorak {

/// The input "file" of a source that reads one or several files as a table.
/// @param formats what a file is, for example "AIDA file, plain or compressed".
/// @param ifEmpty sentence about an empty value, after a blank; empty if a file must be given.
InputSpec fileListInput(const std::string& formats, const std::string& ifEmpty = "");

/// The input "file" of a kind that adds the objects of one or several files.
InputSpec summedFilesInput(const std::string& formats, const std::string& ifEmpty);

/// The input "columns" of a source that reads chosen columns.
InputSpec columnsInput();

/// The ports of a source that reads one or several files as a table: these inputs, those that say what to do with
/// several files, and the output "table".
/// @param rows description of the output.
Ports fileTablePorts(std::vector<InputSpec> inputs, const std::string& rows = "The rows of the files.");

/// Finds the files that the input "file" names. @throws as findFiles.
FileList filesOf(const Arguments& arguments, RunContext& context);

std::vector<std::filesystem::path> pathsOf(const FileList& list);

/// Opens the files as the values of the inputs of fileTablePorts say.
std::unique_ptr<TableReader> openFilesOf(FileList list, std::shared_ptr<const FileOpener> opener,
                                         const Arguments& arguments, RunContext& context);

}  // namespace velmorak
