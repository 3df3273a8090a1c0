#include "kinds.h"

#include "AidaFile.h"
#include "shared/FileInputs.h"

#include <velmorak/Aida.h>
#include <velmorak/Histogram.h>
#include <velmorak/Profile.h>
#include <velmorak/Text.h>

#include <stdexcept>
#include <utility>

namespace velmorak {

namespace {

/// The sum of the same histogram or profile of several files.
class ObjectSum {
public:
    /// @param file name for messages.
    /// @throws Failure if the object cannot be added to those of the files before.
    void add(const std::string& file, DataObjectPtr object) {
        if (!whole) {
            whole = std::move(object);
            first = file;
            return;
        }
        const bool isAdded = addAs<Histogram1D>(file, *object) || addAs<Histogram2D>(file, *object) ||
                             addAs<Histogram3D>(file, *object) || addAs<Profile1D>(file, *object) ||
                             addAs<Profile2D>(file, *object);
        if (!isAdded) {
            throw Failure("file", velmorak::quoted(file) + " and " + velmorak::quoted(first) +
                                      " have objects of different dimensions");
        }
    }

    DataObjectPtr take() { return std::move(whole); }

private:
    template <typename Object>
    bool addAs(const std::string& file, const DataObject& more) {
        const auto* mine = dynamic_cast<const Object*>(whole.get());
        const auto* other = dynamic_cast<const Object*>(&more);
        if (!mine || !other) {
            return false;
        }
        if constexpr (requires { mine->hasExactSums(); }) {
            requireSums(first, mine->hasExactSums());
            requireSums(file, other->hasExactSums());
        }
        if (!sum) {
            sum = std::make_shared<Object>(*mine);
            whole = sum;
        }
        try {
            static_cast<Object&>(*sum).merge(*other);
        } catch (const std::invalid_argument&) {
            throw Failure("file", "the object in " + velmorak::quoted(file) + " has other bins than the one in " +
                                      velmorak::quoted(first));
        }
        return true;
    }

    static void requireSums(const std::string& file, bool hasExactSums) {
        if (!hasExactSums) {
            throw Failure("file", "the profile in " + velmorak::quoted(file) +
                                      " cannot be added to others: the file has no sums of weights");
        }
    }

    std::string first;  ///< Name of the first file.
    DataObjectPtr whole;
    std::shared_ptr<DataObject> sum;  ///< The whole, as soon as it is the sum of several.
};

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
    if (!list.properties.empty()) {
        throw Failure("file",
                      "the properties of files are for tables: there are no rows that could have them; use a "
                      "list without properties, such as @list.txt");
    }
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
