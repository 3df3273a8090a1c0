#include "ChainFixture.h"

#include "executor/ThreadPool.h"

#include <velmorak/FileCircumstances.h>
#include <velmorak/OpenFiles.h>
#include <velmorak/Parts.h>
#include <velmorak/RowBounds.h>

#include <gmock/gmock.h>

#include <algorithm>
#include <atomic>

namespace velmorak {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

TEST_F(FileChainTest, readsTheWantedFilesOnly) {
    for (const char* const name : {"a.csv", "b.csv", "c.csv", "d.csv"}) {
        write(name, "x\n1\n2\n");
    }
    const std::unique_ptr<TableReader> reader = open("*.csv");
    std::filesystem::remove(folder.path() / "b.csv");
    dynamic_cast<FileSelection&>(*reader).readOnly({true, false, false, true});
    EXPECT_EQ(reader->fraction(), 0.0);
    const std::vector<Chunk> chunks = chunksOf(*reader);
    ASSERT_EQ(chunks.size(), 2U);
    EXPECT_EQ(chunks[0].file, 0U);
    EXPECT_EQ(chunks[1].file, 3U) << "files keep their numbers";
    EXPECT_EQ(reader->fraction(), 1.0);
}

/// Five chunks of one row, with their numbers as bookmarks.
class RowsWithBookmarks : public TableReader, public SeekableReader {
public:
    const Schema& schema() const override { return columns; }
    bool next(Chunk& chunk) override {
        chunk.rows = at < 5 ? 1 : 0;
        chunk.columns = {std::make_shared<const Column>(Column{Column::Integers{at}, {}})};
        return at++ < 5;
    }
    std::optional<std::string> bookmark() const override { return std::to_string(at); }
    void seek(std::uint64_t /*file*/, const ChunkStart& start) override { at = std::stoi(start.bookmark); }

private:
    Schema columns{{{.name = "x", .type = ColumnType::Integer}}};
    int at = 0;
};

TEST_F(FileChainTest, beginsInTheMiddleOfAFile) {
    const auto opening = [](const std::string&) { return std::make_unique<RowsWithBookmarks>(); };
    const FileList list = listOf({"a", "b", "c"});
    const std::unique_ptr<TableReader> reader = openOwn(list, opening, {});
    EXPECT_EQ(dynamic_cast<SeekableReader&>(*reader).bookmark(), std::nullopt) << "no file is open";
    Chunk chunk;
    reader->next(chunk);
    reader->next(chunk);
    EXPECT_EQ(dynamic_cast<SeekableReader&>(*reader).bookmark(), "2");
    const std::unique_ptr<TableReader> later = openOwn(list, opening, {});
    dynamic_cast<FileSelection&>(*later).readOnly({false, true, true});
    dynamic_cast<SeekableReader&>(*later).seek(1, {.chunk = 3, .row = 3, .bookmark = "3"});
    const std::vector<Chunk> chunks = chunksOf(*later);
    ASSERT_EQ(chunks.size(), 7U);
    EXPECT_EQ(chunks[0].file, 1U);
    EXPECT_EQ(chunks[0].number, 3U);
    EXPECT_EQ(chunks[0].firstRow, 3U);
    EXPECT_THAT(chunks[0].columns[0]->integers(), ElementsAre(3));
    EXPECT_EQ(chunks[2].number, 0U) << "the next file";
    EXPECT_EQ(chunks[2].firstRow, 5U);
}

TEST_F(FileChainTest, readsFilesOneAfterTheOther) {
    write("a.csv", "x,y\n1,2\n3,4\n");
    write("b.csv", "y,x\n6,5.5\n");
    const std::unique_ptr<TableReader> reader = open("*.csv");
    EXPECT_EQ(reader->fileCount(), 2U);
    ASSERT_THAT(reader->schema().columns(),
                ElementsAre(ColumnInfo{.name = "x"}, ColumnInfo{.name = "y", .type = ColumnType::Integer}));
    const std::vector<Chunk> chunks = chunksOf(*reader);
    ASSERT_EQ(chunks.size(), 2U);
    EXPECT_THAT(chunks[0].columns[0]->reals(), ElementsAre(1.0, 3.0));
    EXPECT_THAT(chunks[0].columns[1]->integers(), ElementsAre(2, 4));
    EXPECT_EQ(chunks[1].file, 1U);
    EXPECT_EQ(chunks[1].firstRow, 2U);
    EXPECT_THAT(chunks[1].columns[0]->reals(), ElementsAre(5.5));
    EXPECT_EQ(chunks[1].owner, nullptr);
    EXPECT_EQ(reader->fraction(), 1.0);
}

TEST_F(FileChainTest, givesOneFileAsItIs) {
    write("a.csv", "x\n1\n");
    const std::unique_ptr<TableReader> reader = open("a.csv");
    EXPECT_EQ(reader->fileCount(), 1U);
    EXPECT_EQ(reader->schema().size(), 1U);
}

TEST_F(FileChainTest, addsColumnsOfTheFiles) {
    write("a.csv", "x\n1\n2\n");
    write("b.csv", "x\n3\n");
    const std::unique_ptr<TableReader> reader = open("b.csv, a.csv", {.hasFileColumns = true});
    const std::vector<Chunk> chunks = chunksOf(*reader);
    EXPECT_THAT(chunks[0].columns[1]->texts(), ElementsAre("b.csv"));
    EXPECT_THAT(chunks[1].columns[1]->texts(), ElementsAre("a.csv", "a.csv"));
    EXPECT_THAT(chunks[1].columns[2]->integers(), ElementsAre(1, 1));
    write("c.csv", "x,file\n1,2\n");
    EXPECT_THAT(failureOf("c.csv", {.hasFileColumns = true}),
                HasSubstr("the column \"file\" of \"file_columns\" has the name of another column"));
}

TEST_F(FileChainTest, addsPropertiesOfTheFiles) {
    write("a.csv", "x\n1\n");
    write("b.csv", "x\n2\n3\n");
    write("samples.csv", "file,luminosity,sample\na.csv,1.5,zz\nb.csv,2.5,tt\n");
    const std::unique_ptr<TableReader> reader = open("@samples.csv");
    const std::vector<Chunk> chunks = chunksOf(*reader);
    EXPECT_THAT(chunks[0].columns[1]->reals(), ElementsAre(1.5));
    EXPECT_THAT(chunks[1].columns[1]->reals(), ElementsAre(2.5, 2.5));
    EXPECT_THAT(chunks[1].columns[2]->texts(), ElementsAre("tt", "tt"));
}

TEST_F(FileChainTest, takesCommonColumnsIfAsked) {
    write("a.csv", "x,y\n1,2\n");
    write("b.csv", "x,z\n3,4\n");
    EXPECT_THAT(failureOf("*.csv"), HasSubstr("\"b.csv\" has a column \"z\", which \"a.csv\" does not have"));
    const std::unique_ptr<TableReader> reader = open("*.csv", {.takesCommonColumns = true});
    EXPECT_EQ(reader->schema().size(), 1U);
    EXPECT_EQ(chunksOf(*reader).size(), 2U);
    EXPECT_THAT(context.warnings,
                ElementsAre(HasSubstr("leaves out columns that differ between the files: \"z\", \"y\"")));
}

TEST_F(FileChainTest, filesWithoutRowsSuitAnyType) {
    write("a.csv", "x,y\n");
    write("b.csv", "x,y\n1,text\n2,more\n");
    write("c.csv", "x,y\n1.5,NA\n");
    const std::unique_ptr<TableReader> reader = open("*.csv");
    EXPECT_THAT(reader->schema().columns(),
                ElementsAre(ColumnInfo{.name = "x"}, ColumnInfo{.name = "y", .type = ColumnType::Text}));
    const std::vector<Chunk> chunks = chunksOf(*reader);
    ASSERT_EQ(chunks.size(), 2U);
    EXPECT_EQ(chunks[0].file, 1U);
    EXPECT_THAT(chunks[1].columns[1]->texts(), ElementsAre(""));
}

TEST_F(FileChainTest, aPreviewLooksAtOneFile) {
    write("a.csv", "x\n1\n");
    write("b.csv", "y\n1\n");
    context.preview = true;
    EXPECT_EQ(open("*.csv")->schema().size(), 1U);
}

TEST_F(FileChainTest, refusesFilesWithNothingInCommon) {
    write("a.csv", "x\n1\n");
    write("b.csv", "y\n1\n");
    EXPECT_EQ(failureOf("*.csv", {.takesCommonColumns = true}), "the files have no column in common");
}

TEST_F(FileChainTest, saysAtMostTenWarningsAboutItsFiles) {
    for (int i = 10; i < 30; ++i) {
        write(std::to_string(i) + ".csv", "x,t\n1,a\xFF\n");
    }
    chunksOf(*open("*.csv"));
    ASSERT_EQ(context.warnings.size(), 11U);
    EXPECT_THAT(context.warnings.front(), HasSubstr("10.csv\": bytes that are not UTF-8"));
    EXPECT_EQ(context.warnings.back(), "10 more warnings about its files");
}

struct OpenReaders {
    std::atomic<std::size_t> count = 0;
    std::atomic<std::size_t> most = 0;
};

/// Reads a row and counts how many of its kind exist.
class CountedReader : public TableReader {
public:
    explicit CountedReader(OpenReaders& readers) : readers(readers) {
        const std::size_t now = ++readers.count;
        for (std::size_t known = readers.most; known < now && !readers.most.compare_exchange_weak(known, now);) {
        }
    }
    CountedReader(const CountedReader&) = delete;
    CountedReader& operator=(const CountedReader&) = delete;
    ~CountedReader() override { --readers.count; }
    const Schema& schema() const override { return columns; }
    bool next(Chunk& chunk) override {
        chunk.rows = isRead ? 0 : 1;
        return !std::exchange(isRead, true);
    }
    void complete(Chunk& chunk) const override {
        chunk.columns = {std::make_shared<const Column>(Column{Column::Reals{1.0}, {}})};
    }

private:
    OpenReaders& readers;
    Schema columns{{ColumnInfo{.name = "x"}}};
    bool isRead = false;
};

TEST_F(FileChainTest, keepsAtMost64FilesOpenThoughNoChunkIsCompleted) {
    std::vector<std::string> names;
    for (int i = 0; i < 1000; ++i) {
        names.push_back(std::to_string(i));
    }
    OpenReaders readers;
    const std::unique_ptr<TableReader> reader =
        openOwn(listOf(names), [&](const std::string&) { return std::make_unique<CountedReader>(readers); }, {});
    EXPECT_EQ(chunksOf(*reader).size(), 1000U);
    EXPECT_GT(readers.most, 32U);
    EXPECT_LE(readers.most, 64U);
}

/// A run whose plug-ins share a limit.
class LimitedContext : public FolderContext, public FileLimit {
public:
    using FolderContext::FolderContext;
    std::shared_ptr<OpenFiles> openFiles() const override { return files; }

