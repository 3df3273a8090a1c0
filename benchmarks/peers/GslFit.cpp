#include "GslFit.h"

#include <gsl/gsl_matrix.h>
#include <gsl/gsl_multifit_nlinear.h>

#include <cmath>
#include <memory>

namespace velmorak::bench {

double peakOnLine(double x, const double* parameters) {
    const double t = (x - parameters[1]) / parameters[2];
    return parameters[0] * std::exp(-0.5 * t * t) + parameters[3] + parameters[4] * x;
}

namespace {

int residuals(const gsl_vector* parameters, void* data, gsl_vector* out) {
    const auto& points = *static_cast<const FitPoints*>(data);
    for (std::size_t i = 0; i < points.x.size(); ++i) {
        out->data[i * out->stride] = (peakOnLine(points.x[i], parameters->data) - points.y[i]) / points.error[i];
    }
    return GSL_SUCCESS;
}

}  // namespace

PeakOnLine fittedByGsl(const FitPoints& points, const PeakOnLine& start) {
    FitPoints given = points;
    gsl_multifit_nlinear_fdf functions{};
    functions.f = residuals;
    functions.n = points.x.size();
    functions.p = start.size();
    functions.params = &given;
    const gsl_multifit_nlinear_parameters settings = gsl_multifit_nlinear_default_parameters();
    const std::unique_ptr<gsl_multifit_nlinear_workspace, decltype(&gsl_multifit_nlinear_free)> work(
        gsl_multifit_nlinear_alloc(gsl_multifit_nlinear_trust, &settings, functions.n, functions.p),
        gsl_multifit_nlinear_free);
    const gsl_vector_const_view first = gsl_vector_const_view_array(start.data(), start.size());
    gsl_multifit_nlinear_init(&first.vector, &functions, work.get());
    int reason = 0;
    gsl_multifit_nlinear_driver(200, 1e-8, 1e-8, 0.0, nullptr, nullptr, &reason, work.get());
    const std::unique_ptr<gsl_matrix, decltype(&gsl_matrix_free)> covariance(
        gsl_matrix_alloc(start.size(), start.size()), gsl_matrix_free);
    gsl_multifit_nlinear_covar(gsl_multifit_nlinear_jac(work.get()), 0.0, covariance.get());
    PeakOnLine found{};
    for (std::size_t k = 0; k < found.size(); ++k) {
        found[k] = gsl_vector_get(gsl_multifit_nlinear_position(work.get()), k);
    }
    return found;
}

}  // namespace velmorak::bench
