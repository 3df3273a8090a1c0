#pragma once

#include <velmorak/FunctionObject.h>

#include <optional>
#include <string>
#include <vector>

namespace velmorak {

/// The results that a fit records in the annotation of its function.
struct FitNotes {
    std::optional<double> chi2;
    std::optional<double> ndf;
    std::optional<double> pValue;
    std::vector<std::optional<double>> errors;  ///< Parallel to the function's parameters.
    std::string status;                         ///< "converged", "not converged" ...; empty without a fit.

    bool isOfFit() const;
};

FitNotes fitNotesOf(const FunctionObject& function);

}  // namespace velmorak
