#pragma once

#include "files/FileList.h"
#include "files/FileSurvey.h"

#include <string>

/// The facts about many files as bytes, for factOf: the processes of a run in parts neither look for files
/// that others read nor open them.
namespace velmorak {

std::string bytesOf(const FileList& list);
/// @param context is asked for the path of each file. @throws Failure if the bytes are damaged.
FileList fileListFrom(const std::string& bytes, RunContext& context);

std::string bytesOf(const FileSurvey& survey);
/// @param files number of files in the list. @throws Failure if the bytes are damaged.
FileSurvey fileSurveyFrom(const std::string& bytes, std::size_t files);

}  // namespace velmorak
