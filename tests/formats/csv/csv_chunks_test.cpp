#include "CsvFixture.h"

#include <bit>
#include <charconv>
#include <cmath>
#include <random>

namespace velmorak {
namespace {

std::string shortest(double value) {
    std::array<char, 40> text{};
    return {text.data(), std::to_chars(text.data(), text.data() + text.size(), value).ptr};
}

/// A double with random bits.
double randomReal(std::mt19937_64& random) {
    const auto value = std::bit_cast<double>(random());
    return std::isfinite(value) ? value : 0.1;
}

/// The rows as text that shows every bit.
std::string textOf(const std::vector<Chunk>& chunks) {
    std::string text;
    for (const Chunk& chunk : chunks) {
        for (std::size_t row = 0; row < chunk.rows; ++row) {
            for (const ColumnPtr& column : chunk.columns) {
                if (column->type() == ColumnType::Real) {
                    text += shortest(column->reals()[row]) + "|";
                } else if (column->type() == ColumnType::Integer) {
                    text += std::to_string(column->integers()[row]) + "|";
                } else if (column->type() == ColumnType::Boolean) {
                    text += column->booleans()[row] == 1 ? "true|" : "false|";
                } else {
                    text += column->texts()[row] + "|";
                }
            }
            text += "\n";
        }
    }
    return text;
}

class CsvChunks : public CsvFixture {
protected:
    /// A file of real, integer, boolean and text columns, written in many ways, and what it holds.
    std::string writeRandomRows(std::size_t rows, const std::string& lineEnd) {
        std::string file = "x,n,flag,name,y" + lineEnd;
        std::string expected;
        for (std::size_t row = 0; row < rows; ++row) {
            const double x = randomReal(random);
            const auto n = static_cast<std::int64_t>(random() >> (random() % 64));
            const bool flag = random() % 2 == 0;
            const auto [name, meaning] = names[random() % names.size()];
            const bool isMissing = random() % 10 == 0;
            const std::string blank = random() % 20 == 0 ? " " : "";
            file += blank + shortest(x) + blank + "," + std::to_string(n) + "," + (flag ? "true" : "False") + "," +
                    name + "," + (isMissing ? (flag ? "NA" : "") : "+2.5e1") + lineEnd;
            expected += shortest(x) + "|" + std::to_string(n) + "|" + (flag ? "true|" : "false|") + meaning + "|" +
                        (isMissing ? "nan|" : "25|") + "\n";
            file += random() % 50 == 0 ? "# a \"comment" + lineEnd : random() % 50 == 0 ? lineEnd : "";
        }
        write(file);
        return expected;
    }

    std::mt19937_64 random{5};
    const std::vector<std::pair<std::string, std::string>> names = {{"mu", "mu"},
                                                                    {"\"a, b\"", "a, b"},
                                                                    {"\"two\nlines\"", "two\nlines"},
                                                                    {"\"say \"\"hi\"\"\"", "say \"hi\""},
                                                                    {" spaced ", "spaced"},
                                                                    {"", ""},
                                                                    {"M\xC3\xBCon", "M\u00fcon"}};
};

TEST_F(CsvChunks, haveTheValuesOfTheFileToTheLastBit) {
    for (const std::string lineEnd : {"\n", "\r\n"}) {
        const std::string expected = writeRandomRows(70'000, lineEnd);
        options.types = {{"n", ColumnType::Integer}};
        const std::vector<Chunk> chunks = read();
        ASSERT_EQ(chunks.size(), 3U);
        EXPECT_EQ(chunks[0].rows, chunkRows);
        ASSERT_TRUE(textOf(chunks) == expected);
        CsvOptions inOrder = options;
        inOrder.readsInOrder = true;
        ASSERT_TRUE(textOf(read(inOrder)) == expected);
    }
}

TEST_F(CsvChunks, areTheSameWhetherRowsAreReadInOrderOrNot) {
    std::string text = "a,b\n";
    for (int row = 0; row < 40'000; ++row) {
        text += std::to_string(row) + "," + std::string(row % 4 == 0 ? 10'000 : 3, 'x') + "\n";
    }
    write(text);
    const std::vector<Chunk> parallel = read();
    options.readsInOrder = true;
    const std::vector<Chunk> inOrder = read();
    ASSERT_EQ(parallel.size(), inOrder.size());
    for (std::size_t i = 0; i < parallel.size(); ++i) {
        EXPECT_EQ(parallel[i].rows, inOrder[i].rows);
    }
    EXPECT_LT(parallel[0].rows, chunkRows) << "the texts are too long for a full chunk";
    EXPECT_TRUE(textOf(parallel) == textOf(inOrder));
}

TEST_F(CsvChunks, columnsThatAreNotNeededAreLeftOut) {
    write("x,name,y\n1,\"a,b\",2\n3,c,4\n");
    CsvReader reader(options, context);
    reader.selectColumns({true, false, false});
    Chunk chunk;
    ASSERT_TRUE(reader.next(chunk));
    reader.complete(chunk);
    EXPECT_EQ(chunk.columns[0]->integers(), (Column::Integers{1, 3}));
    EXPECT_EQ(chunk.columns[1], nullptr);
    EXPECT_EQ(chunk.columns[2], nullptr);
}

TEST_F(CsvChunks, aBadRowIsFoundInAnyColumnThatIsSplit) {
    write("x,y\n1,2\n3\n");
    EXPECT_EQ(failure(), "data.csv\", line 3: there is 1 field instead of 2");
    write("x,y\n1,2\n3,4,5\n");
    EXPECT_EQ(failure(), "data.csv\", line 3: there are 3 fields instead of 2");
    write("x,y\n1,2\n# a comment\n\n3,4\n5\n");
    EXPECT_EQ(failure(), "data.csv\", line 6: there is 1 field instead of 2");
}

}  // namespace
}  // namespace velmorak
