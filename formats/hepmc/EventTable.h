#pragma once

#include <velmorak/Kind.h>

#include <filesystem>
#include <memory>

namespace velmorak {

/// Reads events of generators, HepMC 2 or 3 in ASCII or Les Houches events, plain or compressed, as a table with a row
/// for each event and lists of its particles. Momenta, energies and masses are in GeV.
/// @param context outlives the reader.
/// @throws Failure for the input "file" if it cannot be opened or is no such file.
std::unique_ptr<TableReader> openEvents(const std::filesystem::path& file, RunContext& context);

}  // namespace velmorak
