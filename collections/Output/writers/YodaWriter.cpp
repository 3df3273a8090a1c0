#include "Output/kinds.h"

#include "NamedObjects.h"
#include "Output/Ports.h"

#include <velmorak/Text.h>

#include <yoda/YodaFile.h>

#include <algorithm>
#include <utility>

namespace velmorak {

namespace {

/// Writes its inputs into one YODA file.
class YodaWriterKind : public Function {
public:
    std::string name() const override { return "YodaWriter"; }
    std::string summary() const override;
    Ports ports(const ValueTexts& values) const override;
    std::string refusal(const std::string& input, const std::string& value) const override;
    void evaluate(const Arguments& arguments, Results& results, RunContext& context) const override;
};

std::string unusedPath(const std::string& path, const std::vector<YodaObject>& objects) {
    std::string candidate = path;
    const auto hasCandidate = [&](const YodaObject& object) { return object.path == candidate; };
    for (int number = 2; std::any_of(objects.begin(), objects.end(), hasCandidate); ++number) {
        candidate = path + "_" + std::to_string(number);
    }
    return candidate;
}

/// A path is one word on a line.
std::string asWord(std::string name) {
    std::replace_if(
        name.begin(), name.end(), [](unsigned char c) { return c <= ' ' || c == '/'; }, '_');
    return name;
}

std::vector<YodaObject> objectsOf(const Arguments& arguments) {
    const std::string& folder = arguments.text("folder");
    std::vector<YodaObject> objects;
    for (const std::string& input : numberedInputs(arguments, "objects", "object")) {
        const Value& value = arguments.value(input);
        if (!arguments.isWired(input) || std::holds_alternative<std::monostate>(value)) {
            throw Failure(input, "wire a histogram, a list of histograms, a profile, points or a number");
        }
        for (NamedValue& each : unfolded(value, arguments.sourceName(input))) {
            const std::string path = folder + (folder.ends_with('/') ? "" : "/") + asWord(each.name);
            objects.push_back({unusedPath(path, objects), std::move(each.value)});
        }
    }
    return objects;
}

}  // namespace

std::string YodaWriterKind::summary() const {
    return "Writes histograms, profiles, points and numbers into one YODA file, from which every number reads back to "
           "the last bit.";
}

Ports YodaWriterKind::ports(const ValueTexts& values) const {
    const InputSpec version = {.name = "version",
                               .description = "Version of the format.",
                               .type = ValueType::Choice,
                               .value = "2",
                               .choices = {"2", "3"}};
    Ports ports;
    ports.inputs = writerInputs({.objects = "Histogram, list of histograms, profile, points or number to write",
                                 .objectsRemark = {},
                                 .ending = ".yoda",
                                 .fileRemark = ", which is gzipped if it ends with .gz",
                                 .folder = "/MY_ANALYSIS",
                                 .own = {version}},
                                values);
    return ports;
}

std::string YodaWriterKind::refusal(const std::string& input, const std::string& value) const {
    const bool isFolder = value.starts_with('/') && value.find_first_of(" \t\r\n") == std::string::npos;
    return input == "folder" && !isFolder ? "The folder must begin with \"/\" and have no blanks." : "";
}

void YodaWriterKind::evaluate(const Arguments& arguments, Results& /*results*/, RunContext& context) const {
    if (const std::string reason = refusal("folder", arguments.text("folder")); !reason.empty()) {
        throw Failure("folder", reason);
    }
    const std::string name = writtenFileName(arguments, context, ".yoda");
    const std::vector<YodaObject> objects = objectsOf(arguments);
    const YodaVersion version = arguments.text("version") == "2" ? YodaVersion::V2 : YodaVersion::V3;
    context.writeResult(name, [&](const std::filesystem::path& file) { writeYodaFile(file, name, objects, version); });
}

std::unique_ptr<Kind> makeYodaWriter() {
    return std::make_unique<YodaWriterKind>();
}

}  // namespace velmorak
