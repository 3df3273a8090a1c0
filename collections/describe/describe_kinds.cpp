#include <velmorak/Kind.h>

#include <dlfcn.h>

#include <iostream>
#include <stdexcept>

/// Writes what the kinds say of themselves: a collection's plugin_summary.txt, or a page in Markdown.
namespace {

using namespace velmorak;

struct Group {
    std::string name;
    std::vector<std::unique_ptr<Kind>> kinds;
};

class Collector : public Registry {
public:
    void group(const std::string& name) override { groups.push_back({.name = name, .kinds = {}}); }
    void add(std::unique_ptr<Kind> kind) override { groups.back().kinds.push_back(std::move(kind)); }

    std::vector<Group> groups;
};

/// One sentence for each shipped group, shown beside its name.
std::string purposeOf(const std::string& group) {
    const std::map<std::string, std::string> purposes = {
        {"Arithmetic", "Numbers, and what is computed from them."},
        {"Data", "Where tables and stored objects come from."},
        {"Fit", "Functions fitted to histograms, profiles and points."},
        {"Histogram", "Histograms and statistics."},
        {"Output", "Pictures, reports and files."},
        {"Table", "New columns, cuts, and tables made of others."},
    };
    return purposes.at(group);
}

void load(const std::string& library, Collector& collector) {
    void* handle = dlopen(library.c_str(), RTLD_LAZY | RTLD_LOCAL);
    if (handle == nullptr)
        throw std::runtime_error(dlerror());
    void* factory = dlsym(handle, "QzAnalysisFactory");
    if (factory == nullptr)
        throw std::runtime_error(library + " offers no kinds");
    reinterpret_cast<void (*)(Registry&)>(factory)(collector);
}

void writeSummary(const Group& group, std::ostream& out) {
    out << "==== " << group.name << " ====\n" << purposeOf(group.name) << "\n\n";
    for (const auto& kind : group.kinds) {
        const Ports ports = kind->ports({});
        out << "---- " << kind->name() << " ----\n" << kind->summary() << "\nInputs:\n";
        for (const InputSpec& input : ports.inputs)
            out << input.name << ": " << input.description << "\n";
        out << "Outputs:\n";
        for (const OutputSpec& output : ports.outputs)
            out << output.name << ": " << output.description << "\n";
        out << "\n";
    }
}

std::string limitsOf(const InputSpec& input) {
    if (input.type == ValueType::Choice) {
        std::string text;
        for (const std::string& choice : input.choices)
            text += (text.empty() ? "" : ", ") + choice;
        return text;
    }
    const std::string kind = input.isInteger ? "whole " : "";
    const bool isBounded = input.minimum > -std::numeric_limits<double>::infinity();
    return isBounded ? kind + textOf(input.minimum) + " to " + textOf(input.maximum) : std::string();
}

void writeKind(const Kind& kind, std::ostream& out) {
    const Ports ports = kind.ports({});
    out << "## " << kind.name() << "\n\n" << kind.summary() << "\n\n";
    out << "| input | type | default | limits | meaning |\n|---|---|---|---|---|\n";
    for (const InputSpec& input : ports.inputs)
        out << "| `" << input.name << "` | " << nameOf(input.type) << " | "
            << (input.value.empty() ? "" : "`" + input.value + "`") << " | " << limitsOf(input) << " | "
            << input.description << " |\n";
    if (!ports.outputs.empty())
        out << "\n| output | type | meaning |\n|---|---|---|\n";
    for (const OutputSpec& output : ports.outputs)
        out << "| `" << output.name << "` | " << nameOf(output.type) << " | " << output.description << " |\n";
    out << "\n";
    if (!kind.notes().empty())
        out << kind.notes() << "\n\n";
}

void writePage(const Group& group, std::ostream& out) {
    out << "# " << group.name << "\n\n" << purposeOf(group.name) << "\n\n";
    for (const auto& kind : group.kinds)
        writeKind(*kind, out);
}

int describe(const std::string& form, const std::vector<std::string>& libraries) {
    Collector collector;
    for (const std::string& library : libraries)
        load(library, collector);
    for (const Group& group : collector.groups)
        form == "summary" ? writeSummary(group, std::cout) : writePage(group, std::cout);
    return std::cout.flush() ? 0 : 1;
}

}  // namespace

int main(int count, char** arguments) {
    const std::vector<std::string> words(arguments + 1, arguments + count);
    if (words.size() < 2 || (words[0] != "summary" && words[0] != "page")) {
        std::cerr << "usage: describe_kinds summary|page COLLECTION.so...\n";
        return 1;
    }
    try {
        return describe(words[0], {words.begin() + 1, words.end()});
    } catch (const std::exception& error) {
        std::cerr << "describe_kinds: " << error.what() << "\n";
        return 1;
    }
}
