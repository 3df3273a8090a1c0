#pragma once

#include <string>
#include <vector>

/// Builds pieces of a page that is both HTML and well-formed XML.
namespace velmorak {

/// Escapes a text for element content or an attribute. Characters that XML does not allow become U+FFFD.
std::string escaped(const std::string& text);

/// <tag>text</tag>, with the text escaped.
std::string element(const std::string& tag, const std::string& text);

/// A table of texts below a row of headings. Columns from firstNumber on are right-aligned.
std::string htmlTable(const std::vector<std::string>& headings, const std::vector<std::vector<std::string>>& rows,
                      std::size_t firstNumber = static_cast<std::size_t>(-1));

/// Prepares an SVG file for embedding into a page: drops the XML prologue and prefixes all ids, so that several fit in
/// one page.
std::string inlineSvg(const std::string& file, const std::string& prefix);

}  // namespace velmorak
