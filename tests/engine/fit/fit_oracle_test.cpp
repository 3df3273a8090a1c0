#include <velmorak/Fit.h>

#include <gsl/gsl_blas.h>
#include <gsl/gsl_cdf.h>
#include <gsl/gsl_multifit_nlinear.h>
#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <functional>
#include <memory>
#include <random>

#include <velmorak/Failure.h>

/// The GNU Scientific Library as the oracle. It only sees this test.
namespace velmorak {
namespace {

using Parameters = std::vector<double>;
using Formula = std::function<long double(long double x, const long double* p)>;

struct Family {
    std::string model;
    Formula formula;
    std::function<Parameters(std::mt19937&)> draw;
    double low;
    double high;
};

double uniform(std::mt19937& engine, double low, double high) {
    return std::uniform_real_distribution<double>(low, high)(engine);
}

long double peak(long double x, const long double* p) {
    const long double t = (x - p[1]) / p[2];
    return p[0] * std::exp(-0.5L * t * t);
}

std::vector<Family> families() {
    return {
        {"gauss + pol1", [](auto x, const auto* p) { return peak(x, p) + p[3] + p[4] * x; },
         [](auto& e) {
             return Parameters{uniform(e, 50, 500), uniform(e, 3, 7), uniform(e, 0.4, 1.2), uniform(e, 20, 80),
                               uniform(e, -1.5, 4)};
         },
         0, 10},
        {"n*exp(-x/tau) + b", [](auto x, const auto* p) { return p[0] * std::exp(-x / p[1]) + p[2]; },
         [](auto& e) {
             return Parameters{uniform(e, 100, 2000), uniform(e, 1, 3), uniform(e, 5, 50)};
         },
         0, 10},
        {"breitwigner + pol0",
         [](auto x, const auto* p) {
             const long double t = 2 * (x - p[1]) / p[2];
             return p[0] / (1 + t * t) + p[3];
         },
         [](auto& e) {
             return Parameters{uniform(e, 100, 900), uniform(e, 85, 95), uniform(e, 2, 6), uniform(e, 10, 40)};
         },
         70, 110},
        {"pol3", [](auto x, const auto* p) { return p[0] + x * (p[1] + x * (p[2] + x * p[3])); },
         [](auto& e) {
             return Parameters{uniform(e, 100, 300), uniform(e, -9, 9), uniform(e, -5, 5), uniform(e, -1, 1)};
         },
         -4, 4},
        {"a*sin(w*x + f) + c", [](auto x, const auto* p) { return p[0] * std::sin(p[1] * x + p[2]) + p[3]; },
         [](auto& e) {
             return Parameters{uniform(e, 20, 60), uniform(e, 0.8, 1.2), uniform(e, -0.5, 0.5), uniform(e, 90, 150)};
         },
         0, 10}};
}

struct LeastSquaresProblem {
    const Family* family;
    Parameters truth;
    std::vector<double> x;
    std::vector<double> y;
    std::vector<double> error;
};

LeastSquaresProblem drawn(const Family& family, std::mt19937& engine) {
    LeastSquaresProblem problem{&family, family.draw(engine), {}, {}, {}};
    const auto count = static_cast<std::size_t>(std::uniform_int_distribution<int>(30, 300)(engine));
    const std::vector<long double> truth(problem.truth.begin(), problem.truth.end());
    for (std::size_t i = 0; i < count; ++i) {
        const double part = (static_cast<double>(i) + 0.5) / static_cast<double>(count);
        problem.x.push_back(family.low + (family.high - family.low) * part);
        const auto mean = static_cast<double>(family.formula(problem.x.back(), truth.data()));
        problem.error.push_back(std::sqrt(std::fabs(mean) + 1.0));
        problem.y.push_back(mean + std::normal_distribution<double>(0.0, problem.error.back())(engine));
    }
    return problem;
}

int residuals(const gsl_vector* parameters, void* data, gsl_vector* out) {
    const auto& problem = *static_cast<const LeastSquaresProblem*>(data);
    std::vector<long double> p(parameters->size);
    for (std::size_t k = 0; k < p.size(); ++k) {
        p[k] = gsl_vector_get(parameters, k);
    }
    for (std::size_t i = 0; i < problem.x.size(); ++i) {
        const long double f = problem.family->formula(problem.x[i], p.data());
        gsl_vector_set(out, i, static_cast<double>((f - problem.y[i]) / problem.error[i]));
    }
    return GSL_SUCCESS;
}

/// Minimum by GSL, with derivatives by differences of its own.
Parameters solvedByGsl(LeastSquaresProblem& problem) {
    gsl_multifit_nlinear_fdf functions{};
    functions.f = residuals;
    functions.n = problem.x.size();
    functions.p = problem.truth.size();
    functions.params = &problem;
    gsl_multifit_nlinear_parameters settings = gsl_multifit_nlinear_default_parameters();
    settings.fdtype = GSL_MULTIFIT_NLINEAR_CTRDIFF;
    const std::unique_ptr<gsl_multifit_nlinear_workspace, decltype(&gsl_multifit_nlinear_free)> work(
        gsl_multifit_nlinear_alloc(gsl_multifit_nlinear_trust, &settings, functions.n, functions.p),
        gsl_multifit_nlinear_free);
    const gsl_vector_const_view start = gsl_vector_const_view_array(problem.truth.data(), problem.truth.size());
    gsl_multifit_nlinear_init(&start.vector, &functions, work.get());
    int reason = 0;
    gsl_multifit_nlinear_driver(500, 1e-15, 1e-15, 0, nullptr, nullptr, &reason, work.get());
    Parameters found;
    for (std::size_t k = 0; k < problem.truth.size(); ++k) {
        found.push_back(gsl_vector_get(gsl_multifit_nlinear_position(work.get()), k));
    }
    return found;
}

long double chiSquare(const LeastSquaresProblem& problem, const std::vector<long double>& p) {
    long double sum = 0;
    for (std::size_t i = 0; i < problem.x.size(); ++i) {
        const long double descent = (problem.family->formula(problem.x[i], p.data()) - problem.y[i]) / problem.error[i];
        sum += descent * descent;
    }
    return sum;
}

/// Half the second derivatives of chi square in long double by differences; steps are parts of the errors.
std::vector<long double> secondDerivatives(const LeastSquaresProblem& problem, const Parameters& at,
                                           const Parameters& errors) {
    const std::size_t n = at.size();
    std::vector<long double> made(n * n);
    for (std::size_t a = 0; a < n; ++a) {
        for (std::size_t b = 0; b < n; ++b) {
            const long double stepA = 1e-3L * errors[a];
            const long double stepB = 1e-3L * errors[b];
            const auto shifted = [&](int signA, int signB) {
                std::vector<long double> p(at.begin(), at.end());
                p[a] += signA * stepA;
                p[b] += signB * stepB;
                return chiSquare(problem, p);
            };
            made[a * n + b] =
                (shifted(1, 1) - shifted(1, -1) - shifted(-1, 1) + shifted(-1, -1)) / (8.0L * stepA * stepB);
        }
    }
    return made;
}

/// Gauss-Jordan in long double.
std::vector<long double> inverse(std::vector<long double> m, std::size_t n) {
    std::vector<long double> made(n * n, 0.0L);
    for (std::size_t i = 0; i < n; ++i) {
        made[i * n + i] = 1.0L;
    }
    for (std::size_t column = 0; column < n; ++column) {
        const long double pivot = m[column * n + column];
        for (std::size_t k = 0; k < n; ++k) {
            m[column * n + k] /= pivot;
            made[column * n + k] /= pivot;
        }
        for (std::size_t row = 0; row < n; ++row) {
            const long double factor = m[row * n + column];
            for (std::size_t k = 0; row != column && k < n; ++k) {
                m[row * n + k] -= factor * m[column * n + k];
                made[row * n + k] -= factor * made[column * n + k];
            }
        }
    }
    return made;
}

FitResult solvedByUs(const LeastSquaresProblem& problem) {
    FitOptions options;
    const FitModel model(problem.family->model);
    for (std::size_t k = 0; k < problem.truth.size(); ++k) {
        options.parameters[model.parameters()[k]].start = problem.truth[k];
    }
    FitData data;
    for (std::size_t i = 0; i < problem.x.size(); ++i) {
        data.entries.push_back({problem.x[i], problem.x[i], problem.y[i], problem.error[i]});
    }
    return fit(model, data, options);
}

TEST(FitOracle, agreesWithGslOn200RandomProblems) {
    std::mt19937 engine(2026);
    const std::vector<Family> all = families();
    for (int number = 0; number < 200; ++number) {
        LeastSquaresProblem problem = drawn(all[static_cast<std::size_t>(number) % all.size()], engine);
        const FitResult ours = solvedByUs(problem);
        const Parameters others = solvedByGsl(problem);
        const std::size_t n = others.size();
        const std::vector<long double> covariance = inverse(secondDerivatives(problem, others, ours.errors), n);
        for (std::size_t k = 0; k < n; ++k) {
            const auto error = static_cast<double>(std::sqrt(covariance[k * n + k]));
            EXPECT_NEAR(ours.values[k], others[k], 1e-6 * error) << problem.family->model << " " << number << " " << k;
            EXPECT_NEAR(ours.errors[k], error, 1e-4 * error) << problem.family->model << " " << number << " " << k;
        }
        EXPECT_NEAR(ours.pValue, gsl_cdf_chisq_Q(ours.chi2, ours.ndf), 1e-12);
    }
}

TEST(FitOracle, agreesWithGslOnTheProbability) {
    for (const double ndf : {1.0, 2.0, 3.0, 10.0, 57.0, 1000.0}) {
        for (const double part : {1e-9, 0.01, 0.3, 0.9, 1.0, 1.1, 1.5, 3.0, 20.0}) {
            const double wanted = gsl_cdf_chisq_Q(part * ndf, ndf);
            EXPECT_NEAR(chiSquareProbability(part * ndf, ndf), wanted, 1e-11 * wanted + 1e-13) << ndf << " " << part;
        }
    }
}

}  // namespace
}  // namespace velmorak
