#pragma once

#include <filesystem>

namespace velmorak {

/// Loads a shared object for good, from a copy in memory: whoever writes over the file changes nothing for this
/// program. An object that needs others beside it cannot be loaded from there, and is loaded from its place.
/// @return the loader's handle.
/// @throws std::runtime_error with the reason: a file that is cut off is one.
void* loadSharedObject(const std::filesystem::path& file);

/// @return a function or a constant of the object.
/// @throws std::runtime_error when it offers none of that name.
void* symbolIn(void* object, const char* name);

}  // namespace velmorak
