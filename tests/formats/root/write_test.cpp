#include <root/RootFile.h>
#include <root/container/File.h>
#include <root/objects/Classes.h>
#include <root/write/TreeWriter.h>
#include <root/write/WrittenClasses.h>

#include "Npm.h"
#include "QuietContext.h"

#include <velmorak/ChunkSize.h>
#include <velmorak/TemporaryFolder.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <bit>
#include <cmath>
#include <fstream>
#include <limits>
#include <random>

namespace velmorak {
namespace {

namespace fs = std::filesystem;
using Json = nlohmann::json;
using root::Packing;

const fs::path scripts = ROOT_SCRIPTS;

/// A table in memory, in chunks.
struct Rows {
    Schema schema;
    std::vector<Chunk> chunks;
};

class RandomRows {
public:
    explicit RandomRows(std::uint64_t seed, bool hasNegative = true) : random(seed), hasNegative(hasNegative) {}

    Rows make();

private:
    std::size_t below(std::size_t limit) { return random() % limit; }
    double real();
    std::string text();
    ColumnPtr column(const ColumnInfo& info, std::size_t rows);
    void append(Column& column, ColumnType type);

    std::int64_t integer() {
        const std::uint64_t bits = random() >> (hasNegative ? 0 : 1);
        return static_cast<std::int64_t>(bits) >> below(64);
    }