    const std::shared_ptr<OpenFiles> files = std::make_shared<OpenFiles>();
};

TEST_F(FileChainTest, severalReadersKeepAtMost64FilesOpenTogether) {
    LimitedContext run(folder.path());
    OpenReaders readers;
    const auto opener =
        std::make_shared<TestOpener>([&](const std::string&) { return std::make_unique<CountedReader>(readers); });
    std::vector<std::unique_ptr<TableReader>> tables;
    for (int i = 0; i < 100; ++i) {
        tables.push_back(openFiles(listOf({"alone"}), opener, {}, run));
    }
    EXPECT_LE(readers.count, 32U) << "others are opened when their rows are read";
    std::vector<std::string> names;
    for (int i = 0; i < 50; ++i) {
        names.push_back(std::to_string(i));
    }
    for (int i = 0; i < 3; ++i) {
        tables.push_back(openFiles(listOf(names), opener, {}, run));
    }
    std::vector<std::pair<TableReader*, Chunk>> chunks;
    for (const std::unique_ptr<TableReader>& table : tables) {
        for (Chunk chunk; table->next(chunk); chunk = {}) {
            chunks.emplace_back(table.get(), chunk);
        }
    }
    EXPECT_EQ(chunks.size(), 250U);
    for (auto& [table, chunk] : chunks) {
        table->complete(chunk);
        EXPECT_EQ(chunk.columns.at(0)->reals(), Column::Reals{1.0});
    }
    EXPECT_GT(readers.most, 32U);
    EXPECT_LE(readers.most, 64U);
    chunks.clear();
    tables.clear();
    EXPECT_EQ(readers.count, 0U);
    EXPECT_EQ(run.files->count(), 0U);
}

TEST_F(FileChainTest, saysOnWhatTheRowsOfAFileDepend) {
    for (const char* const name : {"a.csv", "b.csv", "c.csv"}) {
        write(name, "x\n1\n");
    }
    const auto circumstances = [this](const std::string& text, std::uint64_t file, const FileChainOptions& options) {
        const std::unique_ptr<TableReader> reader = open(text, options);
        return dynamic_cast<FileCircumstances&>(*reader).circumstancesOf(file);
    };
    EXPECT_EQ(circumstances("a.csv, b.csv", 0, {}), circumstances("c.csv, b.csv", 0, {}));
    EXPECT_NE(circumstances("a.csv, b.csv", 0, {.hasFileColumns = true}),
              circumstances("c.csv, b.csv", 0, {.hasFileColumns = true}))
        << "the name is a column";
    EXPECT_NE(circumstances("a.csv, b.csv", 0, {.hasFileColumns = true}),
              circumstances("b.csv, a.csv", 1, {.hasFileColumns = true}))
        << "so is the number";
    write("samples.csv", "file,weight,kind\na.csv,1.5,z\nb.csv,2.5,z\nc.csv,1.5,z\n");
    EXPECT_EQ(circumstances("@samples.csv", 0, {}), circumstances("@samples.csv", 2, {}));
    EXPECT_NE(circumstances("@samples.csv", 0, {}), circumstances("@samples.csv", 1, {}));
    EXPECT_THAT(dynamic_cast<FileCircumstances&>(*open("@samples.csv")).lists(), ElementsAre("samples.csv"));
}

/// Reads a row of two columns, in an order of its own, and leaves out columns that are not needed.
class SelectiveReader : public TableReader {
public:
    explicit SelectiveReader(bool isReversed) : columns(isReversed ? reversed() : inOrder()) {}
    const Schema& schema() const override { return columns; }
    void selectColumns(const std::vector<bool>& isNeeded) override { needed = isNeeded; }
    bool next(Chunk& chunk) override {
        chunk.rows = isRead ? 0 : 1;
        return !std::exchange(isRead, true);
    }
    void complete(Chunk& chunk) const override {
        for (std::size_t i = 0; i < 2; ++i) {
            const double value = columns[i].name == "x" ? 1.0 : 2.0;
            chunk.columns.push_back(needed.at(i) ? std::make_shared<const Column>(Column{Column::Reals{value}, {}})
                                                 : nullptr);
        }
    }

private:
    static Schema inOrder() { return Schema({{.name = "x"}, {.name = "y"}}); }
    static Schema reversed() { return Schema({{.name = "y"}, {.name = "x"}}); }

