#pragma once

#include <filesystem>

namespace velmorak {

/// Loads a shared object for the rest of the program, from a copy in memory, so that overwriting the file does not
/// affect this program. An object that needs other files beside it is loaded from its own path instead.
/// @return the loader's handle.
/// @throws std::runtime_error with the reason, also for a truncated file.
void* loadSharedObject(const std::filesystem::path& file);

/// @return address of a function or constant of the object.
/// @throws std::runtime_error when the object does not export the name.
void* symbolIn(void* object, const char* name);

}  // namespace velmorak
