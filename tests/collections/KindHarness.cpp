#include "KindHarness.h"

#include <dlfcn.h>
#include <velmorak/EndedOperation.h>
#include <velmorak/FileFormat.h>
#include <velmorak/OrderedRows.h>
#include <velmorak/StoredTable.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <set>
#include <sstream>
#include <stdexcept>

namespace velmorak::test {

namespace {

namespace fs = std::filesystem;

struct Collector : Registry {
    void group(const std::string& name) override { groups.push_back({.name = name, .kinds = {}}); }
    void add(std::unique_ptr<Kind> kind) override { groups.back().kinds.push_back(std::move(kind)); }
    void addFormat(std::unique_ptr<FileFormat> format) override { known->add(std::move(format)); }
    const FileFormats& formats() const override { return *known; }
    std::vector<ShippedGroup> groups;
    std::unique_ptr<FileFormats> known = std::make_unique<FileFormats>();
};

/// The folders that the build names, separated by colons.
std::vector<fs::path> collectionFolders() {
    std::vector<fs::path> folders;
    std::istringstream names(VELMORAK_TEST_COLLECTIONS);
    for (std::string name; std::getline(names, name, ':');) {
        folders.emplace_back(name);
    }
    return folders;
}

Collector loadAll() {
    Collector collector;
    std::set<std::string> groups;
    for (const fs::path& collections : collectionFolders()) {
        for (const auto& folder : fs::directory_iterator(collections)) {
            groups.insert(folder.path().filename());
        }
    }
    for (const std::string& group : groups) {
        void* handle = dlopen((collectionFolder(group) / (group + ".so")).c_str(), RTLD_LAZY | RTLD_LOCAL);
        if (!handle) {
            throw std::runtime_error(dlerror());
        }
        reinterpret_cast<void (*)(Registry&)>(dlsym(handle, "QzAnalysisFactory"))(collector);
    }
    return collector;
}

class BenchArguments : public Arguments {
public:
    BenchArguments(const Ports& ports, const ValueTexts& texts, const std::map<std::string, Value>& wired)
        : wired(wired) {
        for (const InputSpec& input : ports.inputs) {
            values[input.name] = texts.contains(input.name) ? texts.at(input.name) : input.value;
        }
    }

