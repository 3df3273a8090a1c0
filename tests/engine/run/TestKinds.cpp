#include "TestKinds.h"

#include <velmorak/StateBytes.h>

#include <algorithm>
#include <cmath>
#include <thread>
#include <utility>

namespace velmorak::test {
namespace {

Schema columnX() {
    return Schema({{"x", ColumnType::Real, false, ""}});
}

class RowReader : public TableReader {
public:
    RowReader(const RowSource& kind, std::uint64_t rows, RunContext& context)
        : kind(kind), rows(rows), context(context) {}

    const Schema& schema() const override { return columns; }

    bool next(Chunk& chunk) override {
        if (kind.beforeChunk) {
            kind.beforeChunk(row / chunkRows, context);
        }
        chunk.rows = static_cast<std::size_t>(std::min<std::uint64_t>(chunkRows, rows - row));
        if (!kind.isLate) {
            make(chunk, row);
        }
        row += chunk.rows;
        return chunk.rows > 0;
    }

    void complete(Chunk& chunk) const override {
        if (!kind.isLate) {
            return;
        }
        ++kind.completed;
        if (kind.beforeComplete) {
            kind.beforeComplete(chunk.number);
        }
        make(chunk, chunk.firstRow);
    }

    std::optional<double> fraction() const override {
        return static_cast<double>(row) / static_cast<double>(std::max<std::uint64_t>(rows, 1));
    }

private:
    static void make(Chunk& chunk, std::uint64_t firstRow) {
        Column::Reals values(chunk.rows);
        for (std::size_t i = 0; i < chunk.rows; ++i) {
            values[i] = valueOfRow(firstRow + i);
        }
        chunk.columns = {std::make_shared<Column>(Column{std::move(values), {}})};
    }

    const RowSource& kind;
    Schema columns = columnX();
    std::uint64_t rows;
    std::uint64_t row = 0;
    RunContext& context;
};

class Cutting : public RowOperation {
public:
    Cutting(const CutKind& kind, Schema schema, double cut) : kind(kind), columns(std::move(schema)), cut(cut) {}
    const Schema& schema() const override { return columns; }
    Chunk apply(const Chunk& chunk) const override {
        ++kind.applied;
        if (kind.beforeApply) {
            kind.beforeApply(chunk);
        }
        Column::Reals kept;
        std::copy_if(chunk.columns[0]->reals().begin(), chunk.columns[0]->reals().end(), std::back_inserter(kept),
                     [this](double x) { return x > cut; });
        const std::size_t rows = kept.size();
        Chunk out;
        out.rows = rows;
        out.columns = {std::make_shared<Column>(Column{std::move(kept), {}})};
        return out;
    }

private:
    const CutKind& kind;
    Schema columns;
    double cut;
};

class JoinOperation : public RowOperation {
public:
    explicit JoinOperation(Schema schema) : columns(std::move(schema)) {}
    const Schema& schema() const override { return columns; }
    Chunk apply(const Chunk& chunk) const override { return chunk; }

private:
    Schema columns;
};

class HeadOperation : public RowOperation {
public:
    HeadOperation(Schema schema, std::uint64_t count) : columns(std::move(schema)), count(count) {}
    const Schema& schema() const override { return columns; }
    bool countsRows() const override { return true; }
    std::optional<std::uint64_t> rowLimit() const override { return count; }
    Chunk apply(const Chunk& chunk) const override {
        std::vector<std::uint8_t> keep(chunk.rows);
        Chunk out = chunk;
        out.rows = 0;
        for (std::size_t row = 0; row < chunk.rows; ++row) {
            keep[row] = chunk.rowsBefore + row < count ? 1 : 0;
            out.rows += keep[row];
        }
        for (ColumnPtr& column : out.columns) {
            column = keepRows(*column, keep);
        }
        return out;
    }

private:
    Schema columns;
    std::uint64_t count;
};

struct SumState : AccumulatorState {
    SumState(const SumKind& kind, double scale) : kind(kind), scale(scale) {}
    void fill(const Chunk& chunk) override {
        if (kind.beforeFill) {
            kind.beforeFill(chunk);
        }
        for (const double x : chunk.columns[0]->reals()) {
            sum += x * scale;
        }
        order += std::to_string(chunk.number) + " ";
    }
    void merge(AccumulatorState& other) override {
        auto& next = dynamic_cast<SumState&>(other);
        sum += next.sum;
        order = order.empty() ? next.order : "(" + order + "+ " + next.order + ") ";
    }
    void save(StateWriter& writer) const override {
        writer.version(1);
        writer.number(sum);
        writer.text(order);
    }
    void load(StateReader& reader) override {
        reader.version(1);
        sum = reader.number<double>();
        order = reader.text();
    }

