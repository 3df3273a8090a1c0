#include "AidaObjectKind.h"

#include "AidaFile.h"

#include <velmorak/Aida.h>

namespace velmorak {

Ports AidaObjectKind::ports(const ValueTexts&) const {
    Ports ports;
    ports.inputs = aidaInputs(about.output.name, about.example);
    ports.outputs = {about.output};
    return ports;
}

void AidaObjectKind::evaluate(const Arguments& arguments, Results& results, RunContext& context) const {
    results.set(about.output.name,
                readAidaObject(aidaFileOf(arguments, context), arguments.text("object"), about.output.type, context));
}

std::vector<AidaObjectKind::About> aidaObjectKinds() {
    return {
        {.name = "AidaHistogram",
         .summary = "Reads a histogram of one, two or three dimensions of an AIDA file.",
         .example = "/run1/energy",
         .output = {.name = "histogram",
                    .description = "The histogram; a cloud that its program has converted is one too.",
                    .type = ValueType::Histogram}},
        {.name = "AidaProfile",
         .summary = "Reads a profile of one or two dimensions of an AIDA file.",
         .example = "/calib/gain",
         .output = {.name = "profile",
                    .description = "The profile, with heights, errors and spreads as they stand in the file.",
                    .type = ValueType::Profile}},
        {.name = "AidaPoints",
         .summary = "Reads a set of data points with errors of an AIDA file.",
         .example = "/REF/d01",
         .output = {.name = "points",
                    .description = "The points, each with a value and two errors in every dimension.",
                    .type = ValueType::Points}},
        {.name = "AidaFunction",
         .summary = "Reads a function with its parameters of an AIDA file.",
         .example = "/fits/line",
         .output = {.name = "function",
                    .description = "The function as the file describes it.",
                    .type = ValueType::Function}},
    };
}

}  // namespace velmorak
