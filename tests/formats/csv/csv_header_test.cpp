#include "CsvFixture.h"

#include <zlib.h>

namespace velmorak {
namespace {

class CsvHeader : public CsvFixture {
protected:
    /// A reader that is asked for columns only finds the same as one that reads the rows.
    void expectSameColumns(const std::string& text) {
        write(text);
        const CsvReader whole(options, context);
        CsvOptions columnsOnly = options;
        columnsOnly.readsColumnsOnly = true;
        const CsvReader reader(columnsOnly, context);
        ASSERT_EQ(reader.schema().size(), whole.schema().size());
        for (std::size_t i = 0; i < whole.schema().size(); ++i) {
            EXPECT_EQ(reader.schema()[i].name, whole.schema()[i].name);
            EXPECT_EQ(reader.schema()[i].type, whole.schema()[i].type);
            EXPECT_EQ(reader.schema()[i].unit, whole.schema()[i].unit);
        }
        EXPECT_EQ(reader.columnsWithoutValues(), whole.columnsWithoutValues());
    }

    void pack() const {
        std::ostringstream text;
        text << std::ifstream(options.file, std::ios::binary).rdbuf();
        const gzFile packed = gzopen(options.file.c_str(), "wb");
        gzwrite(packed, text.str().data(), static_cast<unsigned>(text.str().size()));
        gzclose(packed);
    }

    static std::uint64_t rowsOf(const std::vector<Chunk>& chunks) {
        std::uint64_t rows = 0;
        for (const Chunk& chunk : chunks) {
            rows += chunk.rows;
        }
        return rows;
    }
};

std::string wideHeader(const std::string& lineEnd) {
    std::string text;
    std::string row;
    for (int i = 0; i < 5000; ++i) {
        text += (i == 0 ? "" : ",") + ("column_" + std::to_string(i));
        row += i == 0 ? "1" : ",1";
    }
    return text + lineEnd + row + lineEnd + row + lineEnd;
}

}  // namespace

TEST_F(CsvHeader, mayBeLongerThanTheFirstBytesThatAreRead) {
    for (const std::string lineEnd : {"\n", "\r\n", "\r"}) {
        write(wideHeader(lineEnd));
        EXPECT_EQ(rowsOf(read()), 2U);
        EXPECT_EQ(columns.size(), 5000U);
        EXPECT_EQ(typeOf("column_4999"), "integer");
    }
}

TEST_F(CsvHeader, mayFollowLongComments) {
    std::string comments;
    while (comments.size() < 100'000) {
        comments += "# no column here\n";
    }
    write(comments + "a,b\n" + comments + "1,2.5\n3,4.5\n");
    EXPECT_EQ(rowsOf(read()), 2U);
    EXPECT_EQ(typeOf("b"), "real");
}

TEST_F(CsvHeader, showsTheSameColumnsToThoseWhoWantNoRows) {
    expectSameColumns("a,b,c\n1,2.5,x\n3,,y\n");
    expectSameColumns("# comment\n\na,b\n");
    std::string late = "n,empty\n";
    for (int i = 0; i < 20'000; ++i) {
        late += std::to_string(i) + ",\n";
    }
    expectSameColumns(late + "0.5,\n");
    options.hasUnits = true;
    expectSameColumns("a,b\n[mm],(GeV)\n1,2\n");
    options.hasUnits = false;
    options.hasHeader = false;
    expectSameColumns("1,2.5\n3,4.5\n");
}

TEST_F(CsvHeader, isPassedOnceInPackedFilesWhoseTypesAreGiven) {
    options.types = {{"a", ColumnType::Integer}, {"b", ColumnType::Real}};
    for (const bool isPacked : {false, true}) {
        write("# comment\na,b\n1,2\n3,4\n5,6\n");
        if (isPacked) {
            pack();
        }
        const std::vector<Chunk> chunks = read();
        ASSERT_EQ(rowsOf(chunks), 3U);
        EXPECT_EQ(chunks.front().columns[0]->integers().front(), 1);
        EXPECT_EQ(chunks.front().columns[1]->reals().back(), 6.0);
    }
}

TEST_F(CsvHeader, isReadWhereThePackedFileEndsRightAfterTheFirstBytes) {
    std::string text = "# comment\na\n";
    while (text.size() < (1U << 14U)) {
        text += "1\n";
    }
    write(text);
    const gzFile packed = gzopen(options.file.c_str(), "wb");
    gzwrite(packed, text.data(), static_cast<unsigned>(text.size()));
    gzflush(packed, Z_FULL_FLUSH);
    const std::uintmax_t whole = std::filesystem::file_size(options.file);
    gzclose(packed);
    std::filesystem::resize_file(options.file, whole);
    options.readsInOrder = true;
    CsvReader reader(options, context);
    Chunk chunk;
    ASSERT_TRUE(reader.next(chunk));
    EXPECT_EQ(chunk.rows, (text.size() - 12) / 2);
    EXPECT_THROW(reader.next(chunk), Failure);
}

TEST_F(CsvHeader, thatIsMissingOrWrongIsNamedWithItsLine) {
    options.types = {{"a", ColumnType::Integer}};
    write("# comment\n\n");
    EXPECT_EQ(failure(), "data.csv\" has no rows");
    write("# comment\na,a\n1,2\n");
    EXPECT_EQ(failure(), "data.csv\", line 2: there are two columns \"a\"");
    options.hasUnits = true;
    write("a\n");
    EXPECT_EQ(failure(), "data.csv\" has no row of units");
    write("a\nmm,cm\n1\n");
    EXPECT_EQ(failure(), "data.csv\", line 2: there are 2 units for 1 columns");
}

}  // namespace velmorak
