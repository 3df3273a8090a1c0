#pragma once

#include <string>
#include <string_view>

/// A file of the page, compiled into the program from the folder page.
/// @return null if there is none of that name.
const std::string_view* partOfPage(const std::string& name);
