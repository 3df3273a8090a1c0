#pragma once

#include <filesystem>
#include <string>
#include <vector>

/// Programs in JavaScript that serve tests and benchmarks as independent readers and peers. They import packages that
/// scripts/prepare has installed from npm (scripts/packages.txt) by load.mjs:
///     import { load } from "../../support/npm/load.mjs";
///     const { openFile } = await load("jsroot");
namespace velmorak::npm {

/// @return why a test that needs these packages must be skipped; empty if they are installed.
std::string missing(const std::vector<std::string>& packages);

/// Runs a script with Node until it ends.
/// @return what it wrote to standard output; errors go to ours.
/// @throws std::runtime_error if it cannot be run or its exit status is not 0; the message has its output.
std::string run(const std::filesystem::path& script, const std::vector<std::string>& arguments);

}  // namespace velmorak::npm
