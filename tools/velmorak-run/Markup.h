#pragma once

#include <string>
#include <string_view>

/// Texts as content or attributes of HTML and SVG, whatever they contain.
std::string markupText(std::string_view text);

/// A path relative to the page, as the address of a link.
std::string relativeAddress(std::string_view path);
