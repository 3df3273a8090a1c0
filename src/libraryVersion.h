#pragma once

#include <string>

/// @return the reason why the program cannot work with the analysis library that the loader has found; empty if it can.
///         Calls no function of the library.
std::string libraryError();
