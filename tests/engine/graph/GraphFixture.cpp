#include "GraphFixture.h"

#include <algorithm>
#include <cstdlib>
#include <fstream>

namespace velmorak::test {

namespace fs = std::filesystem;

long Errors::lines() const {
    const std::string all = text();
    return std::ranges::count(all, '\n');
}

std::string Folder::write(const std::string& name, const std::string& content) const {
    const fs::path file = path / name;
    fs::create_directories(file.parent_path());
    fs::remove(file);  // Cutting off a file that is there is slow on some file systems.
    std::ofstream(file, std::ios::binary) << content;
    return file.string();
}

std::string contentOf(const fs::path& file) {
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

std::uint16_t Graph::kindNumber(const std::string& kind) {
    const auto& kinds = QzManager::GetPlugins();
    const auto found = std::ranges::find(kinds, kind, &QzKind::name);
    EXPECT_NE(found, kinds.end()) << kind;
    return static_cast<std::uint16_t>(found - kinds.begin());
}

QzBase& Graph::add(const std::string& kind, const std::string& name) {
    return *manager.CreatePlugin(kindNumber(kind), name);
}

QzBase::Input& Graph::input(const std::string& plugin, const std::string& name) {
    return node(plugin).Inputs().at(static_cast<std::size_t>(node(plugin).InputIndex(name)));
}

QzBase::Output& Graph::output(const std::string& plugin, const std::string& name) {
    return *std::ranges::find(node(plugin).Outputs(), name, &QzBase::Output::name);
}

void Graph::setValue(const std::string& plugin, const std::string& inputName, const std::string& value) {
    manager.SetInputValue(manager.IndexOf(plugin), node(plugin).InputIndex(inputName), value);
}

bool Graph::wire(const std::string& sender, const std::string& from, const std::string& receiver,
                 const std::string& to) {
    return node(receiver).Connect(to, manager.FindPlugin(sender), from);
}

std::string Graph::sourceOf(const std::string& plugin, const std::string& inputName) {
    const QzBase::Input& fed = input(plugin, inputName);
    return !fed.source ? "" : fed.source->name + '.' + fed.source->Outputs().at(fed.sourceOutput).name;
}

std::vector<std::string> Graph::names() const {
    std::vector<std::string> all;
    for (const QzBase* each : manager.plugins) {
        all.push_back(each->GetName());
    }
    return all;
}

void Graph::read(const std::string& document) {
    manager.ReadDocument(folder.write("read.zedra", document));
}

void expectInStep(const QzManager& manager) {
    std::size_t fed = 0;
    std::size_t feeding = 0;
    for (QzBase* node : manager.plugins) {
        for (const QzBase::Output& output : node->Outputs()) {
            ASSERT_EQ(output.consumers.size(), output.consumerInputs.size());
            feeding += output.consumers.size();
            for (std::size_t i = 0; i < output.consumers.size(); ++i) {
                const auto& input =
                    output.consumers[i]->Inputs().at(static_cast<std::size_t>(output.consumerInputs[i]));
                ASSERT_EQ(input.source, node);
                ASSERT_EQ(&node->Outputs().at(input.sourceOutput), &output);
            }
        }
        for (const QzBase::Input& input : node->Inputs()) {
            fed += input.source ? 1U : 0U;
        }
    }
    ASSERT_EQ(fed, feeding);
}

}  // namespace velmorak::test

int main(int argc, char** argv) {
    setenv("VELMORAK_COLLECTIONS", TEST_COLLECTIONS, 1);
    setenv("VELMORAK_ISOLATE", "0", 1);  // Tests and kinds share variables.
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
