#include <root/RootFile.h>

#include "QuietContext.h"

#include <velmorak/Parts.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

namespace velmorak {
namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;

const fs::path folder = ROOT_FILES;

std::string failureOf(const fs::path& file, const std::string& object, const std::vector<std::string>& columns) {
    QuietContext context;
    try {
        openRootTable(file, object, columns, context);
    } catch (const Failure& failure) {
        return failure.what();
    }
    return "";
}

TEST(RootTable, isTheOnlyOneOfItsFileOrHasAName) {
    EXPECT_THAT(failureOf(folder / "uproot-nesteddirs.root", "", {}),
                HasSubstr("contains several tables; enter the path of one: \"one"));
    EXPECT_EQ(failureOf(folder / "uproot-nesteddirs.root", "one/two/tree", {}), "");
    EXPECT_EQ(failureOf(folder / "uproot-nesteddirs.root", "/one/two/tree", {}), "");
    EXPECT_THAT(failureOf(folder / "uproot-issue-60.root", "events", {}), HasSubstr("it contains \"tree\""));
}

TEST(RootTable, offersOnlyTheNamedColumnsInTheirOrder) {
    QuietContext context;
    const auto reader = openRootTable(folder / "uproot-sample-6.20.04-lz4.root", "sample", {"f8", "n", "Ai4"}, context);
    const Schema expected({{"f8", ColumnType::Real}, {"n", ColumnType::Integer}, {"Ai4", ColumnType::Integer, true}});
    EXPECT_EQ(reader->schema(), expected);
    Chunk chunk;
    ASSERT_TRUE(reader->next(chunk));
    reader->complete(chunk);
    EXPECT_EQ(chunk.rows, 30U);
    EXPECT_EQ(chunk.columns[0]->reals().at(0), -14.9);
    EXPECT_EQ(chunk.columns[2]->offsets.size(), 31U);
    EXPECT_THAT(failureOf(folder / "uproot-sample-6.20.04-lz4.root", "", {"f9"}),
                HasSubstr("there is no column \"f9\""));
}

TEST(RootTable, beginsAtAnyEntry) {
    QuietContext context;
    const auto open = [&] {
        return openRootTable(folder / "uproot-sample-6.20.04-lz4.root", "sample", {"f8", "Ai4"}, context);
    };
    const auto rowsFrom = [&](std::uint64_t row) {
        const auto reader = open();
        auto& seekable = dynamic_cast<SeekableReader&>(*reader);
        EXPECT_EQ(seekable.bookmark(), "");
        seekable.seek(0, {.chunk = 1, .row = row, .bookmark = ""});
        Chunk chunk;
        reader->next(chunk);
        chunk.firstRow = row;
        reader->complete(chunk);
        return chunk;
    };
    const Chunk whole = rowsFrom(0);
    const Chunk rest = rowsFrom(11);
    EXPECT_EQ(rest.rows, 19U);
    for (std::size_t row = 0; row < rest.rows; ++row) {
        EXPECT_EQ(rest.columns[0]->reals()[row], whole.columns[0]->reals()[row + 11]);
    }
    EXPECT_EQ(rest.columns[1]->offsets.size(), 20U);
    EXPECT_EQ(rowsFrom(30).rows, 0U);
    EXPECT_THROW(rowsFrom(31), Failure);
}

TEST(RootTable, leavesOutColumnsThatNobodyNeeds) {
    QuietContext context;
    const auto reader = openRootTable(folder / "uproot-sample-6.20.04-lz4.root", "sample", {"f8", "n", "Ai4"}, context);
    reader->selectColumns({false, true, true});
    Chunk chunk;
    ASSERT_TRUE(reader->next(chunk));
    reader->complete(chunk);
    ASSERT_EQ(chunk.columns.size(), 3U);
    EXPECT_EQ(chunk.columns[0], nullptr);
    EXPECT_EQ(chunk.columns[1]->integers().size(), 30U);
    EXPECT_EQ(chunk.columns[2]->offsets.size(), 31U);
}

TEST(RootTable, namesTheColumnsThatCannotBeRead) {
    QuietContext context;
    openRootTable(folder / "uproot-issue431b.root", "", {}, context);
    ASSERT_EQ(context.warnings.size(), 1U);
    EXPECT_THAT(context.warnings[0], HasSubstr("columns cannot be read: \"usr_data.holder\""));
    EXPECT_THAT(failureOf(folder / "uproot-issue431b.root", "", {"usr_data.holder"}),
                HasSubstr("values of the type AAny::Holder_base* cannot be read"));
}

TEST(RootTable, endsWhenTheRunIsToEnd) {
    QuietContext context;
    const auto reader = openRootTable(folder / "uproot-issue-60.root", "", {}, context);
    context.stopping = true;
    Chunk chunk;
    EXPECT_THROW(reader->next(chunk), Stopped);
}

TEST(RootTable, isRefusedWhereTheFileIsOfAnotherKind) {
    EXPECT_THAT(failureOf(folder / "expected.jsonl", "", {}), HasSubstr("it is not a ROOT file"));
    EXPECT_THAT(failureOf(folder / "nothing.root", "", {}), HasSubstr("No such file"));
    EXPECT_THAT(failureOf(folder, "", {}), HasSubstr("is a folder"));
}

TEST(RootList, namesWhatAFileHolds) {
    const std::vector<RootEntry> entries = listRoot(folder / "uproot-nesteddirs.root");
    ASSERT_EQ(entries.size(), 3U);
    EXPECT_EQ(entries[1].path, "one/tree");
    EXPECT_EQ(entries[1].className, "TTree");
    EXPECT_TRUE(entries[1].isTable);
}

}  // namespace
}  // namespace velmorak
