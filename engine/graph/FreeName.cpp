#include "graph/FreeName.h"

#include <array>
#include <charconv>
#include <cstdint>

namespace velmorak {

std::string freeName(const std::string& wanted, const std::function<bool(const std::string&)>& isTaken) {
    std::string candidate = wanted;
    for (std::uint64_t number = 1; isTaken(candidate); ++number) {
        std::array<char, 20> digits{};
        const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), number).ptr;
        candidate = wanted + std::string(digits.data(), end);
    }
    return candidate;
}

}  // namespace velmorak
