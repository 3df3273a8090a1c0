#include <velmorak/NumberWithError.h>

#include <algorithm>
#include <cmath>
#include <stdexcept>

namespace velmorak {

namespace {

void requireSquare(const CovarianceMatrix& covariance) {
    if (covariance.elements.size() != covariance.size() * covariance.size()) {
        throw std::invalid_argument("a covariance matrix is not square");
    }
}

/// Results that come from the cache have copies of the same matrix.
bool isSame(const NumberWithError::Term& one, const NumberWithError::Term& other) {
    return one.covariance == other.covariance || *one.covariance == *other.covariance;
}

const NumberWithError::Term* termLike(const NumberWithError::Term& wanted,
                                      const std::vector<NumberWithError::Term>& terms) {
    const auto found = std::find_if(terms.begin(), terms.end(), [&](const auto& term) { return isSame(term, wanted); });
    return found == terms.end() ? nullptr : &*found;
}

/// Left derivatives times the matrix times right derivatives. A derivative of 0 means that the number does not depend
/// on an element, whatever that is.
double product(const NumberWithError::Term& left, const NumberWithError::Term& right) {
    const CovarianceMatrix& matrix = *left.covariance;
    double sum = 0.0;
    for (std::size_t row = 0; row < matrix.size(); ++row) {
        if (left.derivatives[row] == 0.0) {
            continue;
        }
        double along = 0.0;
        for (std::size_t column = 0; column < matrix.size(); ++column) {
            if (right.derivatives[column] != 0.0) {
                along += matrix.at(row, column) * right.derivatives[column];
            }
        }
        sum += left.derivatives[row] * along;
    }
    return sum;
}

void add(std::vector<NumberWithError::Term>& terms, const NumberWithError::Term& term, double factor) {
    auto found = std::find_if(terms.begin(), terms.end(), [&](const auto& each) { return isSame(each, term); });
    if (found == terms.end()) {
        found = terms.insert(found, {term.covariance, std::vector<double>(term.derivatives.size(), 0.0)});
    }
    for (std::size_t i = 0; i < term.derivatives.size(); ++i) {
        if (term.derivatives[i] != 0.0) {
            found->derivatives[i] += factor * term.derivatives[i];
        }
    }
}

/// @return the power of two of the largest derivative.
int largestPower(const std::vector<NumberWithError::Term>& terms) {
    double largest = 0.0;
    for (const NumberWithError::Term& term : terms) {
        for (const double derivative : term.derivatives) {
            largest = std::isfinite(derivative) ? std::max(largest, std::abs(derivative)) : largest;
        }
    }
    int power = 0;
    std::frexp(largest, &power);
    return power;
}

std::vector<NumberWithError::Term> scaledBy(std::vector<NumberWithError::Term> terms, int power) {
    for (NumberWithError::Term& term : terms) {
        for (double& derivative : term.derivatives) {
            derivative = std::ldexp(derivative, power);
        }
    }
    return terms;
}

}  // namespace

NumberWithError::NumberWithError(double number, std::vector<Term> terms) : nominal(number), parts(std::move(terms)) {
    for (const Term& term : parts) {
        if (!term.covariance || term.derivatives.size() != term.covariance->size()) {
            throw std::invalid_argument("a number with an error has not one derivative for each element");
        }
        requireSquare(*term.covariance);
    }
}

double NumberWithError::error() const {
    // Derivatives of 1e200 have squares beyond the range of a double.
    const int power = largestPower(parts);
    const NumberWithError scaled(0.0, scaledBy(parts, -power));
    const double variance = covarianceOf(scaled, scaled);
    // Rounding can make the variance of fully correlated numbers slightly negative.
    return std::isnan(variance) ? variance : std::ldexp(std::sqrt(std::max(variance, 0.0)), power);
}

std::vector<NumberWithError> numbersWithErrors(const std::vector<double>& values, CovarianceMatrix covariance) {
    if (values.size() != covariance.size()) {
        throw std::invalid_argument("a covariance matrix has not one row for each number");
    }
    requireSquare(covariance);
    const auto shared = std::make_shared<const CovarianceMatrix>(std::move(covariance));
    std::vector<NumberWithError> numbers;
    for (std::size_t i = 0; i < values.size(); ++i) {
        std::vector<double> derivatives(values.size(), 0.0);
        derivatives[i] = 1.0;
        numbers.emplace_back(values[i], std::vector<NumberWithError::Term>{{shared, std::move(derivatives)}});
    }
    return numbers;
}

NumberWithError withPropagatedError(double value, const std::vector<std::pair<NumberWithError, double>>& derivatives) {
    std::vector<NumberWithError::Term> terms;
    for (const auto& [number, derivative] : derivatives) {
        for (const NumberWithError::Term& term : number.terms()) {
            add(terms, term, derivative);
        }
    }
    return {value, std::move(terms)};
}

double covarianceOf(const NumberWithError& one, const NumberWithError& other) {
    double sum = 0.0;
    for (const NumberWithError::Term& term : one.terms()) {
        if (const NumberWithError::Term* match = termLike(term, other.terms())) {
            sum += product(term, *match);
        }
    }
    return sum;
}

}  // namespace velmorak
