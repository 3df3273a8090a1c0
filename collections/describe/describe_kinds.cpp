#include "KindsAsJson.h"

#include <velmorak/FileFormat.h>
#include <velmorak/FormatMeasurement.h>

#include <dlfcn.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <sstream>
#include <stdexcept>

/// Writes the kinds' descriptions of themselves: a collection's plugin_summary.txt, a page in Markdown, or JSON for a
/// program.
namespace {

using namespace velmorak;

namespace fs = std::filesystem;

using Group = GroupOfKinds;

class Collector : public Registry {
public:
    void group(const std::string& name) override { groups.push_back({.name = name, .kinds = {}}); }
    void add(std::unique_ptr<Kind> kind) override { groups.back().kinds.push_back(std::move(kind)); }
    void addFormat(std::unique_ptr<FileFormat> format) override { known.add(std::move(format)); }
    const FileFormats& formats() const override { return known; }

    std::vector<Group> groups;

private:
    FileFormats known;
};

/// One sentence for each group, shown beside its name.
std::string purposeOf(const std::string& group) {
    const std::map<std::string, std::string> purposes = {
        {"Arithmetic", "Numbers and arithmetic."},
        {"Data", "Sources of tables and stored objects."},
        {"Fit", "Functions fitted to histograms, profiles and points."},
        {"Formats", "Tables in the files of other programs."},
        {"Histogram", "Histograms and statistics."},
        {"Output", "Pictures, reports and files."},
        {"Table", "New columns, cuts, and operations on tables."},
    };
    const auto purpose = purposes.find(group);
    return purpose == purposes.end() ? "Kinds of the collection " + group + "." : purpose->second;
}

void load(const std::string& library, Collector& collector) {
    void* handle = dlopen(library.c_str(), RTLD_LAZY | RTLD_LOCAL);
    if (!handle) {
        throw std::runtime_error(dlerror());
    }
    void* factory = dlsym(handle, "QzAnalysisFactory");
    if (!factory) {
        throw std::runtime_error(library + " has no kinds");
    }
    reinterpret_cast<void (*)(Registry&)>(factory)(collector);
}

void writeSummary(const Group& group, std::ostream& out) {
    out << "==== " << group.name << " ====\n" << purposeOf(group.name) << "\n\n";
    for (const auto& kind : group.kinds) {
        const Ports ports = kind->ports({});
        out << "---- " << kind->name() << " ----\n" << kind->summary() << "\nInputs:\n";
        for (const InputSpec& input : ports.inputs) {
            out << input.name << ": " << input.description << "\n";
        }
        out << "Outputs:\n";
        for (const OutputSpec& output : ports.outputs) {
            out << output.name << ": " << output.description << "\n";
        }
        out << "\n";
    }
}

std::string limitsOf(const InputSpec& input) {
    if (input.type == ValueType::Choice) {
        std::string text;
        for (const std::string& choice : input.choices) {
            text += (text.empty() ? "" : ", ") + choice;
        }
        return text;
    }
    const std::string kind = input.isInteger ? "whole " : "";
    const bool isBounded = input.minimum > -std::numeric_limits<double>::infinity();
    return isBounded ? kind + formatNumber(input.minimum) + " to " + formatNumber(input.maximum) : std::string();
}

std::string textIn(const fs::path& file) {
    std::ostringstream text;
    text << std::ifstream(file, std::ios::binary).rdbuf();
    return text.str();
}

/// Documents in the groups of the examples' folder that have a plug-in of the kind, in the order of their paths. None
/// without a folder.
std::vector<fs::path> examplesOf(const Kind& kind, const fs::path& examples) {
    std::vector<fs::path> found;
    if (examples.empty()) {
        return found;
    }
    for (const auto& entry : fs::recursive_directory_iterator(examples)) {
        if (entry.path().extension() == ".zedra" &&
            textIn(entry.path()).find(R"("kind": ")" + kind.name() + "\"") != std::string::npos) {
            found.push_back(entry.path().lexically_relative(examples));
        }
    }
    std::sort(found.begin(), found.end());
    return found;
}

/// The pipeline of an example, and its plot beside it.
void writePictures(const fs::path& document, const fs::path& examples, std::ostream& out) {
    const std::string name = document.stem();
    out << "![" << name << "](../examples/" << name << ".png)\n";
    if (textIn(examples / document).find(R"("kind": "Plot")") != std::string::npos) {
        out << "![What it plots](../examples/" << name << "-plot.png)\n";
    }
    out << "\n";
}

void writeExamples(const Kind& kind, const fs::path& examples, std::ostream& out) {
    const std::vector<fs::path> found = examplesOf(kind, examples);
    if (found.empty()) {
        return;
    }
    out << (found.size() == 1 ? "Example: " : "Examples: ");
    for (const fs::path& document : found) {
        out << (document == found.front() ? "`" : ", `") << document.string() << "`";
    }
    out << ".\n\n";
    writePictures(found.front(), examples, out);
}

void writeKind(const Kind& kind, const fs::path& examples, std::ostream& out) {
    const Ports ports = kind.ports({});
    out << "## " << kind.name() << "\n\n" << kind.summary() << "\n\n";
    out << "| input | type | default | limits | meaning |\n|---|---|---|---|---|\n";
    for (const InputSpec& input : ports.inputs) {
        out << "| `" << input.name << "` | " << nameOf(input.type) << " | "
            << (input.value.empty() ? "" : "`" + input.value + "`") << " | " << limitsOf(input) << " | "
            << input.description << " |\n";
    }
    if (!ports.outputs.empty()) {
        out << "\n| output | type | meaning |\n|---|---|---|\n";
    }
    for (const OutputSpec& output : ports.outputs) {
        out << "| `" << output.name << "` | " << nameOf(output.type) << " | " << output.description << " |\n";
    }
    out << "\n";
    if (!kind.notes().empty()) {
        out << kind.notes() << "\n\n";
    }
    writeExamples(kind, examples, out);
}

void writePage(const Group& group, const fs::path& examples, std::ostream& out) {
    out << "# " << group.name << "\n\n" << purposeOf(group.name) << "\n\n";
    for (const auto& kind : group.kinds) {
        writeKind(*kind, examples, out);
    }
}

int describe(const std::vector<std::string>& words) {
    Collector collector;
    load(words.back(), collector);
    if (words.front() == "json") {
        return writeJson(collector.groups, std::cout) ? 0 : 1;
    }
    for (const Group& group : collector.groups) {
        words.front() == "summary" ? writeSummary(group, std::cout) : writePage(group, words[1], std::cout);
    }
    return std::cout.flush() ? 0 : 1;
}

}  // namespace

int main(int count, char** arguments) {
    const std::vector<std::string> words(arguments + 1, arguments + count);
    const bool isSummary = words.size() == 2 && (words[0] == "summary" || words[0] == "json");
    const bool isPage = words.size() == 3 && words[0] == "page";
    if (!isSummary && !isPage) {
        std::cerr << "usage: velmorak-describe-kinds summary|json COLLECTION.so\n"
                     "       velmorak-describe-kinds page EXAMPLES COLLECTION.so\n";
        return 1;
    }
    try {
        return describe(words);
    } catch (const std::exception& error) {
        std::cerr << "velmorak-describe-kinds: " << error.what() << "\n";
        return 1;
    }
}
