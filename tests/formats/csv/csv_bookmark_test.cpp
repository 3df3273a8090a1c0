#include "CsvFixture.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <memory>
#include <optional>
#include <random>

namespace velmorak {
namespace {

/// The values of a chunk as text; of long texts, their beginnings and lengths.
std::string textOf(const Chunk& chunk) {
    std::string text = std::to_string(chunk.rows) + " rows:";
    for (const ColumnPtr& column : chunk.columns) {
        for (std::size_t row = 0; column && row < chunk.rows; ++row) {
            if (column->type() == ColumnType::Text) {
                const std::string& value = column->texts()[row];
                text += value.substr(0, 40) + "|" + std::to_string(value.size()) + "|";
            } else if (column->type() == ColumnType::Integer) {
                text += std::to_string(column->integers()[row]) + "|";
            } else {
                text += std::to_string(column->reals()[row]) + "|";
            }
        }
    }
    return text;
}

class CsvBookmark : public CsvFixture {
protected:
    struct Read {
        std::vector<std::string> chunks;
        std::vector<ChunkStart> starts;  ///< Of those chunks whose place is known.
    };

    /// All chunks of the reader, which may begin in the middle.
    static Read readAll(CsvReader& reader) {
        Read read;
        std::uint64_t rows = 0;
        for (Chunk chunk;; chunk = {}) {
            const std::optional<std::string> bookmark = reader.bookmark();
            if (!reader.next(chunk)) {
                return read;
            }
            if (bookmark) {
                read.starts.push_back({read.chunks.size(), rows, *bookmark});
            }
            rows += chunk.rows;
            reader.complete(chunk);
            read.chunks.push_back(textOf(chunk));
        }
    }

    /// As the processes of a run in parts open the file: with the types that all of it has.
    std::unique_ptr<CsvReader> openAgain() {
        CsvOptions again = options;
        for (const ColumnInfo& column : columns.columns()) {
            again.types[column.name] = column.type;
        }
        return std::make_unique<CsvReader>(again, context);
    }

    Read readWhole() {
        CsvReader reader(options, context);
        columns = reader.schema();
        return readAll(reader);
    }

    /// Begins at each chunk, and compares what follows.
    void checkEachPlace(std::size_t leastChunks) {
        const Read whole = readWhole();
        ASSERT_GE(whole.chunks.size(), leastChunks);
        ASSERT_EQ(whole.starts.size(), whole.chunks.size());
        for (const ChunkStart& start : whole.starts) {
            const std::unique_ptr<CsvReader> reader = openAgain();
            reader->seek(0, start);
            const auto first = whole.chunks.begin() + static_cast<std::ptrdiff_t>(start.chunk);
            EXPECT_TRUE(readAll(*reader).chunks == std::vector(first, whole.chunks.end())) << start.bookmark;
        }
    }

    std::string refusalOf(const std::string& bookmark) {
        try {
            openAgain()->seek(0, {.chunk = 1, .row = 1, .bookmark = bookmark});
        } catch (const Failure& failure) {
            return failure.what();
        }
        return "none";
    }