    double number(const std::string& input) const override {
        if (wired.contains(input)) {
            return numberIn(wired.at(input)).value().value();
        }
        double number = 0.0;
        if (!readNumber(values.at(input), number)) {
            throw Failure(input, "no number");
        }
        return number;
    }
    NumberWithError numberWithError(const std::string& input) const override {
        return wired.contains(input) ? numberIn(wired.at(input)).value() : NumberWithError(number(input));
    }
    std::int64_t integer(const std::string& input) const override { return static_cast<std::int64_t>(number(input)); }
    const std::string& text(const std::string& input) const override {
        return wired.contains(input) ? std::get<std::string>(wired.at(input)) : values.at(input);
    }
    const Value& value(const std::string& input) const override {
        values.at(input);
        return wired.contains(input) ? wired.at(input) : nothing;
    }
    bool isWired(const std::string& input) const override { return wired.contains(input); }
    bool has(const std::string& input) const override { return values.contains(input); }
    const std::string& sourceName(const std::string& input) const override { return isWired(input) ? source : none; }
    const std::string& sourceOutput(const std::string& input) const override { return isWired(input) ? output : none; }

private:
    std::map<std::string, std::string> values;
    const std::map<std::string, Value>& wired;
    Value nothing;
    std::string source = "source";
    std::string output = "output";
    std::string none;
};

struct BenchResults : Results {
    explicit BenchResults(std::map<std::string, Value>& outputs) : outputs(outputs) {}
    void set(const std::string& output, Value value) override { outputs[output] = std::move(value); }
    std::map<std::string, Value>& outputs;
};

class BenchFile : public ResultFile {
public:
    explicit BenchFile(fs::path finalName) : target(std::move(finalName)), temporary(target.string() + ".part") {}
    ~BenchFile() override { fs::remove(temporary); }
    const fs::path& path() const override { return temporary; }
    void keep() override { fs::rename(temporary, target); }

private:
    fs::path target;
    fs::path temporary;
};

}  // namespace

const std::vector<ShippedGroup>& shippedGroups() {
    static const Collector collector = loadAll();
    return collector.groups;
}

const Kind& shippedKind(const std::string& name) {
    for (const ShippedGroup& group : shippedGroups()) {
        for (const auto& kind : group.kinds) {
            if (kind->name() == name) {
                return *kind;
            }
        }
    }
    throw std::runtime_error("no kind " + name);
}

fs::path collectionFolder(const std::string& group) {
    for (const fs::path& collections : collectionFolders()) {
        if (fs::is_directory(collections / group)) {
            return collections / group;
        }
    }
    throw std::runtime_error("no collection " + group);
}

std::string textIn(const fs::path& file) {
    std::ifstream in(file, std::ios::binary);
    if (!in) {
        throw std::runtime_error("cannot read " + file.string());
    }
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
}

std::vector<double> SmallTable::column(const std::string& name) const {
    std::vector<double> all;
    for (const Chunk& chunk : chunks) {
        const ColumnPtr reals = asReals(chunk.columns.at(schema.find(name).value()));
        all.insert(all.end(), reals->reals().begin(), reals->reals().end());
    }
    return all;
}

SmallTable tableOf(const std::vector<std::pair<std::string, std::vector<double>>>& columns, std::size_t chunkLength) {
    SmallTable table;
    for (const auto& column : columns) {
        table.schema.add({.name = column.first, .type = ColumnType::Real, .isList = false, .unit = ""});
    }
    const std::size_t rows = columns.front().second.size();
    for (std::size_t first = 0; first < rows; first += chunkLength) {
        Chunk chunk{.number = table.chunks.size(),
                    .firstRow = first,
                    .rows = std::min(chunkLength, rows - first),
                    .columns = {}};
        for (const auto& column : columns) {
            const auto begin = column.second.begin() + static_cast<std::ptrdiff_t>(first);
            chunk.columns.push_back(std::make_shared<const Column>(Column{
                .values = Column::Reals(begin, begin + static_cast<std::ptrdiff_t>(chunk.rows)), .offsets = {}}));
        }
        table.chunks.push_back(std::move(chunk));
    }
    return table;
}

KindHarness::KindHarness(const std::string& kindName, std::string pluginName)
    : shipped(shippedKind(kindName)), plugin(std::move(pluginName)) {}

KindHarness::KindHarness(const Kind& kind) : shipped(kind), plugin("bench") {}

KindHarness::~KindHarness() = default;

KindHarness& KindHarness::set(const std::string& input, const std::string& text) {
    texts[input] = text;
    return *this;
}

KindHarness& KindHarness::wire(const std::string& input, Value value) {
    wires[input] = std::move(value);
    texts.try_emplace(input);  // As a pipeline tells the kind that the input has a wire.
    return *this;
}

KindHarness& KindHarness::wire(const std::string& input, SmallTable table) {
    wires[input] = std::monostate();
    tableInput = input;
    givenByInput[input] = table;
    given = std::move(table);
    return *this;
}

void KindHarness::run() {
    const BenchArguments arguments(ports(), texts, wires);
    BenchResults sink(outputs);
    if (const auto* function = dynamic_cast<const Function*>(&shipped)) {
        function->evaluate(arguments, sink, *this);
    } else if (const auto* rowWise = dynamic_cast<const RowWise*>(&shipped)) {
        const auto operation = rowWise->prepare(arguments, given.schema, *this);
        made = {.schema = operation->schema(), .chunks = {}};
        std::vector<bool> needed(given.schema.size());
        operation->markColumns(std::vector<bool>(made.schema.size(), true), needed);
        apply(*operation);
        if (auto* const ended = dynamic_cast<EndedOperation*>(operation.get())) {
            ended->end();
        }
    } else if (const auto* concatenation = dynamic_cast<const Concatenation*>(&shipped)) {
        concatenate(*concatenation, arguments);
    } else if (dynamic_cast<const Accumulator*>(&shipped)) {
        accumulate();
    } else if (const auto* source = dynamic_cast<const Source*>(&shipped)) {
        const auto reader = source->open(arguments, *this);
        made = {.schema = reader->schema(), .chunks = {}};
        read(*reader);
    }
}

void KindHarness::read(TableReader& reader) {
    std::uint64_t rows = 0;
    for (Chunk chunk; reader.next(chunk); chunk = {}) {
        chunk.number = made.chunks.size();
        chunk.firstRow = rows;
        rows += chunk.rows;
        reader.complete(chunk);
        made.chunks.push_back(std::move(chunk));
    }
}

void KindHarness::apply(RowOperation& operation) {
    auto* const ordered = dynamic_cast<OrderedRows*>(&operation);
    std::uint64_t rows = 0;
    for (Chunk chunk : given.chunks) {
        chunk.rowsBefore = rows;
        rows += chunk.rows;
        const std::optional<std::uint64_t> limit = operation.countsRows() ? operation.rowLimit() : std::nullopt;
        if (!limit || chunk.rowsBefore < *limit) {
            chunk.owner = ordered ? ordered->look(chunk) : nullptr;
            made.chunks.push_back(operation.apply(chunk));
        }
    }
}

void KindHarness::concatenate(const Concatenation& concatenation, const Arguments& arguments) {
    std::vector<SmallTable> tables;
    std::vector<Schema> schemas;
    for (const InputSpec& input : ports().inputs) {
        if (givenByInput.contains(input.name)) {
            tables.push_back(givenByInput[input.name]);
            schemas.push_back(tables.back().schema);
        }
    }
    const auto operations = concatenation.prepare(arguments, schemas, *this);
    made = {.schema = operations.front()->schema(), .chunks = {}};
    for (std::size_t i = 0; i < tables.size(); ++i) {
        given = tables[i];
        apply(*operations[i]);
    }
}

std::unique_ptr<Accumulation> KindHarness::accumulation() {
    const BenchArguments arguments(ports(), texts, wires);
    const auto& accumulator = dynamic_cast<const Accumulator&>(shipped);
    return accumulator.prepare(arguments, tableInput.empty() ? nullptr : &given.schema, *this);
}

void KindHarness::finish(Accumulation& accumulation, AccumulatorState& state) {
    BenchResults sink(outputs);
    accumulation.finish(state, sink);
    for (const auto& [name, value] : outputs) {
        const auto* const object = std::get_if<DataObjectPtr>(&value);
        if (const auto table = std::dynamic_pointer_cast<const StoredTable>(object ? *object : nullptr)) {
            const auto reader = table->open();
            made = {.schema = reader->schema(), .chunks = {}};
            read(*reader);
        }
    }
}

void KindHarness::accumulate() {
    const auto prepared = accumulation();
    auto whole = prepared->newState();
    for (const Chunk& chunk : given.chunks) {
        auto state = prepared->newState();
        state->fill(chunk);
        whole->merge(*state);
    }
    finish(*prepared, *whole);
}

std::string KindHarness::failure() {
    try {
        run();
        return {};
    } catch (const Failure& failure) {
        return failure.input() + ": " + failure.what();
    }
}

double KindHarness::number(const std::string& output) const {
    return numberWithError(output).value();
}

NumberWithError KindHarness::numberWithError(const std::string& output) const {
    return numberIn(outputs.at(output)).value();
}

HistogramPtr KindHarness::histogram(const std::string& output) const {
    return std::dynamic_pointer_cast<const Histogram1D>(std::get<DataObjectPtr>(outputs.at(output)));
}

void KindHarness::writeResult(const std::string& fileName, const std::function<void(const fs::path&)>& writer) {
    const std::unique_ptr<ResultFile> file = beginResult(fileName);
    writer(file->path());
    file->keep();
}

std::unique_ptr<ResultFile> KindHarness::beginResult(const std::string& fileName) {
    return std::make_unique<BenchFile>(folder() / fileName);
}

void KindHarness::warn(const std::string& sentence) {
    allWarnings.push_back(sentence);
    if (!isWarned) {
        throw std::runtime_error("unexpected warning: " + sentence);
    }
}

}  // namespace velmorak::test
