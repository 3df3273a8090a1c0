#pragma once

#include <string>
#include <vector>

/// Pieces of a page that is HTML and well-formed XML at once.
namespace velmorak {

/// A text between tags or in an attribute. What XML may not hold becomes U+FFFD.
std::string escaped(const std::string& text);

/// <tag>text</tag>, with the text escaped.
std::string element(const std::string& tag, const std::string& text);

/// A table of texts below a row of headings. The columns from firstNumber on stand to the right.
std::string htmlTable(const std::vector<std::string>& headings, const std::vector<std::vector<std::string>>& rows,
                      std::size_t firstNumber = static_cast<std::size_t>(-1));

/// An SVG file as a part of a page: without what only a file has, and with a prefix before all its ids, so that several
/// can stand in one page.
std::string inlineSvg(const std::string& file, const std::string& prefix);

}  // namespace velmorak
