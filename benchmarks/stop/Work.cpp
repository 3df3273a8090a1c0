#include "Work.h"

#include <velmorak/Aida.h>

#include <cstdlib>
#include <fstream>
#include <iterator>
#include <stdexcept>

namespace velmorak::bench {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t rows = 100'000;
constexpr std::size_t columns = 6;

/// As a packed file, as they are passed on.
void writeTuple(const fs::path& file) {
    std::vector<ColumnInfo> names;
    for (std::size_t column = 0; column < columns; ++column) {
        names.push_back({std::string(1, static_cast<char>('a' + column)), ColumnType::Real, false, ""});
    }
    AidaFileWriter writer(file);
    const Schema schema(names);
    writer.beginTable("events", "", "/", schema);
    Chunk chunk{0, 0, rows, {}};
    for (std::size_t column = 0; column < columns; ++column) {
        std::vector<double> values(rows);
        for (std::size_t row = 0; row < rows; ++row) {
            values[row] = static_cast<double>((row + 1) * (column + 3) * 7919 % 1'000'003) / 1000.0;
        }
        chunk.columns.push_back(std::make_shared<Column>(Column{std::move(values), {}}));
    }
    writer.writeRows(chunk);
    writer.endTable();
    writer.close();
    if (std::system(("gzip -1 '" + file.string() + "'").c_str()) != 0) {
        throw std::runtime_error("gzip failed");
    }
}

std::string histogramOf(const std::string& name, const std::string& expression) {
    return R"zedra({"name": ")zedra" + name + R"zedra(", "kind": "Histogram1D", "inputs": [
        {"name": "table", "from": ["Read", "table"]}, {"name": "expression", "value": ")zedra" +
           expression + R"zedra("},
        {"name": "high", "value": "1000"}]})zedra";
}

const std::string readAndFill =
    R"zedra({"name": "Read", "kind": "AidaTable", "inputs": [{"name": "file", "value": "events.aida.gz"}]},)zedra" +
    histogramOf("First", "sqrt(a*a + b*b)") + "," + histogramOf("Second", "c") + R"zedra(,
    {"name": "Write", "kind": "AidaWriter", "inputs": [{"name": "object", "from": ["First", "histogram"]}]})zedra";

const std::string draw =
    R"zedra({"name": "Read", "kind": "RandomTable", "inputs": [{"name": "rows", "value": "1000"},
        {"name": "columns", "value": "c: uniform(0, 1000)"}]},)zedra" +
    histogramOf("First", "c") + R"zedra(,
    {"name": "Draw", "kind": "Plot", "inputs": [{"name": "object", "from": ["First", "histogram"]}]})zedra";

const std::string writeOut =
    R"zedra({"name": "Read", "kind": "RandomTable", "inputs": [{"name": "rows", "value": "200000"},
        {"name": "columns", "value": "a: uniform(0, 1); b: gauss(0, 1); c: exponential(2)"}]},
    {"name": "Write", "kind": "AidaWriter", "inputs": [{"name": "object", "from": ["Read", "table"]}]})zedra";

const std::string fillManyBins =
    R"zedra({"name": "Read", "kind": "RandomTable", "inputs": [{"name": "rows", "value": "500000"},
        {"name": "columns", "value": "c: uniform(0, 1000)"}]},
    {"name": "First", "kind": "Histogram1D", "inputs": [{"name": "table", "from": ["Read", "table"]},
        {"name": "expression", "value": "c"}, {"name": "bins", "value": "100000"},
        {"name": "high", "value": "1000"}]},
    {"name": "Write", "kind": "AidaWriter", "inputs": [{"name": "object", "from": ["First", "histogram"]}]})zedra";

const std::string fitCurves =
    R"zedra({"name": "Read", "kind": "RandomTable", "inputs": [{"name": "rows", "value": "200000"},
        {"name": "columns", "value": "c: gauss(50, 9)"}]},
    {"name": "First", "kind": "Histogram1D", "inputs": [{"name": "table", "from": ["Read", "table"]},
        {"name": "expression", "value": "c"}, {"name": "bins", "value": "100000"},
        {"name": "high", "value": "100"}]},
    {"name": "Fit", "kind": "Fit", "inputs": [{"name": "data", "from": ["First", "histogram"]},
        {"name": "model", "value": "gauss"}, {"name": "method", "value": "likelihood"}]},
    {"name": "Write", "kind": "AidaWriter", "inputs": [{"name": "object", "from": ["Fit", "function"]}]})zedra";

}  // namespace

const std::vector<Phase>& phases() {
    static const std::vector<Phase> all{{"reading, inflating, filling", readAndFill},
                                        {"fitting 100,000 bins", fitCurves},
                                        {"plotting", draw},
                                        {"writing a table", writeOut},
                                        {"filling and writing 100,000 bins", fillManyBins}};
    return all;
}

Work::Work() {
    std::string name = (fs::temp_directory_path() / "velmorak-stop-XXXXXX").string();
    folder = mkdtemp(name.data());
    setenv("XDG_CACHE_HOME", (folder / "cache").c_str(), 1);
    writeTuple(folder / "events.aida");
}

Work::~Work() {
    std::error_code ignored;
    fs::remove_all(folder, ignored);
}

fs::path Work::write(const Phase& phase) const {
    const fs::path file = folder / "stop.zedra";
    std::ofstream(file) << "{\"zedra\": 1, \"plugins\": [" << phase.plugins << "]}\n";
    return file;
}

std::map<std::string, std::string> Work::results() const {
    std::map<std::string, std::string> files;
    const fs::path made = folder / "stop.results";
    if (!fs::exists(made)) {
        return files;
    }
    for (const fs::directory_entry& entry : fs::directory_iterator(made)) {
        if (entry.path().filename() == "run.json") {
            continue;
        }
        std::ifstream stream(entry.path(), std::ios::binary);
        files[entry.path().filename().string()] = {std::istreambuf_iterator<char>(stream), {}};
    }
    return files;
}

void Work::removeResults() const {
    fs::remove_all(folder / "stop.results");
}

}  // namespace velmorak::bench