    std::mt19937 random{8};
};

std::string rowsOf(std::mt19937& random, std::size_t rows, const std::string& lineEnd) {
    std::string text = "x,n,name" + lineEnd;
    for (std::size_t row = 0; row < rows; ++row) {
        const bool isOdd = random() % 7 == 0;
        text += std::to_string(random() % 1000) + (row == rows - 1 ? ".5," : ",") + std::to_string(row) +
                (isOdd ? ",\"two" + lineEnd + "lines, \"\"quoted\"\"\"" : ",plain") + lineEnd;
        text += random() % 50 == 0 ? "# a \"comment" + lineEnd : random() % 50 == 0 ? lineEnd : "";
    }
    return text;
}

TEST_F(CsvBookmark, leadsToTheRowsThatFollow) {
    for (const std::string lineEnd : {"\n", "\r\n"}) {
        write(rowsOf(random, 120'000, lineEnd));
        checkEachPlace(4);
        EXPECT_EQ(typeOf("x"), "real") << "the last value decides";
    }
    write("\xEF\xBB\xBF" + rowsOf(random, 40'000, "\n"));
    checkEachPlace(2);
    std::string ofMac = "x\r";
    for (int row = 0; row < 40'000; ++row) {
        ofMac += std::to_string(row) + "\r";
    }
    write(ofMac);
    checkEachPlace(2);
}

TEST_F(CsvBookmark, needsNothingOfTheRowsBefore) {
    std::string text = rowsOf(random, 100'000, "\n");
    write(text);
    const Read whole = readWhole();
    const ChunkStart& start = whole.starts.at(2);
    const std::size_t header = text.find('\n') + 1;
    const std::size_t byte = std::stoul(start.bookmark);
    std::fill(text.begin() + static_cast<std::ptrdiff_t>(header), text.begin() + static_cast<std::ptrdiff_t>(byte) - 1,
              '"');
    write(text);
    const std::unique_ptr<CsvReader> reader = openAgain();
    reader->seek(0, start);
    EXPECT_TRUE(readAll(*reader).chunks == std::vector(whole.chunks.begin() + 2, whole.chunks.end()));
}

TEST_F(CsvBookmark, countsLinesFromTheBeginningOfTheFile) {
    std::string text = "x\n";
    for (int row = 0; row < 70'000; ++row) {
        text += "1\n";
    }
    write(text + "wrong\n");
    options.types = {{"x", ColumnType::Integer}};
    columns = CsvReader(options, context).schema();
    const std::unique_ptr<CsvReader> reader = openAgain();
    Chunk chunk;
    reader->next(chunk);
    const std::optional<std::string> bookmark = reader->bookmark();
    ASSERT_TRUE(bookmark);
    const std::unique_ptr<CsvReader> later = openAgain();
    later->seek(0, {.chunk = 1, .row = chunk.rows, .bookmark = *bookmark});
    try {
        readAll(*later);
        FAIL();
    } catch (const Failure& failure) {
        EXPECT_THAT(failure.what(), testing::HasSubstr("line 70002"));
    }
}

TEST_F(CsvBookmark, holdsWhereBadRowsAreSkipped) {
    std::string text = "x,y\n";
    for (int row = 0; row < 90'000; ++row) {
        text += std::to_string(row) + (random() % 10 == 0 ? ",bad\n" : random() % 10 == 0 ? "\n" : ",1.5\n");
    }
    write(text);
    options.types = {{"x", ColumnType::Integer}, {"y", ColumnType::Real}};
    options.isSkipping = true;
    checkEachPlace(3);
}

TEST_F(CsvBookmark, skipsTheSameRowsWhicheverColumnsAreNeeded) {
    write("x,y\n1,2\n2,bad\n3,4\n");
    options.types = {{"x", ColumnType::Integer}, {"y", ColumnType::Real}};
    options.isSkipping = true;
    CsvReader reader(options, context);
    reader.selectColumns({true, false});
    Chunk chunk;
    reader.next(chunk);
    EXPECT_EQ(chunk.rows, 2U);
}

/// 100 rows of 1 MiB, of which a chunk has at most 64.
TEST_F(CsvBookmark, holdsWhereLongTextsEndAChunkEarly) {
    std::string text = "x,t\n";
    for (int row = 0; row < 100; ++row) {
        text +=
            std::to_string(row) + "," + std::string(std::size_t{1} << 20U, static_cast<char>('a' + row % 26)) + "\n";
    }
    write(text);
    text = {};
    checkEachPlace(2);
    std::vector<std::size_t> rows;
    for (const bool isNeeded : {true, false}) {
        CsvReader reader(options, context);
        reader.selectColumns({true, isNeeded});
        for (Chunk chunk; reader.next(chunk); chunk = {}) {
            rows.push_back(chunk.rows);
        }
    }
    ASSERT_EQ(rows.size() % 2, 0U);
    const auto middle = rows.begin() + static_cast<std::ptrdiff_t>(rows.size() / 2);
    EXPECT_EQ(std::vector(rows.begin(), middle), std::vector(middle, rows.end()))
        << "chunks end at the same rows whichever columns are needed";
}

TEST_F(CsvBookmark, isMissingWhereTextIsConverted) {
    write("x\n1\n2\n");
    EXPECT_TRUE(CsvReader(options, context).bookmark());
    options.encoding = CsvEncoding::Latin1;
    EXPECT_FALSE(CsvReader(options, context).bookmark());
    options.encoding = CsvEncoding::Automatic;
    write(
        std::string("\xFF\xFEx\0\n\0"
                    "1\0\n\0",
                    10));
    EXPECT_FALSE(CsvReader(options, context).bookmark());
}

TEST_F(CsvBookmark, ofAnotherFileIsRefused) {
    write("x\n1\n2\n3\n");
    readWhole();
    EXPECT_EQ(refusalOf("4:3"), "none");
    for (const char* const text :
         {"", "x", "4", "4:", ":3", "4:3 ", "4:3 later", "-4:3", "4 3", "99999999999999999999:3"}) {
        EXPECT_THAT(refusalOf(text), testing::HasSubstr("has no place")) << text;
    }
    EXPECT_THAT(refusalOf("5:3"), testing::HasSubstr("has changed: line 3 begins elsewhere"));
    EXPECT_THAT(refusalOf("9000:3"), testing::HasSubstr("cannot be read from byte"));
}

}  // namespace
}  // namespace velmorak
