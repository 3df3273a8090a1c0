#pragma once

#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace velmorak {

/// The covariance of numbers that one plug-in determined together, such as the parameters of a fit.
struct CovarianceMatrix {
    std::string origin;              ///< Name of the plug-in. Numbers of different origins are independent.
    std::vector<std::string> names;  ///< Of the numbers.
    std::vector<double> elements;    ///< Row by row.

    std::size_t size() const { return names.size(); }
    double at(std::size_t row, std::size_t column) const { return elements[row * size() + column]; }
    bool operator==(const CovarianceMatrix&) const = default;
};

/// A number and how it depends, to first order, on the numbers of covariance matrices. Its error follows from that, and
/// so does its correlation with every other number that depends on the same matrices: an expression of several
/// parameters of one fit has the right error, and so has an expression of such expressions.
/// Edges: the error is NaN if a derivative or an element of a matrix is not finite.
class NumberWithError {
public:
    /// The dependence on the numbers of one matrix.
    struct Term {
        std::shared_ptr<const CovarianceMatrix> covariance;
        std::vector<double> derivatives;  ///< One for each number of the matrix.
    };

    /// A number without an error.
    explicit NumberWithError(double number) : nominal(number) {}
    /// @param terms of different matrices.
    /// @throws std::invalid_argument if the sizes of a matrix and its derivatives do not agree.
    NumberWithError(double number, std::vector<Term> terms);

    double value() const { return nominal; }
    /// @return the standard deviation; 0 for a number without an error.
    double error() const;
    bool hasError() const { return !parts.empty(); }
    const std::vector<Term>& terms() const { return parts; }

private:
    double nominal;
    std::vector<Term> parts;
};

/// @return numbers with the given values and covariance matrix, in the matrix's order.
/// @throws std::invalid_argument if there are not as many values as names, or as many elements as names squared.
std::vector<NumberWithError> numbersWithErrors(const std::vector<double>& values, CovarianceMatrix covariance);

/// @return a function of other numbers, with the error of first order: its derivatives times theirs.
/// @param value of the function.
/// @param derivatives of the function by each of the numbers it depends on.
NumberWithError withPropagatedError(double value, const std::vector<std::pair<NumberWithError, double>>& derivatives);

/// @return the covariance of two numbers; 0 if they share no matrix, and the variance for one number given twice.
double covarianceOf(const NumberWithError& one, const NumberWithError& other);

}  // namespace velmorak