    std::mt19937_64 random;
    bool hasNegative;  ///< Integers.
};

double RandomRows::real() {
    switch (below(8)) {
        case 0:
            return std::bit_cast<double>(random());  // Any bits, also those of NaN.
        case 1:
            return -0.0;
        case 2:
            return std::numeric_limits<double>::infinity();
        default:
            return static_cast<double>(below(1000)) / 8;
    }
}

std::string RandomRows::text() {
    constexpr std::array<std::size_t, 6> lengths{0, 1, 7, 254, 255, 300};
    std::string text;
    const std::size_t length = lengths[below(lengths.size())];
    while (text.size() < length) {
        text += text.size() + 2 <= length && below(9) == 0 ? "é" : std::string(1, static_cast<char>(' ' + below(90)));
    }
    return text;
}

void RandomRows::append(Column& column, ColumnType type) {
    switch (type) {
        case ColumnType::Real:
            std::get<Column::Reals>(column.values).push_back(real());
            break;
        case ColumnType::Integer:
            std::get<Column::Integers>(column.values).push_back(integer());
            break;
        case ColumnType::Boolean:
            std::get<Column::Booleans>(column.values).push_back(static_cast<std::uint8_t>(below(2)));
            break;
        case ColumnType::Text:
            std::get<Column::Texts>(column.values).push_back(text());
    }
}

Column emptyOf(ColumnType type) {
    switch (type) {
        case ColumnType::Integer:
            return {.values = Column::Integers(), .offsets = {}};
        case ColumnType::Boolean:
            return {.values = Column::Booleans(), .offsets = {}};
        case ColumnType::Text:
            return {.values = Column::Texts(), .offsets = {}};
        case ColumnType::Real:
            break;
    }
    return {.values = Column::Reals(), .offsets = {}};
}

ColumnPtr RandomRows::column(const ColumnInfo& info, std::size_t rows) {
    Column column = emptyOf(info.type);
    if (info.isList) {
        column.offsets.push_back(0);
    }
    for (std::size_t row = 0; row < rows; ++row) {
        const std::size_t values = info.isList ? below(4) * below(3) : 1;
        for (std::size_t i = 0; i < values; ++i) {
            append(column, info.type);
        }
        if (info.isList) {
            column.offsets.push_back(column.valueCount());
        }
    }
    return std::make_shared<Column>(std::move(column));
}

Rows RandomRows::make() {
    Rows rows;
    const std::size_t columns = 1 + below(7);
    for (std::size_t i = 0; i < columns; ++i) {
        const auto type = static_cast<ColumnType>(below(4));
        rows.schema.add(
            {.name = "c." + std::to_string(i), .type = type, .isList = type != ColumnType::Text && below(2) == 0});
    }
    const std::size_t chunks = below(5);
    std::uint64_t row = 0;
    for (std::size_t i = 0; i < chunks; ++i) {
        Chunk chunk{.number = i,
                    .firstRow = row,
                    .rows = below(3) == 0   ? 0
                            : below(2) == 0 ? below(50)
                                            : 9000 + below(500),
                    .columns = {}};
        for (const ColumnInfo& info : rows.schema.columns()) {
            chunk.columns.push_back(column(info, chunk.rows));
        }
        row += chunk.rows;
        rows.chunks.push_back(std::move(chunk));
    }
    return rows;
}

/// Writes the table, with as many chunks in each call as given.
void writeTree(const Rows& rows, const fs::path& file, Packing packing, std::size_t chunksTogether = 1) {
    root::FileWriter writer({.path = file, .name = "rows.root"}, packing);
    const root::TreeLayout layout("events", rows.schema);
    root::TreeWriter tree(writer, layout);
    std::string bytes;
    for (std::size_t i = 0; i < rows.chunks.size(); ++i) {
        root::TreeRows next = treeRowsOf(layout, rows.chunks[i]);
        if (next.rows > 0 && next.isEnough(layout)) {
            next.pack(layout, packing);
        }
        bytes += next.rows > 0 ? bytesOfRows(next) : "";
        if ((i + 1) % chunksTogether == 0) {
            tree.append(bytes);
            bytes.clear();
        }
    }
    tree.append(bytes);
    tree.finish();
    writer.close();
}

/// A real as the script prints it.
Json bitsOf(double value) {
    std::array<char, 17> digits{};
    std::snprintf(digits.data(), digits.size(), "%016llx",
                  static_cast<unsigned long long>(std::bit_cast<std::uint64_t>(value)));
    return digits.data();
}

/// JavaScript has a single NaN, and reals instead of integers.
Json plainOf(const Column& column, std::size_t i, bool keepsNan) {
    switch (column.type()) {
        case ColumnType::Integer:
            return keepsNan ? Json(column.integers()[i]) : bitsOf(static_cast<double>(column.integers()[i]));
        case ColumnType::Boolean:
            return column.booleans()[i] != 0;
        case ColumnType::Text:
            return column.texts()[i];
        case ColumnType::Real:
            break;
    }
    const double value = column.reals()[i];
    return bitsOf(std::isnan(value) && !keepsNan ? std::numeric_limits<double>::quiet_NaN() : value);
}

void appendColumn(Json& target, const Column& column, std::size_t rows, bool keepsNan) {
    for (std::size_t row = 0; row < rows; ++row) {
        if (!column.isList()) {
            target.push_back(plainOf(column, row, keepsNan));
            continue;
        }
        Json list = Json::array();
        for (std::uint64_t i = column.offsets[row]; i < column.offsets[row + 1]; ++i) {
            list.push_back(plainOf(column, i, keepsNan));
        }
        target.push_back(list);
    }
}

/// All values by column.
Json valuesOf(const Rows& rows, bool keepsNan) {
    Json all = Json::object();
    for (std::size_t i = 0; i < rows.schema.size(); ++i) {
        Json& target = all[rows.schema[i].name] = Json::array();
        for (const Chunk& chunk : rows.chunks) {
            appendColumn(target, *chunk.columns[i], chunk.rows, keepsNan);
        }
    }
    return all;
}

Rows readBack(const fs::path& file, const Schema& schema) {
    QuietContext context;
    std::vector<std::string> names;
    for (const ColumnInfo& info : schema.columns()) {
        names.push_back(info.name);
    }
    const auto reader = openRootTable(file, "events", names, context);
    EXPECT_EQ(reader->schema(), schema);
    Rows rows{.schema = schema, .chunks = {}};
    std::uint64_t row = 0;
    for (Chunk chunk; reader->next(chunk); chunk = {}) {
        chunk.firstRow = row;
        row += chunk.rows;
        reader->complete(chunk);
        rows.chunks.push_back(chunk);
    }
    return rows;
}

std::string contentOf(const fs::path& file) {
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

constexpr std::array packings{Packing::None, Packing::Zlib, Packing::Lz4, Packing::Zstd};

TEST(RootTreeWriter, tablesReadBackToTheLastBit) {
    const TemporaryFolder folder("root-write");
    const fs::path file = folder.path() / "rows.root";
    for (std::uint64_t seed = 0; seed < 40; ++seed) {
        const Rows rows = RandomRows(seed).make();
        writeTree(rows, file, packings[seed % packings.size()]);
        ASSERT_EQ(valuesOf(readBack(file, rows.schema), true), valuesOf(rows, true)) << "seed " << seed;
    }
}

TEST(RootTreeWriter, jsrootReadsTablesToTheLastBit) {
    if (const std::string reason = npm::missing({"jsroot"}); !reason.empty()) {
        GTEST_SKIP() << reason;
    }
    const TemporaryFolder folder("root-write");
    const fs::path file = folder.path() / "rows.root";
    for (std::uint64_t seed = 100; seed < 112; ++seed) {
        const Rows rows = RandomRows(seed, false).make();  // It reads some negative integers of 64 bits wrong.
        writeTree(rows, file, packings[seed % packings.size()]);
        Json found = Json::parse(npm::run(scripts / "read.mjs", {file}))["events"]["columns"];
        for (const ColumnInfo& column : rows.schema.columns()) {
            found.erase(column.isList ? "n" + column.name : "");
        }
        ASSERT_EQ(found, valuesOf(rows, false)) << "seed " << seed;
    }
}

TEST(RootTreeWriter, theFileDoesNotDependOnHowChunksArrive) {
    const TemporaryFolder folder("root-write");
    for (std::uint64_t seed = 0; seed < 20; ++seed) {
        const Rows rows = RandomRows(seed).make();
        writeTree(rows, folder.path() / "one.root", Packing::Zstd, 1);
        writeTree(rows, folder.path() / "three.root", Packing::Zstd, 3);
        ASSERT_EQ(contentOf(folder.path() / "one.root"), contentOf(folder.path() / "three.root")) << "seed " << seed;
    }
}

TEST(RootTreeWriter, filesWithOtherContentsHaveOtherIdentities) {
    const TemporaryFolder folder("root-write");
    writeTree(RandomRows(1).make(), folder.path() / "one.root", Packing::None);
    writeTree(RandomRows(2).make(), folder.path() / "two.root", Packing::None);
    EXPECT_NE(root::File(folder.path() / "one.root").uuid(), root::File(folder.path() / "two.root").uuid());
}

TEST(RootTreeWriter, fewRowsAreGatheredInBaskets) {
    const TemporaryFolder folder("root-write");
    Rows rows{.schema = Schema({{.name = "x"}}), .chunks = {}};
    for (std::uint64_t i = 0; i < 1000; ++i) {
        auto column = std::make_shared<Column>(Column{.values = Column::Reals(20, 0.5), .offsets = {}});
        rows.chunks.push_back({.number = i, .firstRow = 20 * i, .rows = 20, .columns = {std::move(column)}});
    }
    writeTree(rows, folder.path() / "few.root", Packing::None);
    EXPECT_LT(fs::file_size(folder.path() / "few.root"), 20U * 1000 * 8 + 15000);
    EXPECT_EQ(valuesOf(readBack(folder.path() / "few.root", rows.schema), true), valuesOf(rows, true));
}

TEST(RootTreeWriter, aTextWithAZeroByteIsAFailure) {
    const root::TreeLayout layout("t", Schema({{.name = "text", .type = ColumnType::Text}}));
    auto column = std::make_shared<Column>(Column{.values = Column::Texts{"a", std::string("b\0c", 3)}, .offsets = {}});
    const Chunk chunk{.firstRow = 40, .rows = 2, .columns = {std::move(column)}};
    try {
        treeRowsOf(layout, chunk);
        FAIL() << "it is accepted";
    } catch (const Failure& failure) {
        EXPECT_THAT(failure.what(),
                    testing::HasSubstr("column \"text\", in one of the 2 rows from row 41 on, has a zero byte"));
    }
}

TEST(RootTreeWriter, aListOfTextsIsAFailure) {
    EXPECT_THROW(root::TreeLayout("t", Schema({{.name = "x", .type = ColumnType::Text, .isList = true}})), Failure);
}

TEST(RootTreeWriter, namesOfLengthsDoNotTakeThoseOfColumns) {
    const root::TreeLayout layout(
        "t", Schema({{.name = "x", .isList = true}, {.name = "nx"}, {.name = "a/b"}, {.name = "a_b"}}));
    std::vector<std::string> names;
    for (const root::WrittenBranch& branch : layout.branches) {
        names.push_back(branch.name);
    }
    EXPECT_EQ(names, (std::vector<std::string>{"nx_2", "x", "nx", "a_b", "a_b_2"}));
}

TEST(RootTreeWriter, damagedRowsAreAFailure) {
    Rows rows;
    for (std::uint64_t seed = 0; rows.chunks.empty(); ++seed) {
        rows = RandomRows(seed).make();
    }
    const root::TreeLayout layout("t", rows.schema);
    const std::string bytes = bytesOfRows(treeRowsOf(layout, rows.chunks.back()));
    for (std::size_t length = 0; length < std::min<std::size_t>(bytes.size(), 300); ++length) {
        std::string_view part = std::string_view(bytes).substr(0, length);
        EXPECT_THROW(takeRows(part, layout), Failure) << length;
    }
}

/// Compares the descriptions of classes that we write with those in a file of another program.
void compareClasses(const fs::path& path, const std::vector<std::string>& names) {
    const root::File file(path);
    const root::WrittenClasses written;
    const root::Key key = file.streamerKey().value();
    const root::Classes classes(file.content(key), key.headBytes);
    for (const std::string& name : names) {
        const root::WrittenClass& ours = written.at(name);
        const root::ClassInfo* theirs = classes.find(name, ours.version);
        ASSERT_TRUE(theirs) << name;
        EXPECT_EQ(theirs->version, ours.version) << name;
        EXPECT_EQ(theirs->checksum, written.checksum(ours)) << name;
        EXPECT_EQ(theirs->elements.size(), ours.bases.size() + ours.members.size()) << name;
    }
}

TEST(WrittenClasses, areThoseOfTheFilesOfOtherPrograms) {
    compareClasses(fs::path(ROOT_FILES) / "uproot-sample-6.20.04-lz4.root",
                   {"TTree", "TBranch", "TLeaf", "TLeafC", "TLeafD", "TLeafI", "TLeafL", "TLeafO", "TObjArray", "TList",
                    "TNamed", "TObject", "TAttLine", "TAttFill", "TAttMarker", "ROOT::TIOFeatures"});
}

TEST(WrittenClasses, ofHistogramsAreThoseOfTheFilesOfOtherPrograms) {
    const fs::path folder = ROOT_FILES_OF_OTHERS;
    if (!fs::exists(folder)) {
        GTEST_SKIP() << "there are no such files here";
    }
    compareClasses(folder / "uproot-issue-227a.root",
                   {"TH1", "TH2", "TH2D", "TProfile2D", "TAxis", "TAttAxis", "THashList", "TList"});
    compareClasses(folder / "uproot-issue-227b.root", {"TH3", "TH3D", "TAtt3D"});
    compareClasses(folder / "uproot-issue494.root", {"TH1D"});
    compareClasses(folder / "uproot-issue-350.root", {"TGraph", "TGraphAsymmErrors"});
}

}  // namespace
}  // namespace velmorak
