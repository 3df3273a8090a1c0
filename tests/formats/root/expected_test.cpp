#include <root/RootFile.h>

#include "QuietContext.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <bit>
#include <charconv>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <set>

namespace velmorak {
namespace {

namespace fs = std::filesystem;
using Json = nlohmann::json;

/// Summary of a column, as the independent reader gives it.
struct Summary {
    void add(double value) {
        const auto bits = std::bit_cast<std::uint64_t>(value);
        for (unsigned byte = 0; byte < 8; ++byte) {
            hash = (hash ^ (bits >> 8U * byte & 0xFFU)) * 0x100000001b3U;
        }
        ++values;
        if (std::isfinite(value)) {
            const double next = sum + value;
            compensation += std::fabs(sum) >= std::fabs(value) ? (sum - next) + value : (value - next) + sum;
            sum = next;
        }
    }

    std::uint64_t hash = 0xcbf29ce484222325U;
    std::uint64_t values = 0;
    std::uint64_t texts = 0;
    double sum = 0.0;
    double compensation = 0.0;
};

void addColumn(const Column& column, Summary& summary) {
    switch (column.type()) {
        case ColumnType::Real:
            std::for_each(column.reals().begin(), column.reals().end(), [&](double each) { summary.add(each); });
            break;
        case ColumnType::Integer:
            for (const std::int64_t each : column.integers()) {
                summary.add(static_cast<double>(each));
            }
            break;
        case ColumnType::Boolean:
            for (const std::uint8_t each : column.booleans()) {
                summary.add(each);
            }
            break;
        case ColumnType::Text:
            summary.texts += column.texts().size();
    }
}

/// The columns of a table by name, read chunk by chunk.
std::map<std::string, Summary> summaries(const fs::path& file, const std::string& object) {
    QuietContext context;
    const std::unique_ptr<TableReader> reader = openRootTable(file, object, {}, context);
    std::map<std::string, Summary> found;
    for (const ColumnInfo& info : reader->schema().columns()) {
        found[info.name];
    }
    Chunk chunk;
    std::uint64_t row = 0;
    while (reader->next(chunk)) {
        chunk.firstRow = row;
        row += chunk.rows;
        reader->complete(chunk);
        for (std::size_t i = 0; i < chunk.columns.size(); ++i) {
            addColumn(*chunk.columns[i], found[reader->schema()[i].name]);
        }
        chunk = {};
    }
    return found;
}

/// Columns that the independent reader gets wrong or represents differently.
bool isLeftOut(const std::string& file, const Json& column) {
    static const std::set<std::string> wrong{
        "test_extension_columns_rntuple_v1-0-0-0.root float_field",  // Integers taken for reals.
        "test_float_types_rntuple_v1-0-0-0.root quant32",            // All zero.
        "uproot-issue431b.root trks.fitinf"};                        // A sum that is not a number.
    const std::string name = column.value("name", "");
    const bool isArrayOfBytes = column.value("texts", 0) > 0 && column.contains("leaves") &&
                                column["leaves"].dump().find("TLeafB:") != std::string::npos;
    const bool isCollectionOfOldProgram = file.starts_with("Run2012BC");  // Only its first thousand values.
    return wrong.contains(file + " " + name) || isArrayOfBytes || isCollectionOfOldProgram;
}

struct Tally {
    int expected = 0;
    int read = 0;
    std::vector<std::string> missing;
};

void compareColumn(const std::string& file, const Json& column, const std::map<std::string, Summary>& found,
                   Tally& tally) {
    const std::string name = column.value("name", "");
    const auto entry = found.contains(name) ? found.find(name) : found.find(name.substr(0, name.find('[')));
    ++tally.expected;
    if (entry == found.end()) {
        tally.missing.push_back(file + " " + name);
        return;
    }
    ++tally.read;
    const Summary& summary = entry->second;
    EXPECT_EQ(summary.values, column.value("values", std::uint64_t{0})) << file << " " << name;
    EXPECT_EQ(summary.texts, column.value("texts", std::uint64_t{0})) << file << " " << name;
    if (summary.values > 0) {
        char hash[17];
        *std::to_chars(hash, hash + 16, summary.hash, 16).ptr = 0;
        EXPECT_EQ(std::string(hash), column.value("fnv", "")) << file << " " << name;
        EXPECT_EQ(summary.sum + summary.compensation, column.value("sum", static_cast<double>(NAN)))
            << file << " " << name;
    }
}

void compareFile(const fs::path& folder, const Json& expected, Tally& tally) {
    const std::string file = expected.value("file", "");
    for (const Json& object : expected["objects"]) {
        if (!object.contains("columns")) {
            continue;
        }
        const std::map<std::string, Summary> found = summaries(folder / file, object.value("path", ""));
        std::map<std::string, int> named;
        for (const Json& column : object["columns"]) {
            ++named[column.value("name", "")];
        }
        for (const Json& column : object["columns"]) {
            const bool hasValues = column.value("values", 0) > 0 || column.value("texts", 0) > 0;
            const bool isAlone = named[column.value("name", "")] == 1;
            if (hasValues && isAlone && !column.contains("unread") && !isLeftOut(file, column)) {
                compareColumn(file, column, found, tally);
            }
        }
    }
}

Tally compareFolder(const fs::path& folder) {
    Tally tally;
    std::ifstream lines(folder / "expected.jsonl");
    for (std::string line; std::getline(lines, line);) {
        const Json expected = Json::parse(line);
        if (!expected.contains("error")) {
            compareFile(folder, expected, tally);
        }
    }
    return tally;
}

TEST(RootFiles, haveTheValuesThatAnIndependentReaderFinds) {
    const Tally tally = compareFolder(ROOT_FILES);
    EXPECT_GT(tally.expected, 400);
    EXPECT_GE(tally.read, 0.97 * tally.expected) << testing::PrintToString(tally.missing);
}

TEST(RootFiles, ofOtherProgramsHaveTheValuesThatAnIndependentReaderFinds) {
    if (!fs::exists(ROOT_FILES_OF_OTHERS)) {
        GTEST_SKIP() << "there are no such files here";
    }
    const Tally tally = compareFolder(ROOT_FILES_OF_OTHERS);
    EXPECT_GT(tally.expected, 2000);
    EXPECT_GE(tally.read, 0.97 * tally.expected) << testing::PrintToString(tally.missing);
}

}  // namespace
}  // namespace velmorak
