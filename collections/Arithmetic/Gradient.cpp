#include "Gradient.h"

#include <velmorak/Expression.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <memory>
#include <utility>

namespace velmorak {

namespace {

constexpr std::size_t stepCount = 44;
constexpr std::size_t maxOrder = 6;
/// A difference quotient that changes by more than this part of itself has not converged.
constexpr double tolerance = 1e-3;

/// The rows of one variable: for each step one above its value and one below.
constexpr std::size_t rowsOfEach = 2 * stepCount;

/// @return a power of two, by which numbers are divided without rounding.
double firstStep(const Variable& variable) {
    constexpr double minPart = 0x1p-10;
    const double size = minPart * std::abs(variable.value);
    const double wanted = std::isfinite(variable.error) ? std::max(size, variable.error) : size;
    int power = 0;
    std::frexp(wanted > 0.0 ? wanted : 1.0, &power);
    constexpr int maxPower = 1023;
    return std::ldexp(1.0, std::min(power, maxPower));
}

/// The values of one variable in all rows: it moves in its own rows only.
std::vector<double> columnOf(const Variable& variable, std::size_t position, std::size_t rows) {
    std::vector<double> column(rows, variable.value);
    double step = firstStep(variable);
    for (std::size_t i = 0; i < stepCount; ++i, step *= 0.5) {
        column[position * rowsOfEach + 2 * i] = variable.value + step;
        column[position * rowsOfEach + 2 * i + 1] = variable.value - step;
    }
    return column;
}

/// A derivative and a bound of its deviation from the true one.
struct Estimate {
    double derivative = std::numeric_limits<double>::quiet_NaN();
    double deviation = std::numeric_limits<double>::infinity();
};

/// Extrapolates difference quotients of halved steps, whose deviations are even powers of the step.
class Extrapolation {
public:
    /// @param rounding deviation of the quotient because its function values are rounded.
    void add(double quotient, double rounding);

    double derivative() const;

private:
    /// Extrapolates from the quotients before, and keeps the result that deviates least.
    void extend(std::array<double, maxOrder>& row, double rounding);
    bool contradicts(double extrapolated) const;

    std::array<double, maxOrder> former{};
    std::size_t orders = 0;
    Estimate best;
    std::size_t stepsSince = 0;  ///< Since the best estimate.
    double scale = 0.0;          ///< The largest quotient up to the best estimate.
    double largest = 0.0;        ///< The largest quotient of all.
    double tolerable = 0.0;      ///< Deviation of the best estimate that rounding alone explains.
};

void Extrapolation::add(double quotient, double rounding) {
    std::array<double, maxOrder> row{quotient};
    largest = std::isfinite(quotient) ? std::max(largest, std::abs(quotient)) : largest;
    ++stepsSince;
    extend(row, rounding);
    former = row;
    orders = std::min(orders + 1, maxOrder - 1);
}

void Extrapolation::extend(std::array<double, maxOrder>& row, double rounding) {
    double factor = 1.0;
    for (std::size_t order = 1; order <= orders; ++order) {
        factor *= 4.0;
        row[order] = row[order - 1] + (row[order - 1] - former[order - 1]) / (factor - 1.0);
        if (order == 1 && contradicts(row[order])) {
            best = {};
        }
        const double change = std::max(std::abs(row[order] - row[order - 1]), std::abs(row[order] - former[order - 1]));
        if (change + rounding < best.deviation) {
            best = {row[order], change + rounding};
            stepsSince = 0;
            scale = largest;
            tolerable = 2.0 * rounding;
        }
    }
}

/// Long steps can agree by chance, such as those across several jumps of floor(x); shorter ones then differ.
bool Extrapolation::contradicts(double extrapolated) const {
    constexpr std::size_t checkedSteps = 8;
    constexpr double growthOfRounding = 2 << checkedSteps;
    const double allowed = tolerance * std::abs(best.derivative) + growthOfRounding * best.deviation;
    return stepsSince <= checkedSteps && std::abs(extrapolated - best.derivative) > allowed;
}

double Extrapolation::derivative() const {
    // A derivative of 0 may come out as the rounding error of much larger quotients.
    constexpr double negligible = 1e-9;
    const bool hasConverged = best.deviation <= tolerance * std::abs(best.derivative) ||
                              best.deviation <= negligible * scale || best.deviation <= tolerable;
    return hasConverged ? best.derivative : std::numeric_limits<double>::quiet_NaN();
}

double derivativeFrom(const double* places, const double* values) {
    Extrapolation extrapolation;
    for (std::size_t i = 0; i < stepCount; ++i) {
        const double width = places[2 * i] - places[2 * i + 1];
        if (!(width > 0.0)) {
            break;
        }
        const double above = values[2 * i];
        const double below = values[2 * i + 1];
        constexpr double epsilon = std::numeric_limits<double>::epsilon();
        extrapolation.add((above - below) / width, epsilon * std::max(std::abs(above), std::abs(below)) / width);
    }
    return extrapolation.derivative();
}

ColumnPtr realColumn(std::vector<double> values) {
    auto column = std::make_shared<Column>();
    column->values = std::move(values);
    return column;
}

}  // namespace

std::vector<double> gradientOf(const std::string& expression, const std::map<std::string, double>& numbers,
                               const std::vector<Variable>& variables) {
    Schema schema;
    Chunk chunk;
    chunk.rows = variables.size() * rowsOfEach;
    for (std::size_t i = 0; i < variables.size(); ++i) {
        schema.add({.name = variables[i].name, .type = ColumnType::Real, .isList = false, .unit = ""});
        chunk.columns.push_back(realColumn(columnOf(variables[i], i, chunk.rows)));
    }
    const ColumnPtr values = asReals(Expression(expression, schema, numbers).evaluate(chunk));
    std::vector<double> derivatives;
    for (std::size_t i = 0; i < variables.size(); ++i) {
        derivatives.push_back(
            derivativeFrom(chunk.columns[i]->reals().data() + i * rowsOfEach, values->reals().data() + i * rowsOfEach));
    }
    return derivatives;
}

}  // namespace velmorak
