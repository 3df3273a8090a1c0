#include "RandomEditor.h"

#include "graph/ManagerImpl.h"

#include <velmorak/Aida.h>

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <set>

namespace velmorak::test {
namespace {

constexpr std::size_t maxNodes = 25;

using Texts = std::vector<std::string>;

const Texts expressions{"x", "x*y", "sqrt(abs(y))", "x > 0.5 ? y : n", "n", "log(x)", "x + n", "y", "x/n"};
const Texts conditions{"x > 0.5", "y < 1 and n > 2", "true", "sqrt(y) > 0.1", "x < y"};

const std::map<std::string, Texts> textsByInput{
    {"weight", {"", "", "y", "abs(y)", "1/n"}},
    {"cuts", {"first: x > 0.2; second: y > 0", "only: n > 2", "few: x > 0.9"}},
    {"edges", {"", "", "0 0.1 0.5 1", "3 2 1"}},
    {"parameters", {"", "", "", "z", "z q"}},
    {"column", {"result", "z", "y"}},
    {"title", {"", "T"}},
    {"x", {"x", "y", "x*y"}},
    {"y", {"y", "x", "n"}},
    {"model", {"pol1", "pol1", "gauss + pol1"}},
    {"start", {""}},
    {"xedges", {""}},
    {"yedges", {""}},
    {"folder", {"/", "/run1"}}};
const std::map<std::string, Texts> textsOfSources{
    {"columns",
     {"x: uniform(0, 1); y: gauss(0, 1); n: poisson(3)", "x: exponential(2); y: breitwigner(1, 2); n: poisson(9)"}},
    {"object", {"", "", "", "/lab/spectrum"}},
    {"types", {""}}};
const std::map<std::string, Texts> textsOfTables{{"columns", {"x y n", "x y n", "n x", ""}},
                                                 {"file", {""}},
                                                 {"by", {"x", "n; y descending", "n", ""}},
                                                 {"names", {"x -> y; y -> x", "n -> m", ""}},
                                                 {"time", {"x", "n"}}};
const std::map<std::string, Texts> textsOfOutputs{{"file", {"", "", "", "a.aida", "b.aida", "../c"}}};

/// @return plausible texts for a text input; empty if only its default is known to work.
Texts textsFor(const QzKind& kind, const InputSpec& spec) {
    if (kind.name == "Explode" && spec.name == "columns") {
        return {"", "l"};
    }
    const auto& special = kind.group == "Data"     ? textsOfSources
                          : kind.group == "Output" ? textsOfOutputs
                                                   : textsOfTables;
    for (const auto* texts : {&special, &textsByInput}) {
        if (const auto found = texts->find(spec.name); found != texts->end()) {
            return found->second;
        }
    }
    if (spec.name == "file") {
        return {kind.name == "AidaTable" ? "tuple.aida" : kind.name == "CsvTable" ? "table.csv" : "objects.aida"};
    }
    if (spec.name.find("condition") != std::string::npos) {
        return conditions;
    }
    return spec.name.find("expression") == std::string::npos ? Texts{} : expressions;
}

bool takesText(const InputSpec& spec) {
    return spec.type == ValueType::Number || spec.type == ValueType::Text || spec.type == ValueType::Choice;
}

/// A plug-in takes one table.
bool fits(const OutputSpec& output, const InputSpec& input) {
    const bool isFurther = std::isdigit(static_cast<unsigned char>(input.name.back())) != 0;
    return input.type == ValueType::Any ? !isFurther || output.type != ValueType::Table : input.type == output.type;
}

/// @return the node and everything downstream of it.
std::set<const QzBase*> downstreamOf(QzBase& node) {
    std::set<const QzBase*> found{&node};
    std::vector<QzBase*> open{&node};
    while (!open.empty()) {
        QzBase& at = *open.back();
        open.pop_back();
        for (const QzBase::Output& output : at.Outputs()) {
            for (QzBase* consumer : output.consumers) {
                if (found.insert(consumer).second) {
                    open.push_back(consumer);
                }
            }
        }
    }
    return found;
}

bool isDrawn(const QzKind& kind) {
    return kind.name == "Plot";
}

/// A table of real numbers x and y, integers n and lists l.
void writeTuple(const std::filesystem::path& file, std::size_t rows) {
    const Schema schema({{"x", ColumnType::Real, false, ""},
                         {"y", ColumnType::Real, false, ""},
                         {"n", ColumnType::Integer, false, ""},
                         {"l", ColumnType::Real, true, ""}});
    std::vector<double> x, y, l;
    std::vector<std::int64_t> n;
    std::vector<std::uint64_t> ends{0};
    for (std::size_t row = 0; row < rows; ++row) {
        x.push_back(static_cast<double>(row * 7919 % 1000) / 1000);
        y.push_back(static_cast<double>(row * 104729 % 997) / 300 - 1);
        n.push_back(static_cast<std::int64_t>(row % 7));
        l.insert(l.end(), row % 3, x.back());
        ends.push_back(l.size());
    }
    AidaFileWriter writer(file);
    writer.beginTable("tuple", "", "/", schema);
    const auto column = [](auto values, std::vector<std::uint64_t> offsets) {
        return std::make_shared<Column>(Column{std::move(values), std::move(offsets)});
    };
    writer.writeRows({0, 0, rows, {column(x, {}), column(y, {}), column(n, {}), column(l, ends)}});
    writer.endTable();
    writer.close();
}

void writeData(const std::filesystem::path& folder) {
    writeTuple(folder / "tuple.aida", 5000);
    std::ofstream csv(folder / "table.csv");
    csv << "x,y,n\n";
    for (int row = 0; row < 2000; ++row) {
        csv << "0." << row % 97 << ',' << row % 13 << '.' << row % 9 << ',' << row % 5 << '\n';
    }
    std::filesystem::copy_file(TEST_EXAMPLES "/First_steps/stored.aida", folder / "objects.aida");
}

}  // namespace

std::uint32_t seedOfTest() {
    const char* const setting = std::getenv("VELMORAK_TEST_SEED");
    const auto seed = static_cast<std::uint32_t>(!setting ? 20 : std::strtoul(setting, nullptr, 10));
    std::cout << "VELMORAK_TEST_SEED=" << seed << std::endl;
    return seed;
}

RandomEditor::RandomEditor(QzManager& manager, std::uint32_t seed, std::filesystem::path folder,
                           std::function<void()> afterCall)
    : manager(manager), random(seed), folder(std::move(folder)), afterCall(std::move(afterCall)) {
    writeData(this->folder);
    manager.SetFileName((this->folder / "stress.zedra").string());
}

QzBase& RandomEditor::anyNode() {
    return *manager.plugins[below(manager.plugins.size())];
}

void RandomEditor::edit() {
    const std::size_t choice = below(100);
    if (manager.plugins.empty() || (choice < 12 && manager.plugins.size() < maxNodes)) {
        add();
    } else if (choice < 18) {
        remove();
    } else if (choice < 22) {
        rename();
    } else if (choice < 50) {
        connect();
    } else if (choice < 58) {
        disconnect();
    } else if (choice < 84) {
        setValue();
    } else if (choice < 90) {
        moveBox();
    } else if (choice < 96) {
        moveStart();
    } else if (choice < 98) {
        save();
    } else if (!saved.empty() && oneIn(2)) {
        open();
    }
}

void RandomEditor::build(std::size_t plugins) {
    while (manager.plugins.size() < plugins) {
        add();
    }
}

void RandomEditor::add() {
    const auto& kinds = QzManager::GetPlugins();
    const bool isSource = manager.plugins.empty() || oneIn(8);
    std::size_t kind = isSource ? kindOf("RandomTable") : below(kinds.size());
    while (isDrawn(kinds[kind])) {
        kind = below(kinds.size());
    }
    addOfKind(kind);
}

QzBase& RandomEditor::addOfKind(std::size_t kind) {
    QzBase& node = *manager.CreatePlugin(static_cast<std::uint16_t>(kind), "N" + std::to_string(names++));
    afterCall();
    for (std::size_t input = 0; input < node.Inputs().size(); ++input) {
        setValue(node, input);
    }
    feed(node);
    return node;
}

std::size_t RandomEditor::kindOf(const std::string& name) {
    const auto& kinds = QzManager::GetPlugins();
    return static_cast<std::size_t>(std::ranges::find(kinds, name, &QzKind::name) - kinds.begin());
}

void RandomEditor::remove() {
    manager.DeletePlugin(static_cast<int>(below(manager.plugins.size())));
    afterCall();
}

void RandomEditor::rename() {
    anyNode().SetName("R" + std::to_string(names++));
    afterCall();
}

void RandomEditor::connect() {
    if (!oneIn(4)) {
        repair();
        return;
    }
    feed(anyNode());
    if (!oneIn(10) || manager.plugins.empty()) {
        return;
    }
    // Of any types, and in cycles.
    QzBase& sender = anyNode();
    QzBase& receiver = anyNode();
    if (sender.Outputs().empty()) {
        return;
    }
    receiver.Connect(receiver.Inputs()[below(receiver.Inputs().size())].name, &sender,
                     sender.Outputs()[below(sender.Outputs().size())].name);
    afterCall();
}

/// Connects each unconnected input that only a wire can feed.
void RandomEditor::repair() {
    for (std::size_t i = 0; i < manager.plugins.size(); ++i) {
        QzBase& node = *manager.plugins[i];
        for (std::size_t input = 0; input < node.Inputs().size(); ++input) {
            if (!takesText(QzBase::Part::of(node).inputSpecs[input]) && !node.Inputs()[input].source) {
                feed(node, input);
            }
        }
    }
}

void RandomEditor::feed(QzBase& receiver) {
    const std::vector<InputSpec> specs = QzBase::Part::of(receiver).inputSpecs;
    for (std::size_t input = 0; input < specs.size(); ++input) {
        const bool isFed = receiver.Inputs()[input].source != nullptr;
        if (takesText(specs[input]) ? oneIn(12) : !isFed || oneIn(3)) {
            feed(receiver, input);
        }
    }
}

void RandomEditor::feed(QzBase& receiver, std::size_t input) {
    const InputSpec spec = QzBase::Part::of(receiver).inputSpecs[input];
    const std::set<const QzBase*> downstream = downstreamOf(receiver);
    std::vector<std::pair<QzBase*, std::string>> fitting;
    for (QzBase* sender : manager.plugins) {
        for (const OutputSpec& output : QzBase::Part::of(*sender).outputSpecs) {
            if (!downstream.contains(sender) && fits(output, spec)) {
                fitting.emplace_back(sender, output.name);
            }
        }
    }
    if (fitting.empty()) {
        return;
    }
    const auto& [sender, output] = fitting[below(fitting.size())];
    receiver.Connect(spec.name, sender, output);
    afterCall();
}

void RandomEditor::disconnect() {
    QzBase& receiver = anyNode();
    for (const QzBase::Input& input : receiver.Inputs()) {
        if (!input.source) {
            continue;
        }
        const std::string output = input.source->Outputs()[input.sourceOutput].name;
        input.source->Disconnect(output, &receiver, std::string(input.name));
        afterCall();
        return;
    }
}

void RandomEditor::setValue() {
    QzBase& node = anyNode();
    setValue(node, below(node.Inputs().size()));
}

void RandomEditor::setValue(QzBase& node, std::size_t input) {
    // The previous value may have removed ports.
    if (input >= node.Inputs().size()) {
        return;
    }
    manager.SetInputValue(manager.IndexOf(node.GetName()), static_cast<int>(input),
                          plausible(node, QzBase::Part::of(node).inputSpecs[input]));
    afterCall();
}

std::string RandomEditor::plausible(const QzBase& node, const InputSpec& spec) {
    static const Texts rows{"0", "1", "1000", "40000", "100000"};
    static const Texts numbers{"0", "1", "2", "3", "0.5", "-1"};
    static const Texts counts{"1", "2", "3"};
    const Texts texts = textsFor(*node.GetKind(), spec);
    if (spec.type == ValueType::Number && spec.name == "rows") {
        return oneOf(rows);
    }
    if (spec.type == ValueType::Number && spec.isInteger) {
        return spec.maximum > 100 && oneIn(2) ? std::string(spec.value) : oneOf(counts);
    }
    if (spec.type == ValueType::Number) {
        return oneIn(2) ? std::string(spec.value) : oneOf(numbers);
    }
    if (spec.type == ValueType::Choice && !spec.choices.empty()) {
        return oneOf(spec.choices);
    }
    if (spec.name == "file" && oneIn(30)) {
        return "missing";
    }
    return spec.type == ValueType::Text && !texts.empty() ? oneOf(texts) : spec.value;
}

void RandomEditor::moveStart() {
    // Prefers a source: most plug-ins are downstream of one.
    int index = static_cast<int>(below(manager.plugins.size()));
    for (int i = 0; i < index; ++i) {
        if (manager.plugins[static_cast<std::size_t>(i)]->GetKind()->group == "Data") {
            index = i;
        }
    }
    manager.SetStart(index);
    afterCall();
}

void RandomEditor::moveBox() {
    anyNode().SetPosition(static_cast<float>(below(1000)), static_cast<float>(below(1000)));
    anyNode().SetExpanded(oneIn(2));
    afterCall();
}

/// Replaces the document as the editor does.
void RandomEditor::open() {
    const std::filesystem::path& file = saved[below(saved.size())];
    while (!manager.plugins.empty()) {
        manager.DeletePlugin(0);
        afterCall();
    }
    manager.ReadDocument(file.string());
    afterCall();
}

void RandomEditor::save() {
    const std::filesystem::path file = folder / ("saved" + std::to_string(saved.size() % 8) + ".zedra");
    std::ofstream(file, std::ios::binary) << manager.DocumentText();
    manager.SetFileName(file.string());
    saved.push_back(file);
    afterCall();
}

}  // namespace velmorak::test
