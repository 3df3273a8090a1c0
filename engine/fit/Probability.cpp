#include <velmorak/ElementaryFunctions.h>
#include <velmorak/Fit.h>

namespace velmorak {

double chiSquareProbability(double chi2, double ndf) {
    return elementary::gammaQ(0.5 * ndf, 0.5 * chi2);
}

}  // namespace velmorak
