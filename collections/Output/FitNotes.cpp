#include "FitNotes.h"

#include <algorithm>

namespace velmorak {

namespace {

std::string textIn(const FunctionObject& function, const std::string& key) {
    const auto found = std::find_if(function.annotation.begin(), function.annotation.end(),
                                    [&](const AnnotationItem& item) { return item.key == key; });
    return found == function.annotation.end() ? std::string() : found->value;
}

std::optional<double> numberIn(const FunctionObject& function, const std::string& key) {
    double number = 0.0;
    if (!readNumber(textIn(function, key), number)) {
        return std::nullopt;
    }
    return number;
}

}  // namespace

bool FitNotes::isOfFit() const {
    return chi2 || ndf || pValue ||
           std::any_of(errors.begin(), errors.end(), [](const auto& error) { return error.has_value(); });
}

FitNotes fitNotesOf(const FunctionObject& function) {
    FitNotes notes{.chi2 = numberIn(function, "chi2"),
                   .ndf = numberIn(function, "ndf"),
                   .pValue = numberIn(function, "p_value"),
                   .errors = {},
                   .status = textIn(function, "status")};
    for (const FunctionObject::Parameter& parameter : function.parameters) {
        notes.errors.push_back(numberIn(function, parameter.name + "_error"));
    }
    return notes;
}

}  // namespace velmorak
