#include <parquet/ParquetFile.h>

#include "ReadTable.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <chrono>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <set>
#include <sstream>

namespace velmorak {
namespace {

namespace fs = std::filesystem;
using Json = nlohmann::ordered_json;

ReadTable readFile(const fs::path& file) {
    QuietContext context;
    return readTable(*openParquet(file, {}, nullptr, context));
}

/// Seconds since 1970 of a date such as 2024-01-01T20:34:56.123Z; NaN for other texts.
double secondsOf(const std::string& text) {
    long year = 0;
    int month = 0;
    int day = 0;
    int hour = 0;
    int minute = 0;
    double second = 0.0;
    if (std::sscanf(text.c_str(), "%ld-%d-%dT%d:%d:%lf", &year, &month, &day, &hour, &minute, &second) != 6) {
        return NAN;
    }
    // The calendar repeats itself after 400 years.
    constexpr double daysOfCycle = 146097.0;
    const long cycles = year / 400;
    const std::chrono::sys_days date = std::chrono::year(static_cast<int>(year - 400 * cycles)) / month / day;
    const double days =
        static_cast<double>(date.time_since_epoch().count()) + static_cast<double>(cycles) * daysOfCycle;
    return days * 86400.0 + hour * 3600.0 + minute * 60.0 + second;
}

/// The leaves at a path in the value of a row, such as "my_map.key", without missing ones.
void collect(const Json& value, const std::vector<std::string>& path, std::size_t depth, std::vector<Json>& leaves) {
    if (value.is_array()) {
        for (const Json& each : value) {
            collect(each, path, depth, leaves);
        }
    } else if (value.is_object() && depth < path.size() && value.contains(path[depth])) {
        collect(value[path[depth]], path, depth + 1, leaves);
    } else if (value.is_object() && value.size() == 1 && value.contains("key_value")) {
        collect(value["key_value"], path, depth, leaves);
    } else if (value.is_object() && depth < path.size()) {
        for (const auto& [key, each] : value.items()) {
            if (path[depth] == "key") {
                leaves.emplace_back(key);
            } else if (path[depth] == "value") {
                collect(each, path, depth + 1, leaves);
            }
        }
    } else if (!value.is_null()) {
        leaves.push_back(value);
    }
}

std::vector<Json> expectedLeaves(const Json& row, const std::string& name) {
    if (row.contains(name) && !row[name].is_structured()) {
        return row[name].is_null() ? std::vector<Json>() : std::vector<Json>{row[name]};
    }
    std::vector<std::string> path;
    std::istringstream parts(name);
    for (std::string part; std::getline(parts, part, '.');) {
        path.push_back(part);
    }
    std::vector<Json> leaves;
    collect(row, path, 0, leaves);
    return leaves;
}

/// A value agrees with the text or number that the other reader wrote.
bool agrees(const Column& column, std::size_t position, const Json& expected) {
    if (column.type() == ColumnType::Text) {
        const std::string& text = column.texts()[position];
        if (expected.get<std::string>().find("\uFFFD") != std::string::npos) {
            return true;  // Bytes that are no text: the other reader replaces them.
        }
        return expected == text || expected == "bytes:" + text;
    }
    const double value = column.type() == ColumnType::Real      ? column.reals()[position]
                         : column.type() == ColumnType::Integer ? static_cast<double>(column.integers()[position])
                                                                : column.booleans()[position];
    if (expected.is_boolean()) {
        return value == (expected.get<bool>() ? 1.0 : 0.0);
    }
    if (expected.is_number()) {
        return value == expected.get<double>();
    }
    const std::string text = expected.get<std::string>();
    const double seconds = secondsOf(text);
    if (std::isfinite(seconds)) {
        return std::fabs(value - seconds) < 1.001e-3;  // Milliseconds, cut off.
    }
    return text == "NaN" ? std::isnan(value) : value == std::stod(text);
}

bool isMissing(const Column& column, std::size_t position) {
    return column.type() == ColumnType::Real   ? std::isnan(column.reals()[position])
           : column.type() == ColumnType::Text ? column.texts()[position].empty()
                                               : false;
}

/// Whether a column says how lists are nested, which the other reader tells by the values.
bool tellsLists(const std::string& name, const Column& column) {
    return column.isList() && column.type() == ColumnType::Integer &&
           (name.ends_with(".count") || name.ends_with(".row"));
}

/// @return the row's values that are not missing, or of which the other reader says NaN or nothing.
void compareRow(const ReadTable& table, const std::string& name, std::size_t row, const Json& expected,
                const std::string& where) {
    const Column& column = table[name];
    const std::size_t first = column.isList() ? column.offsets[row] : row;
    const std::size_t last = column.isList() ? column.offsets[row + 1] : row + 1;
    const std::vector<Json> leaves = expectedLeaves(expected, name);
    std::size_t next = 0;
    for (std::size_t i = first; i < last; ++i) {
        if (isMissing(column, i) && (next == leaves.size() || (leaves[next] != "NaN" && leaves[next] != ""))) {
            continue;
        }
        ASSERT_LT(next, leaves.size()) << where << " row " << row;
        EXPECT_TRUE(agrees(column, i, leaves[next])) << where << " row " << row << " expects " << leaves[next];
        ++next;
    }
    EXPECT_EQ(next, leaves.size()) << where << " row " << row;
}

void compareSum(const Column& column, const Json& expected, const std::string& where) {
    double sum = 0.0;
    std::size_t present = 0;
    for (std::size_t i = 0; i < column.valueCount(); ++i) {
        if (isMissing(column, i)) {
            continue;
        }
        ++present;
        if (column.type() == ColumnType::Integer) {
            sum += static_cast<double>(column.integers()[i]);
        } else if (column.type() == ColumnType::Real && std::isfinite(column.reals()[i])) {
            sum += column.reals()[i];
        }
    }
    if (column.type() == ColumnType::Real || column.type() == ColumnType::Integer) {
        const double wanted = expected.value("sum", std::nan(""));
        const bool isTime = wanted == 0.0;
        EXPECT_TRUE(isTime || std::fabs(sum - wanted) <= 1e-12 * std::fabs(wanted) + 1e-9) << where << " " << sum;
    }
    if (column.type() != ColumnType::Text && !where.starts_with("float")) {
        EXPECT_EQ(present, expected.value("n", std::size_t{0})) << where;
    }
}

void compareFile(const fs::path& folder, const Json& expected) {
    const std::string file = expected.value("file", "");
    const ReadTable table = readFile(folder / expected.value("folder", "") / file);
    const Json& firstRows = expected["first"];
    for (const auto& [name, column] : table.columns) {
        const std::string where = file + " " + name;
        ASSERT_EQ(column.isList() ? column.offsets.size() - 1 : column.valueCount(), table.rows) << where;
        if (tellsLists(name, column)) {
            continue;
        }
        for (std::size_t row = 0; row < firstRows.size(); ++row) {
            compareRow(table, name, row, firstRows[row], where);
        }
        for (const Json& last : expected["last"]) {
            compareRow(table, name, table.rows - 1, last, where);
        }
        if (expected["sums"].contains(name) && !column.isList()) {
            compareSum(column, expected["sums"][name], where);
        }
    }
    if (expected.value("rows", 0) > 0) {
        EXPECT_EQ(table.rows, expected.value("rows", std::uint64_t{0})) << file;
    }
}

std::vector<Json> expectedFiles() {
    std::vector<Json> all;
    std::ifstream lines(fs::path(PARQUET_FILES_OF_OTHERS) / "expected.jsonl");
    for (std::string line; std::getline(lines, line);) {
        all.push_back(Json::parse(line));
    }
    return all;
}

/// Where this reader and the other one differ: a date that does not fit into 64 bits of nanoseconds, which the other
/// wraps; and texts of a gigabyte.
bool isLeftOut(const std::string& file) {
    return file == "int96_from_spark.parquet" || file == "large_string_map.brotli.parquet";
}

/// The messages about files that are damaged, or too large.
const std::map<std::string, std::string>& refusals() {
    static const std::map<std::string, std::string> sentences{
        {"datapage_v1-corrupt-checksum.parquet",
         "the column a is damaged in row group 0: a page does not have the checksum"},
        {"rle-dict-uncompressed-corrupt-checksum.parquet",
         "the column long_field is damaged in row group 0: a page does not have the checksum"},
        {"large_string_map.brotli.parquet", "bytes when it is unpacked, and 2^30 are the most"},
        {"ARROW-GH-41321.parquet", "the column int64 is damaged in row group 0: the values of a page end early"},
        {"ARROW-GH-47662.parquet", "the values of a page end early"},
        {"ARROW-RS-GH-6229-DICTHEADER.parquet", "the header of a page has a negative size"},
        {"ARROW-RS-GH-6229-LEVELS.parquet", "the values of a page end early"}};
    return sentences;
}

TEST(ParquetFiles, ofOtherProgramsHaveTheValuesThatAnIndependentReaderFinds) {
    if (!fs::exists(PARQUET_FILES_OF_OTHERS)) {
        GTEST_SKIP() << "there are no such files here";
    }
    int compared = 0;
    for (const Json& expected : expectedFiles()) {
        const std::string file = expected.value("file", "");
        if (!refusals().contains(file) && !isLeftOut(file) && !expected.contains("unread")) {
            SCOPED_TRACE(file);
            EXPECT_NO_THROW(compareFile(PARQUET_FILES_OF_OTHERS, expected));
            ++compared;
        }
    }
    EXPECT_EQ(compared, 41);
}

/// The other reader takes the length in the header of the dictionary for that of its values.
TEST(ParquetFiles, withAWrongDictionaryHeaderAreReadWhereTheirValuesAreSound) {
    if (!fs::exists(PARQUET_FILES_OF_OTHERS)) {
        GTEST_SKIP() << "there are no such files here";
    }
    const ReadTable table = readFile(fs::path(PARQUET_FILES_OF_OTHERS) / "data/nation.dict-malformed.parquet");
    EXPECT_EQ(table.rows, 25U);
    EXPECT_EQ(table["name"].texts().front(), "ALGERIA");
    EXPECT_EQ(table["name"].texts().back(), "UNITED STATES");
}

TEST(ParquetFiles, thatAreDamagedFailWithASentence) {
    if (!fs::exists(PARQUET_FILES_OF_OTHERS)) {
        GTEST_SKIP() << "there are no such files here";
    }
    for (const Json& expected : expectedFiles()) {
        const std::string file = expected.value("file", "");
        if (!refusals().contains(file)) {
            continue;
        }
        try {
            readFile(fs::path(PARQUET_FILES_OF_OTHERS) / expected.value("folder", "") / file);
            ADD_FAILURE() << file << " is read";
        } catch (const Failure& failure) {
            EXPECT_NE(std::string(failure.what()).find(refusals().at(file)), std::string::npos) << failure.what();
        }
    }
}

TEST(ParquetFiles, haveDatesBeyondNanoseconds) {
    if (!fs::exists(PARQUET_FILES_OF_OTHERS)) {
        GTEST_SKIP() << "there are no such files here";
    }
    const ReadTable table = readFile(fs::path(PARQUET_FILES_OF_OTHERS) / "data/int96_from_spark.parquet");
    EXPECT_EQ(table["a"].reals().at(0), 1704141296.123456);  // 2024-01-01T20:34:56.123456Z
    EXPECT_LT(table["a"].reals().at(5), -9.3e12);            // Its day is negative, and its nanoseconds too.
}

}  // namespace
}  // namespace velmorak
