#include <root/RootFile.h>

#include "Npm.h"
#include "QuietContext.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <bit>
#include <cmath>
#include <filesystem>
#include <iomanip>
#include <limits>
#include <sstream>

namespace velmorak {
namespace {

namespace fs = std::filesystem;
using Json = nlohmann::json;
using testing::ElementsAre;

const fs::path folder = ROOT_FILES;

/// Whole columns by name.
std::map<std::string, ColumnPtr> columnsOf(const fs::path& file, const std::string& object) {
    QuietContext context;
    const std::unique_ptr<TableReader> reader = openRootTable(file, object, {}, context);
    std::map<std::string, ColumnPtr> found;
    Chunk chunk;
    reader->next(chunk);
    reader->complete(chunk);
    for (std::size_t i = 0; i < chunk.columns.size(); ++i) {
        found[reader->schema()[i].name] = chunk.columns[i];
    }
    Chunk further;
    EXPECT_FALSE(reader->next(further)) << "the file has more than one chunk";
    return found;
}

std::string digitsOf(double value) {
    constexpr double anyNaN = std::numeric_limits<double>::quiet_NaN();
    std::ostringstream digits;
    digits << std::hex << std::setw(16) << std::setfill('0')
           << std::bit_cast<std::uint64_t>(std::isnan(value) ? anyNaN : value);
    return digits.str();
}

Json valueOf(const Column& column, std::size_t position) {
    switch (column.type()) {
        case ColumnType::Real:
            return digitsOf(column.reals()[position]);
        case ColumnType::Integer:
            return digitsOf(static_cast<double>(column.integers()[position]));
        case ColumnType::Boolean:
            return column.booleans()[position] != 0;
        default:
            return column.texts()[position];
    }
}

/// The values of each entry, in the words of nested.mjs.
Json entriesOf(const Column& column) {
    const std::size_t rows = column.isList() ? column.offsets.size() - 1 : column.valueCount();
    Json entries = Json::array();
    for (std::size_t row = 0; row < rows; ++row) {
        Json values = Json::array();
        const std::size_t begin = column.isList() ? column.offsets[row] : row;
        const std::size_t end = column.isList() ? column.offsets[row + 1] : row + 1;
        for (std::size_t i = begin; i < end; ++i) {
            values.push_back(valueOf(column, i));
        }
        entries.push_back(std::move(values));
    }
    return entries;
}

/// The other reader has the names of all objects around a value. @return null if several columns may be meant.
const Json* findColumn(const Json& columns, const std::string& name) {
    std::vector<const Json*> found;
    for (const auto& [theirs, values] : columns.items()) {
        if (theirs == name) {
            return &values;
        }
        if (theirs.ends_with("." + name)) {
            found.push_back(&values);
        }
    }
    return found.size() == 1 ? found.front() : nullptr;
}

/// @return the names of the columns that agree.
std::vector<std::string> compare(const fs::path& file, const std::string& object) {
    const Json theirs = Json::parse(npm::run(fs::path(ROOT_SCRIPTS) / "nested.mjs", {file, object}));
    std::vector<std::string> agree;
    for (const auto& [name, column] : columnsOf(file, object)) {
        if (const Json* found = findColumn(theirs, name)) {
            EXPECT_EQ(entriesOf(*column), *found) << file << " " << name;
            agree.push_back(name);
        }
    }
    return agree;
}

struct NestedFile {
    const char* file;
    const char* object;
    std::size_t columns;  ///< At least.
    bool isElsewhere;
};

class RootNested : public testing::TestWithParam<NestedFile> {};

TEST_P(RootNested, valuesAreThoseThatAnIndependentReaderFinds) {
    const auto& [file, object, columns, isElsewhere] = GetParam();
    if (const std::string reason = npm::missing({"jsroot"}); !reason.empty()) {
        GTEST_SKIP() << reason;
    }
    const fs::path path = (isElsewhere ? fs::path(ROOT_FILES_OF_OTHERS) : folder) / file;
    if (!fs::exists(path)) {
        GTEST_SKIP() << "there is no such file here";
    }
    EXPECT_GE(compare(path, object).size(), columns);
}

INSTANTIATE_TEST_SUITE_P(Files, RootNested,
                         testing::Values(NestedFile{"uproot-stl_containers.root", "tree", 70, false},
                                         NestedFile{"uproot-small-evnt-tree-nosplit.root", "tree", 41, false},
                                         NestedFile{"uproot-issue57.root", "outtree", 24, false},
                                         NestedFile{"uproot-issue74.root", "Events", 8, false},
                                         NestedFile{"uproot-vectorVectorDouble.root", "t", 3, false},
                                         NestedFile{"uproot-issue-1221.root", "TrkAna/trkana", 200, true},
                                         NestedFile{"uproot-issue475.root", "Event/Elec/ElecEvent", 20, true}),
                         [](const auto& instance) {
                             std::string name = instance.param.file;
                             std::erase_if(
                                 name, [](char each) { return std::isalnum(static_cast<unsigned char>(each)) == 0; });
                             return name;
                         });

TEST(RootNestedLists, sayHowTheyAreNested) {
    const auto columns = columnsOf(folder / "uproot-vectorVectorDouble.root", "t");
    ASSERT_TRUE(columns.contains("x.count") && columns.contains("x.row"));
    EXPECT_THAT(columns.at("x")->offsets, ElementsAre(0, 0, 0, 3, 6, 9));
    EXPECT_THAT(columns.at("x.count")->integers(), ElementsAre(0, 0, 1, 0, 2, 3, 1, 1, 1));
    EXPECT_THAT(columns.at("x.count")->offsets, ElementsAre(0, 0, 2, 5, 6, 9));
    EXPECT_THAT(columns.at("x.row")->integers(), ElementsAre(0, 2, 2, 0, 0, 0, 0, 1, 2));
    EXPECT_EQ(columns.at("x.row")->offsets, columns.at("x")->offsets);
}

TEST(RootNestedLists, ofMapsAreTwoColumns) {
    const auto columns = columnsOf(folder / "uproot-stl_containers.root", "tree");
    EXPECT_THAT(columns.at("map_string_int16.key")->texts(), testing::Contains("three"));
    EXPECT_EQ(columns.at("map_string_int16.key")->offsets, columns.at("map_string_int16.value")->offsets);
    EXPECT_TRUE(columns.contains("map_int32_vector_int16.value.count"));
}

TEST(RootNestedLists, ofNtuplesSayHowTheyAreNested) {
    const auto columns = columnsOf(folder / "test_stl_containers_rntuple_v1-0-0-0.root", "");
    const auto& counts = columns.at("vector_vector_int32.count")->integers();
    const auto& rows = columns.at("vector_vector_int32.row");
    EXPECT_EQ(rows->offsets, columns.at("vector_vector_int32")->offsets);
    EXPECT_THAT(counts, testing::AllOf(testing::SizeIs(15), testing::Each(1)));
    EXPECT_THAT(rows->integers(), ElementsAre(0, 0, 1, 0, 1, 2, 0, 1, 2, 3, 0, 1, 2, 3, 4));
}

TEST(RootUnsplitObjects, haveTheValuesOfSplitOnes) {
    const auto split = columnsOf(folder / "uproot-small-evnt-tree-fullsplit.root", "tree");
    const auto whole = columnsOf(folder / "uproot-small-evnt-tree-nosplit.root", "tree");
    std::size_t compared = 0;
    for (const auto& [name, column] : split) {
        if (const auto found = whole.find("evt." + name); found != whole.end()) {
            EXPECT_EQ(found->second->values, column->values) << name;
            EXPECT_EQ(found->second->offsets, column->offsets) << name;
            ++compared;
        }
    }
    EXPECT_GT(compared, 35U);
}

}  // namespace
}  // namespace velmorak
