#pragma once

#include "Table/groups/GroupValues.h"

namespace velmorak {

/// Sums of the numbers of a group. The sum is compensated; mean and sum of squared distances from it are formed for the
/// rows of each chunk, and joined pairwise (T. F. Chan, G. H. Golub, R. J. LeVeque, Am. Stat. 37 (1983) 242).
template <typename Number>
struct NumberSums {
    std::int64_t count = 0;
    std::int64_t missing = 0;  ///< Values that were left out.
    double sum = 0.0;
    double rest = 0.0;  ///< What the additions to sum have lost.
    double mean = 0.0;
    double squares = 0.0;  ///< Sum of (x - mean)^2.
    Number smallest{};
    Number largest{};
    Number first{};
    Number last{};

    /// @return the sums of some numbers, none of them NaN.
    static NumberSums of(std::span<const Number> numbers);
    /// Adds numbers that follow.
    void merge(const NumberSums& other);

    double total() const;
    /// NaN without numbers, as are spread and error.
    double average() const;
    /// Standard deviation of the population.
    double spread() const;
    double errorOfMean() const;

private:
    void append(const NumberSums& other);
};

/// @tparam Number double or std::int64_t, as the columns have it.
template <typename Number>
class NumberGroups : public GroupValues {
public:
    explicit NumberGroups(bool isKept) : isKept(isKept) {}

    void fill(const Column& values, const RowsByGroup& rows) override;
    void merge(const GroupValues& other, const std::vector<std::uint32_t>& targets) override;
    void store(const std::vector<std::uint32_t>& groups, std::vector<ColumnPtr>& columns) const override;
    void load(std::span<const ColumnPtr>& columns, std::size_t groups) override;
    std::size_t bytes() const override;
    std::int64_t missing() const override;
    void finish(Aggregate function, const std::vector<std::uint32_t>& groups,
                std::vector<ColumnPtr>& columns) const override;

private:
    using Numbers = std::vector<Number>;

    ColumnPtr keptOf(const std::vector<std::uint32_t>& groups) const;
    void loadKept(const Column& column);
    double median(std::size_t group) const;

    bool isKept;
    std::vector<NumberSums<Number>> all;  ///< By group.
    std::vector<Numbers> kept;            ///< By group; empty unless isKept.
    std::size_t keptNumbers = 0;
};

extern template class NumberGroups<double>;
extern template class NumberGroups<std::int64_t>;

}  // namespace velmorak
