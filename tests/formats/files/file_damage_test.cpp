#include "ChainFixture.h"

#include "executor/ThreadPool.h"

#include <gmock/gmock.h>
#include <zlib.h>
#include <algorithm>
#include <map>
#include <set>

namespace velmorak {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::Pair;

std::string gzipped(const std::string& text) {
    z_stream stream{};
    deflateInit2(&stream, Z_DEFAULT_COMPRESSION, Z_DEFLATED, 15 + 16, 8, Z_DEFAULT_STRATEGY);
    std::string packed(deflateBound(&stream, text.size()), '\0');
    std::string copy = text;
    stream.next_in = reinterpret_cast<Bytef*>(copy.data());
    stream.avail_in = static_cast<uInt>(copy.size());
    stream.next_out = reinterpret_cast<Bytef*>(packed.data());
    stream.avail_out = static_cast<uInt>(packed.size());
    EXPECT_EQ(deflate(&stream, Z_FINISH), Z_STREAM_END);
    packed.resize(stream.total_out);
    deflateEnd(&stream);
    return packed;
}

/// Whole lines after the header that the beginning of a compressed file holds, as zlib unpacks it.
std::size_t linesIn(const std::string& packed) {
    z_stream stream{};
    inflateInit2(&stream, 15 + 16);
    std::string copy = packed;
    std::string text(20 * packed.size(), '\0');
    stream.next_in = reinterpret_cast<Bytef*>(copy.data());
    stream.avail_in = static_cast<uInt>(copy.size());
    stream.next_out = reinterpret_cast<Bytef*>(text.data());
    stream.avail_out = static_cast<uInt>(text.size());
    inflate(&stream, Z_SYNC_FLUSH);
    text.resize(stream.total_out);
    inflateEnd(&stream);
    return static_cast<std::size_t>(std::count(text.begin(), text.end(), '\n')) - 1;
}

TEST_F(FileChainTest, skipsDamagedFilesIfAsked) {
    write("a.csv", "x\n1\n");
    write("b.csv", "");
    write("d.csv", "x\n4\n");
    EXPECT_THAT(failureOf("*.csv"), HasSubstr("b.csv\" has no rows"));
    EXPECT_THAT(failureOf("a.csv, missing.csv"), HasSubstr("missing.csv"));
    const std::unique_ptr<TableReader> reader = open("a.csv, b.csv, missing.csv, d.csv", {.skipsDamaged = true});
    const std::vector<Chunk> chunks = chunksOf(*reader);
    ASSERT_EQ(chunks.size(), 2U);
    EXPECT_EQ(chunks[1].file, 3U);
    EXPECT_THAT(context.skipped, ElementsAre(Pair("b.csv", HasSubstr("no rows")), Pair("missing.csv", testing::_)));
    EXPECT_THAT(failureOf("b.csv, missing.csv", {.skipsDamaged = true}),
                HasSubstr("none of the 2 files can be read; the first: "));
}

/// Has one row in each of its chunks, and is damaged behind them.
class DamagedReader : public TableReader {
public:
    DamagedReader(std::size_t chunks, bool isDamaged) : left(chunks), isDamaged(isDamaged) {}
    const Schema& schema() const override { return columns; }
    bool next(Chunk& chunk) override {
        if (left == 0 && isDamaged) {
            throw Failure("the file ends early");
        }
        chunk.rows = left > 0 ? 1 : 0;
        chunk.columns = {std::make_shared<const Column>(Column{Column::Reals(chunk.rows, 1.0), {}})};
        return left > 0 && left-- > 0;
    }

private:
    std::size_t left;
    bool isDamaged;
    Schema columns{{ColumnInfo{.name = "x"}}};
};

TEST_F(FileChainTest, keepsTheRowsBeforeTheDamage) {
    const FileList list = listOf({"whole", "damaged", "last"});
    const auto openFile = [](const std::string& file) { return std::make_unique<DamagedReader>(2, file == "damaged"); };
    const std::unique_ptr<TableReader> reader = openOwn(list, openFile, {.skipsDamaged = true});
    std::vector<std::uint64_t> files;
    for (const Chunk& chunk : chunksOf(*reader)) {
        files.push_back(chunk.file);
    }
    EXPECT_THAT(files, ElementsAre(0, 0, 1, 1, 2, 2));
    EXPECT_THAT(context.skipped, ElementsAre(Pair("damaged", "the file ends early")));
    const std::unique_ptr<TableReader> strict = openOwn(list, openFile, {});
    EXPECT_THROW(chunksOf(*strict), Failure);
}

TEST_F(FileChainTest, namesTheFileThatCannotBeRead) {
    const auto openFile = [](const std::string& file) { return std::make_unique<DamagedReader>(1, file == "bad"); };
    const std::unique_ptr<TableReader> reader = openOwn(listOf({"good", "bad"}), openFile, {});
    try {
        chunksOf(*reader);
        FAIL();
    } catch (const Failure& failure) {
        EXPECT_STREQ(failure.what(), "\"bad\": the file ends early");
    }
}

/// Has four chunks, whose columns are made in complete; some of them cannot be made.
class BlockReader : public TableReader {
public:
    BlockReader(std::string name, std::set<std::uint64_t> damaged)
        : name(std::move(name)), damaged(std::move(damaged)) {}
    const Schema& schema() const override { return columns; }
    bool next(Chunk& chunk) override {
        chunk.rows = read < 4 ? 2 : 0;
        return read++ < 4;
    }
    void complete(Chunk& chunk) const override {
        const std::uint64_t block = chunk.firstRow / 2;
        if (damaged.contains(block)) {
            throw Failure("block " + std::to_string(block) + " of " + name + " is damaged");
        }
        const auto value = static_cast<std::int64_t>(block);
        chunk.columns = {std::make_shared<const Column>(Column{Column::Integers{value, value}, {}})};
    }

private:
    std::string name;
    std::set<std::uint64_t> damaged;
    std::uint64_t read = 0;
    Schema columns{{ColumnInfo{.name = "x", .type = ColumnType::Integer}}};
};

TEST_F(FileChainTest, losesBlocksThatCannotBeRead) {
    const auto openFile = [](const std::string& file) {
        return std::make_unique<BlockReader>(file,
                                             file == "b" ? std::set<std::uint64_t>{1, 3} : std::set<std::uint64_t>{});
    };
    const std::unique_ptr<TableReader> reader =
        openOwn(listOf({"a", "b", "c"}), openFile, {.hasFileColumns = true, .skipsDamaged = true});
    std::vector<std::size_t> rows;
    for (const Chunk& chunk : chunksOf(*reader)) {
        rows.push_back(chunk.rows);
        ASSERT_EQ(chunk.columns.size(), 3U);
        EXPECT_EQ(chunk.columns[0]->valueCount(), chunk.rows);
        EXPECT_EQ(chunk.columns[1]->texts().size(), chunk.rows);
        EXPECT_EQ(chunk.columns[2]->integers().size(), chunk.rows);
    }
    EXPECT_THAT(rows, ElementsAre(2, 2, 2, 2, 2, 0, 2, 0, 2, 2, 2, 2));
    EXPECT_THAT(context.skipped, ElementsAre(Pair("b", HasSubstr("block 1")), Pair("b", HasSubstr("block 3"))));
    const std::unique_ptr<TableReader> strict = openOwn(listOf({"a", "b", "c"}), openFile, {});
    EXPECT_THROW(chunksOf(*strict), Failure);
}

TEST_F(FileChainTest, losesTheSameBlocksWhenManyFilesAreOpen) {
    std::vector<std::string> names;
    for (int i = 0; i < 200; ++i) {
        names.push_back(std::to_string(i));
    }
    const auto openFile = [](const std::string& file) {
        return std::make_unique<BlockReader>(file, std::set<std::uint64_t>{std::stoul(file) % 5});
    };
    const std::unique_ptr<TableReader> reader = openOwn(listOf(names), openFile, {.skipsDamaged = true});
    const std::vector<Chunk> chunks = chunksOf(*reader);
    ASSERT_EQ(chunks.size(), 800U);
    for (const Chunk& chunk : chunks) {
        EXPECT_EQ(chunk.rows, chunk.file % 5 == chunk.number ? 0U : 2U) << chunk.file << ", " << chunk.number;
    }
}

TEST_F(FileChainTest, aWrongValueOfThePluginIsNoDamage) {
    const auto openFile = [](const std::string&) -> std::unique_ptr<TableReader> {
        throw Failure("columns", "there is no column \"y\"");
    };
    EXPECT_THROW(openOwn(listOf({"a", "b"}), openFile, {.skipsDamaged = true}), Failure);
    EXPECT_THAT(context.skipped, testing::IsEmpty());
}

class DamagedFiles : public FileChainTest, public testing::WithParamInterface<std::size_t> {};
INSTANTIATE_TEST_SUITE_P(Threads, DamagedFiles, testing::Values(1, 2, 5));

TEST_P(DamagedFiles, giveTheSameRowsOnAnyThreads) {
    std::string text = "x,y\n";
    for (std::size_t i = 0; i < 40000; ++i) {
        text += std::to_string(i * 7919 % 100003) + "," + std::to_string(i % 977) + ".5\n";
    }
    const std::string packed = gzipped(text);
    write("a.csv.gz", packed);
    write("b.csv.gz", packed.substr(0, packed.size() / 2));
    write("c.csv.gz", packed.substr(0, 5));
    write("d.csv.gz", packed);
    const ThreadPool pool(GetParam());
    const std::unique_ptr<TableReader> reader = open("*.gz", {.skipsDamaged = true});
    std::map<std::uint64_t, std::uint64_t> rows;
    for (const Chunk& chunk : chunksOf(*reader)) {
        rows[chunk.file] += chunk.rows;
    }
    EXPECT_EQ(rows[0], 40000U);
    EXPECT_EQ(rows[1], linesIn(packed.substr(0, packed.size() / 2)));
    EXPECT_EQ(rows[2], 0U);
    EXPECT_EQ(rows[3], 40000U);
    EXPECT_THAT(context.skipped, testing::UnorderedElementsAre(Pair("b.csv.gz", HasSubstr("end too early")),
                                                               Pair("c.csv.gz", testing::_)));
}

}  // namespace
}  // namespace velmorak