    const SumKind& kind;
    double scale;
    double sum = 0.0;
    std::string order;
};

class Summing : public Accumulation {
public:
    Summing(const SumKind& kind, double scale, RunContext& context) : kind(kind), scale(scale), context(context) {}
    std::unique_ptr<AccumulatorState> newState() const override { return std::make_unique<SumState>(kind, scale); }
    void finish(AccumulatorState& state, Results& results) override {
        ++kind.finished;
        if (kind.beforeFinish) {
            kind.beforeFinish(context);
        }
        results.set("sum", dynamic_cast<SumState&>(state).sum);
        results.set("order", dynamic_cast<SumState&>(state).order);
    }

private:
    const SumKind& kind;
    double scale;
    RunContext& context;
};

struct RowCount : AccumulatorState {
    void fill(const Chunk& chunk) override { rows += chunk.rows; }
    void merge(AccumulatorState& other) override { rows += dynamic_cast<RowCount&>(other).rows; }
    std::size_t rows = 0;
};

class Seeing : public Accumulation {
public:
    explicit Seeing(std::string what) : what(std::move(what)) {}
    std::unique_ptr<AccumulatorState> newState() const override { return std::make_unique<RowCount>(); }
    void finish(AccumulatorState& state, Results& results) override {
        results.set("seen", what + ", " + std::to_string(dynamic_cast<RowCount&>(state).rows) + " rows");
    }

private:
    std::string what;
};

}  // namespace

InputSpec numberInput(const std::string& name, const std::string& value) {
    InputSpec spec;
    spec.name = name;
    spec.value = value;
    return spec;
}

InputSpec textInput(const std::string& name, const std::string& value) {
    InputSpec spec = numberInput(name, value);
    spec.type = ValueType::Text;
    return spec;
}

InputSpec wireInput(const std::string& name, ValueType type, bool isOptional) {
    InputSpec spec = numberInput(name, "");
    spec.type = type;
    spec.isOptional = isOptional;
    return spec;
}

OutputSpec output(const std::string& name, ValueType type) {
    return {name, "", type};
}

void waitForStop(const RunContext& context) {
    constexpr long maxPolls = 100'000'000;
    for (long poll = 0; !context.isStopping(); ++poll) {
        if (poll == maxPolls) {
            throw Failure("nobody has stopped the run");
        }
        std::this_thread::yield();
    }
}

double valueOfRow(std::uint64_t row) {
    const std::uint64_t mixed = (row + 1) * 0x9e3779b97f4a7c15U;
    const double mantissa = static_cast<double>(mixed >> 11) * 0x1p-53;
    return std::ldexp(mantissa - 0.25, static_cast<int>(mixed % 40));
}

Ports JoinKind::ports(const ValueTexts&) const {
    return {{wireInput("first", ValueType::Table), wireInput("second", ValueType::Table)},
            {output("table", ValueType::Table)}};
}

std::vector<std::unique_ptr<RowOperation>> JoinKind::prepare(const Arguments&, const std::vector<Schema>& schemas,
                                                             RunContext&) const {
    std::vector<std::unique_ptr<RowOperation>> operations;
    for (const Schema& schema : schemas) {
        operations.push_back(std::make_unique<JoinOperation>(schema));
    }
    return operations;
}

Ports HeadKind::ports(const ValueTexts&) const {
    return {{wireInput("table", ValueType::Table), numberInput("count", "10")}, {output("table", ValueType::Table)}};
}

std::unique_ptr<RowOperation> HeadKind::prepare(const Arguments& arguments, const Schema& schema, RunContext&) const {
    return std::make_unique<HeadOperation>(schema, static_cast<std::uint64_t>(arguments.integer("count")));
}

Ports RowSource::ports(const ValueTexts&) const {
    return {{numberInput("rows", "100"), textInput("file")}, {output("table", ValueType::Table)}};
}

std::unique_ptr<TableReader> RowSource::open(const Arguments& arguments, RunContext& context) const {
    ++opened;
    return std::make_unique<RowReader>(*this, static_cast<std::uint64_t>(arguments.integer("rows")), context);
}

std::vector<std::filesystem::path> RowSource::files(const Arguments& arguments, RunContext& context) const {
    const std::string& file = arguments.text("file");
    return file.empty() ? std::vector<std::filesystem::path>{} : std::vector{context.inputFile(file)};
}

Ports CutKind::ports(const ValueTexts&) const {
    return {{wireInput("table", ValueType::Table), numberInput("cut")}, {output("table", ValueType::Table)}};
}

std::unique_ptr<RowOperation> CutKind::prepare(const Arguments& arguments, const Schema& schema, RunContext&) const {
    return std::make_unique<Cutting>(*this, schema, arguments.number("cut"));
}

Ports SumKind::ports(const ValueTexts&) const {
    return {{wireInput("table", ValueType::Table), numberInput("scale", "1")},
            {output("sum", ValueType::Number), output("order", ValueType::Text)}};
}

std::unique_ptr<Accumulation> SumKind::prepare(const Arguments& arguments, const Schema*, RunContext& context) const {
    return std::make_unique<Summing>(*this, arguments.number("scale"), context);
}

FreeFunction::FreeFunction(std::string kindName, Ports kindPorts, Body body)
    : kindName(std::move(kindName)), kindPorts(std::move(kindPorts)), body(std::move(body)) {}

void FreeFunction::evaluate(const Arguments& arguments, Results& results, RunContext& context) const {
    ++evaluated;
    body(arguments, results, context);
}

Ports SeeKind::ports(const ValueTexts&) const {
    return {{wireInput("object", ValueType::Any), wireInput("other", ValueType::Any, true)},
            {output("seen", ValueType::Text)}};
}

std::unique_ptr<Accumulation> SeeKind::prepare(const Arguments& arguments, const Schema* schema, RunContext&) const {
    if (schema) {
        return std::make_unique<Seeing>("a table of " + arguments.sourceName("object"));
    }
    const auto* number = std::get_if<double>(&arguments.value("object"));
    return std::make_unique<Seeing>(number ? "number " + textOf(*number) : "nothing");
}

}  // namespace velmorak::test
