#include "Table/groups/NumberGroups.h"

#include "Table/groups/Aggregates.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <numeric>
#include <stdexcept>
#include <utility>

namespace velmorak {

namespace {

constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();

/// Sum of both, and what the addition loses (D. E. Knuth, The Art of Computer Programming 2, 4.2.2).
void addTo(double& sum, double& rest, double term) {
    const double together = sum + term;
    const double part = together - sum;
    rest += (sum - (together - part)) + (term - part);
    sum = together;
}

bool isMissing(double number) {
    return std::isnan(number);
}
bool isMissing(std::int64_t /*number*/) {
    return false;
}

[[noreturn]] void refuse() {
    throw std::invalid_argument("the columns are not those of the values of groups");
}

template <typename Values>
const Values& take(std::span<const ColumnPtr>& columns, std::size_t rows) {
    if (columns.empty() || !std::holds_alternative<Values>(columns.front()->values) || columns.front()->isList()) {
        refuse();
    }
    const auto& values = std::get<Values>(columns.front()->values);
    columns = columns.subspan(1);
    if (values.size() != rows) {
        refuse();
    }
    return values;
}

template <typename Values>
ColumnPtr column(Values values) {
    return std::make_shared<const Column>(Column{std::move(values), {}});
}

template <typename Value, typename Of>
ColumnPtr columnFrom(const std::vector<std::uint32_t>& groups, const Of& of) {
    std::vector<Value> values;
    values.reserve(groups.size());
    for (const std::uint32_t group : groups) {
        values.push_back(of(group));
    }
    return column(std::move(values));
}

double number(std::int64_t value) {
    return static_cast<double>(value);
}
double number(double value) {
    return value;
}

}  // namespace

template <typename Number>
NumberSums<Number> NumberSums<Number>::of(std::span<const Number> numbers) {
    NumberSums sums;
    if (numbers.empty()) {
        return sums;
    }
    // Several sums at once, because each addition waits for the one before it.
    constexpr std::size_t lanes = 4;
    std::array<double, lanes> high{};
    std::array<double, lanes> low{};
    for (std::size_t i = 0; i < numbers.size(); ++i) {
        addTo(high[i % lanes], low[i % lanes], number(numbers[i]));
    }
    for (std::size_t lane = 0; lane < lanes; ++lane) {
        addTo(sums.sum, sums.rest, high[lane]);
        sums.rest += low[lane];
    }
    const auto [smallest, largest] = std::minmax_element(numbers.begin(), numbers.end());
    sums.count = static_cast<std::int64_t>(numbers.size());
    sums.mean = sums.total() / static_cast<double>(sums.count);
    sums.smallest = *smallest;
    sums.largest = *largest;
    sums.first = numbers.front();
    sums.last = numbers.back();
    double distances = 0.0;
    for (const Number value : numbers) {
        const double distance = number(value) - sums.mean;
        distances += distance;
        sums.squares += distance * distance;
    }
    sums.squares = std::max(0.0, sums.squares - distances * distances / static_cast<double>(sums.count));
    return sums;
}

template <typename Number>
void NumberSums<Number>::merge(const NumberSums& other) {
    const std::int64_t missingOfBoth = missing + other.missing;
    if (count == 0) {
        *this = other;
    } else if (other.count > 0) {
        append(other);
    }
    missing = missingOfBoth;
}

template <typename Number>
void NumberSums<Number>::append(const NumberSums& other) {
    const auto mine = static_cast<double>(count);
    const auto others = static_cast<double>(other.count);
    const double distance = other.mean - mean;
    squares += other.squares + distance * distance * (mine * others / (mine + others));
    mean += distance * (others / (mine + others));
    addTo(sum, rest, other.sum);
    rest += other.rest;
    count += other.count;
    smallest = std::min(smallest, other.smallest);
    largest = std::max(largest, other.largest);
    last = other.last;
}

template <typename Number>
double NumberSums<Number>::total() const {
    return std::isfinite(sum) ? sum + rest : sum;
}

template <typename Number>
double NumberSums<Number>::average() const {
    // The sum is more precise, unless it is beyond the largest number.
    if (count == 0 || !std::isfinite(total())) {
        return count == 0 ? notANumber : std::isfinite(mean) ? mean : total() / static_cast<double>(count);
    }
    return total() / static_cast<double>(count);
}

template <typename Number>
double NumberSums<Number>::spread() const {
    return count == 0 || !std::isfinite(total()) ? notANumber : std::sqrt(squares / static_cast<double>(count));
}

template <typename Number>
double NumberSums<Number>::errorOfMean() const {
    return spread() / std::sqrt(static_cast<double>(count));
}

template <typename Number>
void NumberGroups<Number>::fill(const Column& values, const RowsByGroup& rows) {
    const auto& numbers = std::get<Numbers>(values.values);
    Numbers ofGroup;
    all.reserve(rows.groups());
    for (std::size_t group = 0; group < rows.groups(); ++group) {
        ofGroup.clear();
        for (std::uint32_t i = rows.offsets[group]; i < rows.offsets[group + 1]; ++i) {
            if (const Number value = numbers[rows.rows[i]]; !isMissing(value)) {
                ofGroup.push_back(value);
            }
        }
        all.push_back(NumberSums<Number>::of(ofGroup));
        all.back().missing = static_cast<std::int64_t>(rows.offsets[group + 1] - rows.offsets[group] - ofGroup.size());
        if (isKept) {
            keptNumbers += ofGroup.size();
            kept.push_back(ofGroup);
        }
    }
}

template <typename Number>
void NumberGroups<Number>::merge(const GroupValues& other, const std::vector<std::uint32_t>& targets) {
    const auto& more = static_cast<const NumberGroups&>(other);
    for (std::size_t group = 0; group < targets.size(); ++group) {
        all.resize(std::max<std::size_t>(all.size(), targets[group] + 1));
        all[targets[group]].merge(more.all[group]);
    }
    kept.resize(isKept ? all.size() : 0);
    for (std::size_t group = 0; group < more.kept.size(); ++group) {
        Numbers& numbers = kept[targets[group]];
        numbers.insert(numbers.end(), more.kept[group].begin(), more.kept[group].end());
    }
    keptNumbers += more.keptNumbers;
}

template <typename Number>
void NumberGroups<Number>::store(const std::vector<std::uint32_t>& groups, std::vector<ColumnPtr>& columns) const {
    using Sums = NumberSums<Number>;
    const auto add = [&]<typename Member>(Member Sums::*member) {
        columns.push_back(columnFrom<Member>(groups, [&](std::uint32_t group) { return all[group].*member; }));
    };
    add(&Sums::count);
    add(&Sums::missing);
    for (const auto member : {&Sums::sum, &Sums::rest, &Sums::mean, &Sums::squares}) {
        add(member);
    }
    for (const auto member : {&Sums::smallest, &Sums::largest, &Sums::first, &Sums::last}) {
        add(member);
    }
    if (isKept) {
        columns.push_back(keptOf(groups));
    }
}

template <typename Number>
ColumnPtr NumberGroups<Number>::keptOf(const std::vector<std::uint32_t>& groups) const {
    Numbers numbers;
    std::vector<std::uint64_t> offsets{0};
    for (const std::uint32_t group : groups) {
        numbers.insert(numbers.end(), kept[group].begin(), kept[group].end());
        offsets.push_back(numbers.size());
    }
    return std::make_shared<const Column>(Column{std::move(numbers), std::move(offsets)});
}

template <typename Number>
void NumberGroups<Number>::load(std::span<const ColumnPtr>& columns, std::size_t groups) {
    using Sums = NumberSums<Number>;
    all.resize(groups);
    const auto read = [&]<typename Member>(Member Sums::*member) {
        const auto& values = take<std::vector<Member>>(columns, groups);
        for (std::size_t group = 0; group < groups; ++group) {
            all[group].*member = values[group];
        }
    };
    read(&Sums::count);
    read(&Sums::missing);
    for (const auto member : {&Sums::sum, &Sums::rest, &Sums::mean, &Sums::squares}) {
        read(member);
    }
    for (const auto member : {&Sums::smallest, &Sums::largest, &Sums::first, &Sums::last}) {
        read(member);
    }
    if (std::any_of(all.begin(), all.end(), [](const Sums& sums) { return sums.count < 0 || sums.missing < 0; })) {
        refuse();
    }
    if (isKept) {
        if (columns.empty()) {
            refuse();
        }
        loadKept(*columns.front());
        columns = columns.subspan(1);
    }
}

template <typename Number>
void NumberGroups<Number>::loadKept(const Column& column) {
    const auto* numbers = std::get_if<Numbers>(&column.values);
    const auto& offsets = column.offsets;
    if (!numbers || offsets.size() != all.size() + 1 || offsets.front() != 0 || offsets.back() != numbers->size() ||
        !std::is_sorted(offsets.begin(), offsets.end())) {
        refuse();
    }
    for (std::size_t group = 0; group < all.size(); ++group) {
        kept.emplace_back(numbers->begin() + static_cast<std::ptrdiff_t>(offsets[group]),
                          numbers->begin() + static_cast<std::ptrdiff_t>(offsets[group + 1]));
        if (kept.back().size() != static_cast<std::size_t>(all[group].count)) {
            refuse();
        }
    }
    keptNumbers = numbers->size();
}

template <typename Number>
std::size_t NumberGroups<Number>::bytes() const {
    return all.size() * sizeof(NumberSums<Number>) + kept.size() * sizeof(Numbers) + keptNumbers * sizeof(Number);
}

template <typename Number>
std::int64_t NumberGroups<Number>::missing() const {
    return std::accumulate(all.begin(), all.end(), std::int64_t{0},
                           [](std::int64_t sum, const NumberSums<Number>& sums) { return sum + sums.missing; });
}

template <typename Number>
double NumberGroups<Number>::median(std::size_t group) const {
    Numbers numbers = kept[group];
    if (numbers.empty()) {
        return notANumber;
    }
    const auto middle = numbers.begin() + static_cast<std::ptrdiff_t>(numbers.size() / 2);
    std::nth_element(numbers.begin(), middle, numbers.end());
    if (numbers.size() % 2 == 1) {
        return number(*middle);
    }
    const double below = number(*std::max_element(numbers.begin(), middle));
    return below == number(*middle) ? below : 0.5 * (below + number(*middle));
}

template <typename Number>
void NumberGroups<Number>::finish(Aggregate function, const std::vector<std::uint32_t>& groups,
                                  std::vector<ColumnPtr>& columns) const {
    using Sums = NumberSums<Number>;
    const auto addReal = [&](double (Sums::*of)() const) {
        columns.push_back(columnFrom<double>(groups, [&](std::uint32_t group) { return (all[group].*of)(); }));
    };
    const auto addNumber = [&](Number Sums::*member) {
        columns.push_back(columnFrom<Number>(groups, [&](std::uint32_t group) {
            if constexpr (std::is_same_v<Number, double>) {
                return all[group].count == 0 ? notANumber : all[group].*member;
            } else {
                return all[group].*member;
            }
        }));
    };
    switch (function) {
        case Aggregate::Count:
            columns.push_back(columnFrom<std::int64_t>(groups, [&](std::uint32_t group) { return all[group].count; }));
            break;
        case Aggregate::Sum:
            addReal(&Sums::total);
            break;
        case Aggregate::Mean:
            addReal(&Sums::average);
            addReal(&Sums::errorOfMean);
            break;
        case Aggregate::Spread:
            addReal(&Sums::spread);
            break;
        case Aggregate::Min:
            addNumber(&Sums::smallest);
            break;
        case Aggregate::Max:
            addNumber(&Sums::largest);
            break;
        case Aggregate::Median:
            columns.push_back(columnFrom<double>(groups, [&](std::uint32_t group) { return median(group); }));
            break;
        case Aggregate::First:
            addNumber(&Sums::first);
            break;
        case Aggregate::Last:
            addNumber(&Sums::last);
            break;
    }
}

template class NumberGroups<double>;
template class NumberGroups<std::int64_t>;

}  // namespace velmorak
