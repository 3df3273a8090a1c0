#pragma once

#include "KindHarness.h"

#include <string>

/// The files that a Plot named "bench" leaves.
namespace velmorak::test {

/// @return the script of the picture.
inline std::string script(const KindHarness& bench) {
    return textIn(bench.folder() / "bench.gp");
}

inline bool hasText(const std::string& text, const std::string& part) {
    return text.find(part) != std::string::npos;
}

/// How often a part is in a text.
inline int countOf(const std::string& text, const std::string& part) {
    int count = 0;
    for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + part.size())) {
        ++count;
    }
    return count;
}

/// Numbers of a line of the data file that begins with a text.
inline std::string lineOf(const KindHarness& bench, const std::string& begin) {
    const std::string text = "\n" + textIn(bench.folder() / "bench.dat");
    const std::size_t at = text.find("\n" + begin);
    return at == std::string::npos ? "" : text.substr(at + 1, text.find('\n', at + 1) - at - 1);
}

}  // namespace velmorak::test
