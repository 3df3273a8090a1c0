#pragma once

#include <velmorak/Kind.h>
#include <velmorak/RowMemory.h>
#include <velmorak/TemporaryFolder.h>

#include <filesystem>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace velmorak::test {

/// All kinds by group, as their collections register them: the shipped ones, and those of the author's own build.
struct ShippedGroup {
    std::string name;
    std::vector<std::unique_ptr<Kind>> kinds;
};
const std::vector<ShippedGroup>& shippedGroups();
const Kind& shippedKind(const std::string& name);

/// Where a collection is. @throws std::runtime_error if there is none.
std::filesystem::path collectionFolder(const std::string& group);

std::string textIn(const std::filesystem::path& file);

/// A table in memory.
struct SmallTable {
    Schema schema;
    std::vector<Chunk> chunks;

    std::vector<double> column(const std::string& name) const;
};

/// A table of real columns, cut into chunks of the given length.
SmallTable tableOf(const std::vector<std::pair<std::string, std::vector<double>>>& columns, std::size_t chunkLength);

/// One plug-in on the bench: values and wires go in, the kind does its work, results come out. It is installed for the
/// authors of kinds too (velmorak_add_kind_test in the CMake package).
class KindHarness : public RunContext, public LimitedRun {
public:
    explicit KindHarness(const std::string& kindName, std::string pluginName = "bench");
    /// For a kind that no shipped collection has. It outlives this.
    explicit KindHarness(const Kind& kind);
    ~KindHarness() override;

    KindHarness& set(const std::string& input, const std::string& text);
    KindHarness& wire(const std::string& input, Value value);
    KindHarness& wire(const std::string& input, SmallTable table);

    /// @throws whatever the kind throws.
    void run();
    /// The steps of run for an accumulator.
    std::unique_ptr<Accumulation> accumulation();
    void finish(Accumulation& accumulation, AccumulatorState& state);
    /// What run says when it fails; empty when it does not.
    std::string failure();

    double number(const std::string& output) const;
    NumberWithError numberWithError(const std::string& output) const;
    Value value(const std::string& output) const { return outputs.at(output); }
    const std::map<std::string, Value>& values() const { return outputs; }
    HistogramPtr histogram(const std::string& output) const;
    template <typename Object>
    std::shared_ptr<const Object> object(const std::string& output) const {
        return std::dynamic_pointer_cast<const Object>(std::get<DataObjectPtr>(outputs.at(output)));
    }
    std::string text(const std::string& output) const { return std::get<std::string>(outputs.at(output)); }
    /// The rows that came out, also those of a stored table.
    const SmallTable& table() const { return made; }
    /// Bytes that the kind may keep rows in.
    KindHarness& limitMemory(std::size_t bytes) { return budget = std::make_shared<MemoryBudget>(bytes), *this; }
    std::shared_ptr<MemoryBudget> memory() const override { return budget; }
    const std::filesystem::path& folder() const { return results.path(); }
    const Kind& kind() const { return shipped; }
    Ports ports() const { return shipped.ports(texts); }
    void stop() { stopping = true; }

    bool isStopping() const override { return stopping; }
    const std::string& pluginName() const override { return plugin; }
    std::filesystem::path inputFile(const std::string& text) const override { return text; }
    std::filesystem::path commandLineAida() const override { return {}; }
    void writeResult(const std::string& fileName,
                     const std::function<void(const std::filesystem::path&)>& writer) override;
    std::unique_ptr<ResultFile> beginResult(const std::string& fileName) override;
    void warn(const std::string& sentence) override;
    void tell(const std::string& text) override { messages += text; }
    const std::string& printed() const { return messages; }
    RunRecord record() const override { return givenRecord; }
    KindHarness& remember(RunRecord record) { return givenRecord = std::move(record), *this; }
    std::optional<double> fixedDate() const override { return date; }
    /// @param secondsSince1970 of the files that the kind writes.
    KindHarness& setDate(double secondsSince1970) { return date = secondsSince1970, *this; }
    /// Warnings are kept, where they would otherwise end the test.
    KindHarness& expectWarnings() { return isWarned = true, *this; }
    const std::vector<std::string>& warnings() const { return allWarnings; }

private:
    void read(TableReader& reader);
    void apply(RowOperation& operation);
    void concatenate(const Concatenation& concatenation, const Arguments& arguments);
    void accumulate();

    const Kind& shipped;
    std::string plugin;
    TemporaryFolder results{"bench"};
    ValueTexts texts;
    std::map<std::string, Value> wires;
    std::string tableInput;
    SmallTable given;
    std::map<std::string, SmallTable> givenByInput;
    SmallTable made;
    std::map<std::string, Value> outputs;
    bool stopping = false;
    bool isWarned = false;
    std::vector<std::string> allWarnings;
    std::string messages;
    RunRecord givenRecord;
    std::optional<double> date;
    std::shared_ptr<MemoryBudget> budget = std::make_shared<MemoryBudget>();
};

}  // namespace velmorak::test
