#include "CsvFixture.h"

#include "csv/CsvPieces.h"

#include <random>

namespace velmorak {
namespace {

/// Ends of the records of a text with commas, found character by character. Comments begin with '#'.
std::vector<std::string> recordsIn(const std::string& text) {
    std::vector<std::string> records;
    std::size_t at = 0;
    while (at < text.size()) {
        const std::size_t first = std::min(text.find_first_not_of(" \t", at), text.size());
        const std::size_t lineEnd = std::min(text.find('\n', first), text.size());
        if (first == text.size() || text[first] == '#' || text[first] == '\n' || text.compare(first, 2, "\r\n") == 0) {
            at = lineEnd + 1;
            continue;
        }
        enum class State { FieldBegin, Plain, Quoted, AfterQuote } state = State::FieldBegin;
        std::size_t end = at;
        for (; end < text.size(); ++end) {
            const char c = text[end];
            if (state == State::Quoted) {
                if (c == '"' && end + 1 < text.size() && text[end + 1] == '"') {
                    ++end;
                } else if (c == '"') {
                    state = State::AfterQuote;
                }
            } else if (c == '\n') {
                break;
            } else if (c == ',') {
                state = State::FieldBegin;
            } else if (state == State::FieldBegin && c == '"') {
                state = State::Quoted;
            } else if (state == State::FieldBegin && c != ' ' && c != '\t') {
                state = State::Plain;
            }
        }
        records.push_back(text.substr(at, end - at));
        at = end + 1;
    }
    return records;
}

std::string joined(const std::vector<std::string>& records) {
    std::string all;
    for (const std::string& record : records) {
        all += record + "\n";
    }
    return all;
}

class CsvPiecesTest : public CsvFixture {
protected:
    /// Cuts the file, and the pieces again into records.
    std::vector<std::string> cut(std::mt19937& random) {
        CsvPieces pieces(options.file, CsvEncoding::Automatic, options.form, context);
        std::vector<std::string> all;
        for (;;) {
            const CsvPiece piece = pieces.next(1 + random() % 5000, 1 + random() % 300'000);
            if (piece.records == 0) {
                return all;
            }
            const std::vector<std::string> records = recordsIn(std::string(piece.text));
            EXPECT_EQ(records.size(), piece.records);
            all.insert(all.end(), records.begin(), records.end());
        }
    }
};

std::string randomText(std::mt19937& random, std::size_t size) {
    const std::vector<std::string> words = {"1.5", ",", ",", "\"",   "\"\"", "\"a,b\"", "\"two\nlines\"", "\n",
                                            "\n",  "x", " ", "\r\n", "#",    "\n#\"\n", "\"q\"\"r\"",     "\t"};
    std::string text = "name,x\n";
    while (text.size() < size) {
        text += words[random() % words.size()];
    }
    return text;
}

TEST_F(CsvPiecesTest, endWhereRecordsEndWhateverIsQuoted) {
    std::mt19937 random(16);
    for (int round = 0; round < 400; ++round) {
        const std::string text = randomText(random, random() % 300);
        write(text);
        const std::vector<std::string> expected = recordsIn(text);
        ASSERT_EQ(joined(cut(random)), joined(expected)) << "round " << round << ":\n" << text;
    }
}

TEST_F(CsvPiecesTest, holdAllRecordsOfAFileThatIsReadInManyBlocks) {
    std::mt19937 random(17);
    std::string text = randomText(random, 3'000'000);
    text += "\"" + std::string(700'000, '\n') + "\",1\n" + randomText(random, 500'000);
    write(text);
    ASSERT_EQ(joined(cut(random)), joined(recordsIn(text)));
}

TEST_F(CsvPiecesTest, holdAllRecordsWhereOddLinesAreRareAmongPlainOnes) {
    std::mt19937 random(18);
    const std::vector<std::string> rare = {"# a \"comment\n", "\n",      "\r\n",  " \t\n", "\"a\nb\",2\n",
                                           " 1,2\n",          "\t3,4\n", "5\r\n", "a\"b\n"};
    std::string text = "x,y\n";
    while (text.size() < 2'000'000) {
        text += random() % 300 == 0
                    ? rare[random() % rare.size()]
                    : std::to_string(random() % 1'000'000) + "," + std::to_string(random() % 100) + "\n";
    }
    write(text);
    const std::string expected = joined(recordsIn(text));
    ASSERT_EQ(joined(cut(random)), expected);
    EXPECT_EQ(joined(cut(random)), expected);
}

TEST_F(CsvPiecesTest, knowTheLineOfEachPiece) {
    std::string text;
    for (int row = 1; row <= 100'000; ++row) {
        text += (row % 777 == 0 ? "\n" : "") + std::to_string(row) + ",abc\n";
    }
    write(text);
    CsvPieces pieces(options.file, CsvEncoding::Automatic, options.form, context);
    std::size_t rows = 0;
    for (CsvPiece piece = pieces.next(5'000, SIZE_MAX); piece.records > 0; piece = pieces.next(5'000, SIZE_MAX)) {
        ASSERT_EQ(piece.records, 5'000U);
        ASSERT_TRUE(piece.text.starts_with(std::to_string(rows + 1) + ","));
        ASSERT_EQ(piece.line, rows + 1 + (rows + 1) / 777);
        rows += piece.records;
    }
    EXPECT_EQ(rows, 100'000U);
}

TEST_F(CsvPiecesTest, keepTheirTextWhileLaterOnesAreRead) {
    std::string text;
    for (int row = 0; row < 300'000; ++row) {
        text += std::to_string(row) + ",abc\n";
    }
    write(text);
    CsvPieces pieces(options.file, CsvEncoding::Automatic, options.form, context);
    std::vector<CsvPiece> all;
    do {
        all.push_back(pieces.next(10'000, SIZE_MAX));
    } while (all.back().records > 0);
    std::string together;
    for (const CsvPiece& piece : all) {
        together += piece.text;
    }
    EXPECT_EQ(all.size(), 31U);
    EXPECT_EQ(all[3].line, 30'001U);
    EXPECT_TRUE(together == text);
}

TEST_F(CsvPiecesTest, linesThatAreNoRecordsTakeNoMemory) {
    write("x\n" + std::string(8U << 20U, '\n') + "1\n");
    CsvPieces pieces(options.file, CsvEncoding::Automatic, options.form, context);
    pieces.next(1, SIZE_MAX);
    const CsvPiece piece = pieces.next(10, SIZE_MAX);
    EXPECT_EQ(piece.records, 1U);
    EXPECT_LT(piece.text.size(), 1U << 20U);
    CsvRecords records(piece.text, options.form, piece.line);
    std::vector<CsvField> fields;
    records.next(fields);
    EXPECT_EQ(records.line(), (8U << 20U) + 2);
}

}  // namespace
}  // namespace velmorak
