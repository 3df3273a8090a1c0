#pragma once

#include <velmorak/Kind.h>

#include <filesystem>
#include <memory>
#include <optional>
#include <string_view>

namespace velmorak {

enum class EventFormat { HepMc2, HepMc3, LesHouches };

/// @param head the first bytes of a file, unpacked.
/// @return nothing if they begin no file of events.
std::optional<EventFormat> eventFormatOf(std::string_view head);

/// Reads events of generators, HepMC 2 or 3 in ASCII or Les Houches events, plain or compressed, as a table with a row
/// for each event and lists of its particles. Momenta, energies and masses are in GeV.
/// @param context outlives the reader.
/// @throws Failure for the input "file" if it cannot be opened or is no such file.
std::unique_ptr<TableReader> openEvents(const std::filesystem::path& file, RunContext& context);

}  // namespace velmorak
