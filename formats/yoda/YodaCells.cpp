#include "yoda/YodaCells.h"

#include <velmorak/Text.h>

#include <string_view>

namespace velmorak::yoda {

double numberIn(const std::string& word) {
    double number = 0.0;
    if (!readNumber(word, number)) {
        throw Fault(velmorak::quoted(word.substr(0, 40)) + " is not a number");
    }
    return number;
}

std::vector<double> numbersIn(const std::vector<std::string>& words) {
    std::vector<double> numbers;
    numbers.reserve(words.size());
    for (const std::string& word : words) {
        numbers.push_back(numberIn(word));
    }
    return numbers;
}

Axis axisOf(const std::string& edges) {
    const std::size_t begin = edges.find('[');
    const std::size_t end = edges.rfind(']');
    if (begin == std::string::npos || end == std::string::npos || end < begin) {
        throw Fault("its edges are not in square brackets");
    }
    std::string_view rest = std::string_view(edges).substr(begin + 1, end - begin - 1);
    std::vector<double> numbers;
    std::vector<std::string> names;
    while (!trimmed(rest).empty()) {
        const std::size_t comma = std::min(rest.find(','), rest.size());
        const std::string_view word = trimmed(rest.substr(0, comma));
        if (word.size() >= 2 && (word.front() == '"' || word.front() == '\'')) {
            names.emplace_back(word.substr(1, word.size() - 2));
        } else {
            numbers.push_back(numberIn(std::string(word)));
        }
        rest.remove_prefix(std::min(comma + 1, rest.size()));
    }
    if (!names.empty() && !numbers.empty()) {
        throw Fault("its edges are partly numbers and partly names");
    }
    return names.empty() ? Axis(std::move(numbers)) : Axis::ofCategories(std::move(names));
}

Axis axisOf(std::vector<std::pair<double, double>> bins) {
    std::sort(bins.begin(), bins.end());
    bins.erase(std::unique(bins.begin(), bins.end()), bins.end());
    std::vector<double> edges;
    for (const auto& [low, high] : bins) {
        if (!edges.empty() && low < edges.back()) {
            throw Fault("its bins overlap");
        }
        if (edges.empty() || low > edges.back()) {
            edges.push_back(low);
        }
        edges.push_back(high);
    }
    return Axis(std::move(edges));
}

}  // namespace velmorak::yoda
