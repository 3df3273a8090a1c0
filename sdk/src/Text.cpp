#include <velmorak/Text.h>

#include <algorithm>
#include <numeric>
#include <utility>

namespace velmorak {

namespace {

/// Longer names are compared by their beginnings, so that the distance of two long texts costs no noticeable time.
constexpr std::size_t maxCompared = 200;

char lower(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

}  // namespace

std::string quoted(std::string_view text) {
    std::string result;
    result.reserve(text.size() + 2);
    result += '"';
    result += text;
    result += '"';
    return result;
}

std::size_t editDistance(std::string_view a, std::string_view b) {
    std::vector<std::size_t> row(b.size() + 1);
    std::iota(row.begin(), row.end(), std::size_t{0});
    for (std::size_t i = 0; i < a.size(); ++i) {
        std::size_t diagonal = row[0];
        row[0] = i + 1;
        for (std::size_t j = 0; j < b.size(); ++j) {
            const std::size_t replaced = diagonal + (lower(a[i]) == lower(b[j]) ? 0 : 1);
            diagonal = row[j + 1];
            row[j + 1] = std::min({replaced, row[j] + 1, diagonal + 1});
        }
    }
    return row.back();
}

std::string suggestion(std::string_view unknown, const std::vector<std::string>& known) {
    std::size_t limit = std::max<std::size_t>(1, unknown.size() / 3) + 1;
    const std::string* nearest = nullptr;
    for (const std::string& name : known) {
        const std::size_t distance =
            editDistance(unknown.substr(0, maxCompared), std::string_view(name).substr(0, maxCompared));
        if (distance < limit) {
            limit = distance;
            nearest = &name;
        }
    }
    return nearest ? "; did you mean " + velmorak::quoted(*nearest) + "?" : std::string();
}

std::string columnsThere(std::string_view unknown, const std::vector<std::string>& columns) {
    constexpr std::size_t maxShown = 20;
    std::vector<std::pair<std::size_t, std::size_t>> order;  // Distance and position.
    for (std::size_t i = 0; i < columns.size(); ++i) {
        order.emplace_back(
            editDistance(unknown.substr(0, maxCompared), std::string_view(columns[i]).substr(0, maxCompared)), i);
    }
    std::sort(order.begin(), order.end());
    std::string text;
    for (std::size_t i = 0; i < std::min(order.size(), maxShown); ++i) {
        text += (i == 0 ? "" : ", ") + velmorak::quoted(columns[order[i].second]);
    }
    if (columns.size() > maxShown) {
        text += " and " + std::to_string(columns.size() - maxShown) + " more";
    }
    return text.empty() ? text : (columns.size() == 1 ? "; the only column is " : "; the columns are ") + text;
}

}  // namespace velmorak
