#include "kinds.h"

#include "AidaFile.h"
#include "ObjectSum.h"
#include "shared/FileInputs.h"

#include <velmorak/Aida.h>
#include <velmorak/Text.h>

#include <utility>

namespace velmorak {

namespace {

/// Reads one object of an AIDA file that is not a table. Its kinds differ in the type of the object.
class AidaObjectKind : public Function {
public:
    struct About {
        std::string name;
        std::string summary;
        std::string example;  ///< Path used in the description of the input.
        OutputSpec output;
        bool isSummed = false;  ///< The objects of several files can be added.
    };
    explicit AidaObjectKind(About about) : about(std::move(about)) {}

    std::string name() const override { return about.name; }
    std::string summary() const override { return about.summary; }
    Ports ports(const ValueTexts& values) const override;
    void evaluate(const Arguments& arguments, Results& results, RunContext& context) const override;

private:
    About about;
};

Ports AidaObjectKind::ports(const ValueTexts&) const {
    Ports ports;
    ports.inputs = aidaInputs(about.output.name, about.example);
    if (about.isSummed) {
        ports.inputs.front() =
            summedFilesInput("AIDA file, plain or compressed; the format is recognised by content", aidaIfEmpty);
    }
    ports.outputs = {about.output};
    return ports;
}

void AidaObjectKind::evaluate(const Arguments& arguments, Results& results, RunContext& context) const {
    const auto read = [&](const std::filesystem::path& file) {
        return readAidaObject(file, arguments.text("object"), about.output.type, context);
    };
    if (!about.isSummed) {
        results.set(about.output.name, read(aidaFileOf(arguments, context)));
        return;
    }
    const FileList list = aidaFilesOf(arguments, context);
    requireNoProperties(list);
    ObjectSum sum;
    for (const ListedFile& file : list.files) {
        if (context.isStopping()) {
            throw Stopped();
        }
        sum.add(file.name, read(file.path));
    }
    results.set(about.output.name, sum.take());
}

std::vector<AidaObjectKind::About> aidaObjectKinds() {
    return {
        {.name = "AidaHistogram",
         .summary = "Reads a histogram of one, two or three dimensions from an AIDA file, or adds those of several.",
         .example = "/run1/energy",
         .output = {.name = "histogram",
                    .description = "The histogram. A cloud that was converted to a histogram counts as one.",
                    .type = ValueType::Histogram},
         .isSummed = true},
        {.name = "AidaProfile",
         .summary = "Reads a profile of one or two dimensions from an AIDA file, or adds those of several.",
         .example = "/calib/gain",
         .output = {.name = "profile",
                    .description = "The profile, with the heights, errors and spreads given in the file; in a sum, "
                                   "they follow from the sums of weights.",
                    .type = ValueType::Profile},
         .isSummed = true},
        {.name = "AidaPoints",
         .summary = "Reads a set of data points with errors from an AIDA file.",
         .example = "/REF/d01",
         .output = {.name = "points",
                    .description = "The points, each with a value and two errors in every dimension.",
                    .type = ValueType::Points}},
        {.name = "AidaFunction",
         .summary = "Reads a function with its parameters from an AIDA file.",
         .example = "/fits/line",
         .output = {.name = "function",
                    .description = "The function as described in the file.",
                    .type = ValueType::Function}},
    };
}

}  // namespace

std::vector<std::unique_ptr<Kind>> makeAidaObjects() {
    std::vector<std::unique_ptr<Kind>> kinds;
    for (AidaObjectKind::About& about : aidaObjectKinds()) {
        kinds.push_back(std::make_unique<AidaObjectKind>(std::move(about)));
    }
    return kinds;
}

}  // namespace velmorak
