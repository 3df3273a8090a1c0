#pragma once

#include <QzManager.h>

#include <filesystem>
#include <functional>
#include <random>
#include <string>
#include <vector>

namespace velmorak {
struct InputSpec;
}

namespace velmorak::test {

/// Seed of the random tests: VELMORAK_TEST_SEED, or else always the same. It is printed.
std::uint32_t seedOfTest();

/// Edits a pipeline at random, only through the interface that the editor uses, with plausible values. Never adds a
/// plug-in of the kind Plot, which starts another program.
class RandomEditor {
public:
    /// @param manager outlives this.
    /// @param folder  for documents and data.
    /// @param afterCall called after each call that changes the pipeline.
    RandomEditor(
        QzManager& manager, std::uint32_t seed, std::filesystem::path folder, std::function<void()> afterCall = [] {});

    /// Adds, deletes, renames, connects or disconnects a plug-in, sets a value, moves a box or the start, saves, or
    /// replaces everything by a saved document.
    void edit();
    /// Adds plug-ins of random kinds, with values and wires that are likely to work, up to the given number.
    void build(std::size_t plugins);
    /// Adds one of the kind in the same way.
    QzBase& addOfKind(std::size_t kind);
    /// @return index of the kind in QzManager::GetPlugins.
    static std::size_t kindOf(const std::string& name);

    std::size_t below(std::size_t limit) { return random() % limit; }
    bool oneIn(std::size_t limit) { return below(limit) == 0; }

private:
    QzBase& anyNode();
    void add();
    void remove();
    void rename();
    void connect();
    void repair();
    void feed(QzBase& receiver);
    void feed(QzBase& receiver, std::size_t input);
    void disconnect();
    void setValue();
    void setValue(QzBase& node, std::size_t input);
    void moveStart();
    void moveBox();
    void open();
    void save();
    std::string plausible(const QzBase& node, const InputSpec& spec);
    const std::string& oneOf(const std::vector<std::string>& texts) { return texts[below(texts.size())]; }

    QzManager& manager;
    std::mt19937 random;
    std::filesystem::path folder;
    std::function<void()> afterCall;
    std::vector<std::filesystem::path> saved;
    std::size_t names = 0;
};

}  // namespace velmorak::test
