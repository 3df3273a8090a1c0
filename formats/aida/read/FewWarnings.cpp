#include "aida/read/FewWarnings.h"

#include <fmt/format.h>

namespace velmorak::io {

namespace {

constexpr std::size_t most = 20;

}  // namespace

void FewWarnings::add(const std::string& sentence) {
    if (++count <= most) {
        context.warn(sentence);
    }
}

void FewWarnings::finish(const std::string& file) {
    if (count > most) {
        const std::size_t left = count - most;
        context.warn(fmt::format("{}: {} more {} left out", file, left, left == 1 ? "warning is" : "warnings are"));
    }
    count = 0;
}

}  // namespace velmorak::io
