#include "expression/Program.h"

#include <algorithm>
#include <numeric>

namespace velmorak::expression {

namespace {

char lower(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

/// Letters that must be put in, taken out or changed to make one word of the other; capitals are like small ones.
std::size_t distance(std::string_view a, std::string_view b) {
    std::vector<std::size_t> row(b.size() + 1);
    std::iota(row.begin(), row.end(), std::size_t{0});
    for (std::size_t i = 0; i < a.size(); ++i) {
        std::size_t diagonal = row[0];
        row[0] = i + 1;
        for (std::size_t j = 0; j < b.size(); ++j) {
            const std::size_t changed = diagonal + (lower(a[i]) == lower(b[j]) ? 0 : 1);
            diagonal = row[j + 1];
            row[j + 1] = std::min({changed, row[j] + 1, diagonal + 1});
        }
    }
    return row.back();
}

}  // namespace

std::string suggestion(std::string_view wrong, const std::vector<std::string>& names) {
    std::size_t least = std::max<std::size_t>(1, wrong.size() / 3) + 1;
    const std::string* nearest = nullptr;
    for (const std::string& name : names) {
        if (const std::size_t away = distance(wrong.substr(0, 200), std::string_view(name).substr(0, 200));
            away < least) {
            least = away;
            nearest = &name;
        }
    }
    return !nearest ? std::string() : R"(; did you mean ")" + *nearest + R"("?)";
}

}  // namespace velmorak::expression
