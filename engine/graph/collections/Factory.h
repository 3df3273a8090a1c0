#pragma once

#include <velmorak/Collection.h>

#include <filesystem>
#include <string>

namespace velmorak {

/// Loads a collection and has it register what it offers. It stays loaded to the end of the program, even when it is
/// skipped: threads that it has started may still run.
/// @throws std::exception with the reason if it cannot be used.
void registerInto(Registry& registry, const std::filesystem::path& object, const std::string& factory);

}  // namespace velmorak
