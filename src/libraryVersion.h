#pragma once

#include <string>

/// @return empty, or why the program cannot work with the analysis library that the loader has found. Calls nothing of
///         the library.
std::string libraryObjection();
