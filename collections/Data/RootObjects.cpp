#include "kinds.h"

#include "ObjectSum.h"
#include "shared/FileInputs.h"

#include <root/RootObjects.h>

#include <limits>
#include <utility>
#include <variant>

namespace velmorak {
namespace {

InputSpec objectInput(const std::string& what, const std::string& example) {
    return {.name = "object",
            .description = "Path of the " + what + " in the file, for example " + example +
                           ", or its name without folders if there is only one of that name. Empty: the only one.",
            .type = ValueType::Text};
}

/// Reads one object of a ROOT file that is not a table. Its kinds differ in the type of the object.
class RootObjectKind : public Function {
public:
    struct About {
        std::string name;
        std::string summary;
        std::string notes;
        std::string example;  ///< Path used in the description of the input.
        OutputSpec output;
        bool isSummed = false;  ///< The objects of several files can be added.
    };
    explicit RootObjectKind(About about) : about(std::move(about)) {}

    std::string name() const override { return about.name; }
    std::string summary() const override { return about.summary; }
    std::string notes() const override { return about.notes; }
    Ports ports(const ValueTexts& values) const override;
    void evaluate(const Arguments& arguments, Results& results, RunContext& context) const override;

private:
    DataObjectPtr read(const ListedFile& file, const Arguments& arguments, RunContext& context) const;

    About about;
};

Ports RootObjectKind::ports(const ValueTexts&) const {
    InputSpec file = summedFilesInput("ROOT file", "");
    if (!about.isSummed) {
        file = {.name = "file", .description = "ROOT file to read.", .type = ValueType::Text};
    }
    return {{std::move(file), objectInput(about.output.name, about.example)}, {about.output}};
}

DataObjectPtr RootObjectKind::read(const ListedFile& file, const Arguments& arguments, RunContext& context) const {
    return std::get<DataObjectPtr>(readRootObject(file.path, arguments.text("object"), about.output.type, context));
}

void RootObjectKind::evaluate(const Arguments& arguments, Results& results, RunContext& context) const {
    const FileList list = filesOf(arguments, context);
    if (!about.isSummed && list.files.size() > 1) {
        throw Failure("file", "the objects of several files cannot be added; enter a single file");
    }
    requireNoProperties(list);
    ObjectSum sum;
    for (const ListedFile& file : list.files) {
        if (context.isStopping()) {
            throw Stopped();
        }
        sum.add(file.name, read(file, arguments, context));
    }
    results.set(about.output.name, sum.take());
}

/// Reads a number or a text.
class RootValueKind : public Function {
public:
    std::string name() const override { return "RootValue"; }
    std::string summary() const override { return "Reads a number or a text from a ROOT file."; }
    std::string notes() const override;
    Ports ports(const ValueTexts& values) const override;
    void evaluate(const Arguments& arguments, Results& results, RunContext& context) const override;
};

std::string RootValueKind::notes() const {
    return "A `TParameter` is a number, a `TObjString` and the title of a `TNamed` are texts.";
}

Ports RootValueKind::ports(const ValueTexts&) const {
    return {{{.name = "file", .description = "ROOT file to read.", .type = ValueType::Text},
             objectInput("number or text", "luminosity"),
             {.name = "type",
              .description = "What the object is.",
              .type = ValueType::Choice,
              .value = "number",
              .choices = {"number", "text"}}},
            {{.name = "number", .description = "The number; NaN for a text.", .type = ValueType::Number},
             {.name = "text", .description = "The text, or the number with all its digits.", .type = ValueType::Text}}};
}

void RootValueKind::evaluate(const Arguments& arguments, Results& results, RunContext& context) const {
    const FileList list = filesOf(arguments, context);
    if (list.files.size() > 1) {
        throw Failure("file", "the values of several files cannot be added; enter a single file");
    }
    requireNoProperties(list);
    const bool isText = arguments.text("type") == "text";
    const Value value = readRootObject(list.files.front().path, arguments.text("object"),
                                       isText ? ValueType::Text : ValueType::Number, context);
    const double number = isText ? std::numeric_limits<double>::quiet_NaN() : std::get<double>(value);
    results.set("number", number);
    results.set("text", isText ? std::get<std::string>(value) : textOf(number));
}

std::string histogramNotes() {
    return R"(A `TH1`, `TH2` or `TH3` of any type of contents. Contents and sums of squared weights are those of the file, with all
underflow and overflow bins; without sums of squared weights, those of weights of 1. Labels of an axis become categories if
each bin has one and all have the same width. A file stores sums of the filled quantity only for all bins together: mean, rms and correlation of
the histogram are those of the file as long as its sums match its contents, and those of the centres of the bins
otherwise. The number of entries in a bin is (Σw)²/Σw², rounded; the number that the file gives for the whole is in the
annotation.)";
}

std::string profileNotes() {
    return R"(A `TProfile` or `TProfile2D`. Height, error and spread follow from the sums in the file; the error is always
that of the mean, whatever error option the profile was made with.)";
}

std::string pointsNotes() {
    return R"(A `TGraph`, `TGraphErrors` or `TGraphAsymmErrors` gives its points with their errors. A `TEfficiency` over one axis gives
a point for each bin with fills: the fraction of passed fills, with the interval of the confidence level that the file asks
for, after Clopper and Pearson, Wilson, Agresti and Coull (L. D. Brown, T. T. Cai, A. DasGupta, Statistical Science 16 (2001)
101), or the normal approximation. Weighted efficiencies and other intervals are refused.)";
}

std::vector<RootObjectKind::About> rootObjectKinds() {
    return {
        {.name = "RootHistogram",
         .summary = "Reads a histogram of one, two or three dimensions from a ROOT file, or adds those of several.",
         .notes = histogramNotes(),
         .example = "run1/energy",
         .output = {.name = "histogram", .description = "The histogram.", .type = ValueType::Histogram},
         .isSummed = true},
        {.name = "RootProfile",
         .summary = "Reads a profile of one or two dimensions from a ROOT file, or adds those of several.",
         .notes = profileNotes(),
         .example = "calib/gain",
         .output = {.name = "profile", .description = "The profile.", .type = ValueType::Profile},
         .isSummed = true},
        {.name = "RootPoints",
         .summary = "Reads the points of a graph, or an efficiency, from a ROOT file.",
         .notes = pointsNotes(),
         .example = "limits/observed",
         .output = {.name = "points",
                    .description = "The points with their errors in x and y.",
                    .type = ValueType::Points}},
    };
}

}  // namespace

std::vector<std::unique_ptr<Kind>> makeRootObjects() {
    std::vector<std::unique_ptr<Kind>> kinds;
    for (RootObjectKind::About& about : rootObjectKinds()) {
        kinds.push_back(std::make_unique<RootObjectKind>(std::move(about)));
    }
    kinds.push_back(std::make_unique<RootValueKind>());
    return kinds;
}

}  // namespace velmorak
