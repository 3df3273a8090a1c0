#pragma once

#include "run/parts/JobPlan.h"
#include "run/plan/Pipeline.h"

#include <atomic>
#include <filesystem>

/// Jobs whose folder goes to other machines, each time with the files of one part.
namespace velmorak {

/// Prepares a planned job for that: notes where each file is relative to the folder of the job, and its checksum, for
/// which it is read; copies files that all parts need, such as lists; and writes for each part inputs/00001.txt, a line
/// for each file that it reads.
/// @param job absolute path of the folder.
/// @throws Failure if a file cannot be read or copied; Stopped.
void bundleFiles(JobPlan& plan, const std::filesystem::path& job, const std::atomic<bool>& stopping);

/// Finds the files of a bundle that are not where they were, with the time that they had: under their paths relative to
/// the folder of the job, or else beside this folder.
MovedFiles movedFiles(const JobPlan& plan, const std::filesystem::path& job);

}  // namespace velmorak
