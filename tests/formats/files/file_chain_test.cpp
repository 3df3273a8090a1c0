#include "FilesFixture.h"

#include "csv/CsvReader.h"
#include "files/FileChain.h"

#include <gmock/gmock.h>

namespace velmorak {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::Pair;

class FileChainTest : public FilesFixture {
protected:
    std::unique_ptr<TableReader> open(const std::string& text, const FileChainOptions& options = {}) {
        return openFiles(
            findFiles("file", text, context),
            [this](const std::filesystem::path& file, const Schema* wanted) -> std::unique_ptr<TableReader> {
                CsvOptions csv{.file = file, .form = {}, .missing = "NA", .types = {}};
                for (std::size_t i = 0; wanted && i < wanted->size(); ++i) {
                    csv.types[(*wanted)[i].name] = (*wanted)[i].type;
                }
                return std::make_unique<CsvReader>(std::move(csv), context);
            },
            options, context);
    }

    /// All chunks, completed as a run does it.
    static std::vector<Chunk> chunksOf(TableReader& reader) {
        std::vector<Chunk> all;
        for (Chunk chunk; reader.next(chunk); chunk = {}) {
            all.push_back(chunk);
        }
        for (Chunk& chunk : all) {
            reader.complete(chunk);
        }
        return all;
    }

    std::string failureOf(const std::string& text, const FileChainOptions& options = {}) {
        try {
            const std::unique_ptr<TableReader> reader = open(text, options);
            chunksOf(*reader);
        } catch (const Failure& failure) {
            return failure.what();
        }
        return "no failure";
    }
};

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
    EXPECT_THAT(failureOf("c.csv", {.hasFileColumns = true}), HasSubstr("have a column \"file\" already"));
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
    EXPECT_THAT(failureOf("*.csv"), HasSubstr("\"b.csv\" has a column \"z\", which \"a.csv\" has not"));
    const std::unique_ptr<TableReader> reader = open("*.csv", {.takesCommonColumns = true});
    EXPECT_EQ(reader->schema().size(), 1U);
    EXPECT_EQ(chunksOf(*reader).size(), 2U);
    EXPECT_THAT(context.warnings,
                ElementsAre(HasSubstr("leaves out columns that differ between the files: \"z\", \"y\"")));
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
    EXPECT_THAT(failureOf("b.csv, missing.csv", {.skipsDamaged = true}), "none of the 2 files can be read");
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
    FileList list;
    for (const char* name : {"whole", "damaged", "last"}) {
        list.files.push_back({name, name});
    }
    const auto openFile = [](const std::filesystem::path& file, const Schema*) {
        return std::make_unique<DamagedReader>(2, file == "damaged");
    };
    const std::unique_ptr<TableReader> reader = openFiles(list, openFile, {.skipsDamaged = true}, context);
    std::vector<std::uint64_t> files;
    for (const Chunk& chunk : chunksOf(*reader)) {
        files.push_back(chunk.file);
    }
    EXPECT_THAT(files, ElementsAre(0, 0, 1, 1, 2, 2));
    EXPECT_THAT(context.skipped, ElementsAre(Pair("damaged", "the file ends early")));
    const std::unique_ptr<TableReader> strict = openFiles(list, openFile, {}, context);
    EXPECT_THROW(chunksOf(*strict), Failure);
}

/// Reads a row and counts how many of its kind exist.
class CountedReader : public TableReader {
public:
    explicit CountedReader(std::size_t& open) : open(open) { most = std::max(most, ++open); }
    ~CountedReader() override { --open; }
    const Schema& schema() const override { return columns; }
    bool next(Chunk& chunk) override {
        chunk.rows = isRead ? 0 : 1;
        return !std::exchange(isRead, true);
    }
    void complete(Chunk& chunk) const override {
        chunk.columns = {std::make_shared<const Column>(Column{Column::Reals{1.0}, {}})};
    }

    static inline std::size_t most = 0;

private:
    std::size_t& open;
    Schema columns{{ColumnInfo{.name = "x"}}};
    bool isRead = false;
};

TEST_F(FileChainTest, keepsAtMost64FilesOpenThoughNoChunkIsCompleted) {
    FileList list;
    for (int i = 0; i < 1000; ++i) {
        list.files.push_back({std::to_string(i), std::to_string(i)});
    }
    std::size_t open = 0;
    CountedReader::most = 0;
    const std::unique_ptr<TableReader> reader = openFiles(
        list, [&open](const std::filesystem::path&, const Schema*) { return std::make_unique<CountedReader>(open); },
        {}, context);
    EXPECT_EQ(chunksOf(*reader).size(), 1000U);
    EXPECT_GT(CountedReader::most, 32U);
    EXPECT_LE(CountedReader::most, 64U);
}

}  // namespace
}  // namespace velmorak
