#pragma once

#include <velmorak/Kind.h>

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

/// Kinds for the tests of the run: each counts its calls and does what the test sets.
namespace velmorak::test {

InputSpec numberInput(const std::string& name, const std::string& value = "0");
InputSpec textInput(const std::string& name, const std::string& value = "");
InputSpec wireInput(const std::string& name, ValueType type, bool isOptional = false);
OutputSpec output(const std::string& name, ValueType type);

/// Waits until the run is asked to end.
/// @throws Failure after so many polls that it never will be.
void waitForStop(const RunContext& context);

/// The value in column "x" of a row: of very different sizes, so that sums show the order of their terms.
double valueOfRow(std::uint64_t row);

/// Yields rows of one column "x"; as many as its input "rows" says.
class RowSource : public Source {
public:
    std::string name() const override { return "Rows"; }
    std::string summary() const override { return "Yields rows."; }
    Ports ports(const ValueTexts&) const override;
    std::unique_ptr<TableReader> open(const Arguments& arguments, RunContext& context) const override;
    std::vector<std::filesystem::path> files(const Arguments& arguments, RunContext& context) const override;

    mutable std::atomic<int> opened = 0;
    /// Called before a chunk is yielded, with its number.
    std::function<void(std::uint64_t chunk, RunContext& context)> beforeChunk;
    /// Its readers leave the columns of a chunk to complete.
    bool isLate = false;
    mutable std::atomic<int> completed = 0;
    std::function<void(std::uint64_t chunk)> beforeComplete;
};

/// Keeps the rows whose x is above its input "cut".
class CutKind : public RowWise {
public:
    std::string name() const override { return "Cut"; }
    std::string summary() const override { return "Keeps rows."; }
    Ports ports(const ValueTexts&) const override;
    std::unique_ptr<RowOperation> prepare(const Arguments& arguments, const Schema& schema,
                                          RunContext& context) const override;

    mutable std::atomic<int> applied = 0;
    std::function<void(const Chunk& chunk)> beforeApply;
};

/// Puts the tables of "first" and "second" one after the other.
class JoinKind : public Concatenation {
public:
    std::string name() const override { return "Join"; }
    std::string summary() const override { return "Joins."; }
    Ports ports(const ValueTexts&) const override;
    std::vector<std::unique_ptr<RowOperation>> prepare(const Arguments&, const std::vector<Schema>& schemas,
                                                       RunContext&) const override;
};

/// Keeps as many rows as its input "count" says.
class HeadKind : public RowWise {
public:
    std::string name() const override { return "Head"; }
    std::string summary() const override { return "Keeps the first rows."; }
    Ports ports(const ValueTexts&) const override;
    std::unique_ptr<RowOperation> prepare(const Arguments& arguments, const Schema& schema, RunContext&) const override;
};

/// Sums up x times its input "scale".
class SumKind : public Accumulator {
public:
    explicit SumKind(MergeOrder order = MergeOrder::Tree) : order(order) {}
    std::string name() const override { return "Sum"; }
    std::string summary() const override { return "Sums up."; }
    Ports ports(const ValueTexts&) const override;
    MergeOrder mergeOrder() const override { return order; }
    std::unique_ptr<Accumulation> prepare(const Arguments& arguments, const Schema* schema,
                                          RunContext& context) const override;

    mutable std::atomic<int> finished = 0;
    std::function<void(const Chunk& chunk)> beforeFill;
    std::function<void(RunContext& context)> beforeFinish;

private:
    MergeOrder order;
};

/// Does what the test says.
class FreeFunction : public Function {
public:
    using Body = std::function<void(const Arguments&, Results&, RunContext&)>;

    FreeFunction(std::string kindName, Ports kindPorts, Body body);
    std::string name() const override { return kindName; }
    std::string summary() const override { return "Does what the test says."; }
    int version() const override { return kindVersion; }
    Ports ports(const ValueTexts&) const override { return kindPorts; }
    void evaluate(const Arguments& arguments, Results& results, RunContext& context) const override;

    mutable std::atomic<int> evaluated = 0;
    int kindVersion = 1;

private:
    std::string kindName;
    Ports kindPorts;
    Body body;
};

/// Takes anything in "object" and says in its text output "seen" what came.
class SeeKind : public Accumulator {
public:
    std::string name() const override { return "See"; }
    std::string summary() const override { return "Says what came."; }
    Ports ports(const ValueTexts&) const override;
    std::unique_ptr<Accumulation> prepare(const Arguments& arguments, const Schema* schema,
                                          RunContext& context) const override;
};

}  // namespace velmorak::test
