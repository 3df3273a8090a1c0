#include <velmorak/Fit.h>

#include <boost/math/special_functions/gamma.hpp>

#include <cmath>

namespace velmorak {

// Q(ndf / 2, chi2 / 2), the regularised upper incomplete gamma function (NIST Digital Library of Mathematical
// Functions, 8.2.4). Errors come back as values: an exception would end the fit for a p-value that underflows.
double chiSquareProbability(double chi2, double ndf) {
    using boost::math::policies::domain_error;
    using boost::math::policies::evaluation_error;
    using boost::math::policies::ignore_error;
    using boost::math::policies::overflow_error;
    if (!(chi2 >= 0.0) || !(ndf > 0.0) || std::isinf(ndf)) {
        return std::numeric_limits<double>::quiet_NaN();
    }
    if (std::isinf(chi2)) {
        return 0.0;
    }
    const boost::math::policies::policy<domain_error<ignore_error>, evaluation_error<ignore_error>,
                                        overflow_error<ignore_error>>
        valuesForErrors;
    return boost::math::gamma_q(0.5 * ndf, 0.5 * chi2, valuesForErrors);
}

}  // namespace velmorak
