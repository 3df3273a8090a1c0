#include "kinds.h"

#include "csv/Geant4Histogram.h"

#include <utility>

namespace velmorak {
namespace {

/// Reads a histogram or profile that Geant4's analysis manager has written as text.
class Geant4HistogramKind : public Function {
public:
    std::string name() const override { return "Geant4Histogram"; }
    std::string summary() const override;
    std::string notes() const override;
    Ports ports(const ValueTexts& values) const override;
    void evaluate(const Arguments& arguments, Results& results, RunContext& context) const override;
};

bool isProfile(const ValueTexts& values) {
    const auto found = values.find("type");
    return found != values.end() && found->second == "profile";
}

}  // namespace

std::string Geant4HistogramKind::summary() const {
    return "Reads a histogram or profile from a text file of Geant4.";
}

std::string Geant4HistogramKind::notes() const {
    return R"(The file is one that Geant4's analysis manager writes for each histogram (h1, h2, h3) and profile (p1, p2) in its
format csv. All sums of weights are kept, also those of underflow and overflow. Ntuples are read by `CsvTable`; see
[Text files of rows](../csv.md).)";
}

Ports Geant4HistogramKind::ports(const ValueTexts& values) const {
    const bool hasProfile = isProfile(values);
    Ports ports;
    ports.inputs = {{.name = "file",
                     .description = "Text file with one histogram, plain or compressed with gzip, bzip2 or zip. A "
                                    "relative path is searched for beside the document, then in the current folder.",
                     .type = ValueType::Text},
                    {.name = "type",
                     .description = "What the file holds, and what comes out.",
                     .type = ValueType::Choice,
                     .value = "histogram",
                     .choices = {"histogram", "profile"}}};
    ports.outputs = {{.name = hasProfile ? "profile" : "histogram",
                      .description = hasProfile ? "The profile of one or two dimensions."
                                                : "The histogram of one, two or three dimensions.",
                      .type = hasProfile ? ValueType::Profile : ValueType::Histogram}};
    return ports;
}

void Geant4HistogramKind::evaluate(const Arguments& arguments, Results& results, RunContext& context) const {
    const ValueTexts values{{"type", arguments.text("type")}};
    const OutputSpec output = ports(values).outputs.front();
    DataObjectPtr object = readGeant4Histogram(context.inputFile(arguments.text("file")), context);
    if (object->type() != output.type) {
        throw Failure("type", "the file holds a " + std::string(nameOf(object->type())) + ", not a " + output.name);
    }
    results.set(output.name, std::move(object));
}

std::unique_ptr<Kind> makeGeant4Histogram() {
    return std::make_unique<Geant4HistogramKind>();
}

}  // namespace velmorak