    Schema columns;
    std::vector<bool> needed;
    bool isRead = false;
};

class BoundReader : public SelectiveReader, public BoundedReader {
public:
    BoundReader(bool isReversed, std::vector<ColumnBound>& all) : SelectiveReader(isReversed), seen(all) {}
    void leaveOutBeyond(const std::vector<ColumnBound>& bounds) override {
        seen.insert(seen.end(), bounds.begin(), bounds.end());
    }

private:
    std::vector<ColumnBound>& seen;
};

TEST_F(FileChainTest, passesBoundsToEachFileByTheNamesOfItsColumns) {
    std::vector<ColumnBound> seen;
    const std::unique_ptr<TableReader> reader = openOwn(
        listOf({"a", "b"}), [&](const std::string& file) { return std::make_unique<BoundReader>(file == "b", seen); },
        {.hasFileColumns = true});
    reader->selectColumns({true, true, true, true});
    const ColumnBound ofY{.column = 1, .relation = ColumnBound::Relation::Greater, .number = 5.0};
    const ColumnBound ofFileNumber{.column = 3, .relation = ColumnBound::Relation::Less, .number = 1.0};
    dynamic_cast<BoundedReader&>(*reader).leaveOutBeyond({ofY, ofFileNumber});
    EXPECT_EQ(chunksOf(*reader).size(), 2U);
    ColumnBound inReversed = ofY;
    inReversed.column = 0;
    // Files are opened ahead, in any order, and once more to look at their columns.
    for (const ColumnBound& bound : seen) {
        EXPECT_TRUE(bound == ofY || bound == inReversed);
    }
    EXPECT_EQ(std::count(seen.begin(), seen.end(), ofY), 1);
    EXPECT_EQ(std::count(seen.begin(), seen.end(), inReversed), 1);
}

TEST_F(FileChainTest, asksEachFileForTheColumnsThatAreNeeded) {
    const std::unique_ptr<TableReader> reader = openOwn(
        listOf({"a", "b"}), [](const std::string& file) { return std::make_unique<SelectiveReader>(file == "b"); },
        {.hasFileColumns = true});
    reader->selectColumns({false, true, false, true});
    for (const Chunk& chunk : chunksOf(*reader)) {
        ASSERT_EQ(chunk.columns.size(), 4U);
        EXPECT_EQ(chunk.columns[0], nullptr);
        EXPECT_THAT(chunk.columns[1]->reals(), ElementsAre(2.0));
        EXPECT_EQ(chunk.columns[2], nullptr) << "the name of the file";
        EXPECT_EQ(chunk.columns[3]->integers().size(), 1U);
    }
}

class FileChainThreads : public FileChainTest, public testing::WithParamInterface<std::size_t> {};
INSTANTIATE_TEST_SUITE_P(Threads, FileChainThreads, testing::Values(1, 2, 5));

TEST_P(FileChainThreads, canBeStoppedWhileFilesAreOpenedAhead) {
    OpenReaders readers;
    std::vector<std::string> names;
    for (int i = 0; i < 100; ++i) {
        names.push_back(std::to_string(i));
    }
    const ThreadPool pool(GetParam());
    std::unique_ptr<TableReader> reader =
        openOwn(listOf(names), [&](const std::string&) { return std::make_unique<CountedReader>(readers); }, {});
    Chunk chunk;
    ASSERT_TRUE(reader->next(chunk));
    context.stopping = true;
    EXPECT_THROW(while (reader->next(chunk)){}, Stopped);
    chunk = {};
    reader.reset();
    EXPECT_EQ(readers.count, 0U);
}

}  // namespace
}  // namespace velmorak
