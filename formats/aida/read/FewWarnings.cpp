#include "aida/read/FewWarnings.h"

#include <fmt/format.h>

namespace velmorak::io {

namespace {

constexpr std::size_t maxWarnings = 20;

}  // namespace

void FewWarnings::add(const std::string& sentence) {
    if (++count <= maxWarnings) {
        context.warn(sentence);
    }
}

void FewWarnings::finish(const std::string& file) {
    if (count > maxWarnings) {
        const std::size_t left = count - maxWarnings;
        context.warn(fmt::format("{}: {} more {} left out", file, left, left == 1 ? "warning is" : "warnings are"));
    }
    count = 0;
}

}  // namespace velmorak::io
