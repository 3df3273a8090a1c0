#pragma once

#include <cstddef>
#include <string>

/// @param text a number from 1 on, or "auto": the number that a batch system gives in the environment.
/// @return the number of a part, counted from 1. @throws UsageError if there is none.
std::size_t partNumberOf(const std::string& text);
