#include "FilesFixture.h"

#include "files/FileList.h"
#include "files/FileProperties.h"

#include <gmock/gmock.h>
#include <cmath>

namespace velmorak {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

class FilePropertiesTest : public FilesFixture {
protected:
    std::string failureOf(const std::string& text) {
        try {
            findFiles("file", text, context);
        } catch (const Failure& failure) {
            EXPECT_EQ(failure.input(), "file");
            return failure.what();
        }
        return "no failure";
    }
};

TEST_F(FilePropertiesTest, readsPropertiesOfFiles) {
    for (const char* name : {"d/zz_1.csv", "d/zz_2.csv", "d/tt.csv"}) {
        write(name, "");
    }
    write("d/samples.csv", "sample,file,year,cross_section\nzz,zz_*.csv,2016,1.5\ntt,tt.csv,2017,80\n");
    const FileList list = findFiles("file", "@d/samples.csv", context);
    ASSERT_EQ(list.files.size(), 3U);
    EXPECT_EQ(list.files[0].name, "d/zz_1.csv");
    EXPECT_EQ(list.files[1].row, 0U);
    EXPECT_EQ(list.files[2].row, 1U);
    ASSERT_EQ(list.properties.size(), 3U);
    EXPECT_EQ(list.properties[0], (ColumnInfo{.name = "sample", .type = ColumnType::Text}));
    EXPECT_EQ(list.properties[1], (ColumnInfo{.name = "year", .type = ColumnType::Integer}));
    EXPECT_THAT(list.values[0]->texts(), ElementsAre("zz", "tt"));
    EXPECT_THAT(list.values[2]->reals(), ElementsAre(1.5, 80.0));
}

TEST_F(FilePropertiesTest, refusesPropertiesThatCannotBeUsed) {
    write("nameless.csv", "name,year\na.csv,1\n");
    write("gap.csv", "file,year\na.csv,1\n,2\n");
    EXPECT_THAT(failureOf("@nameless.csv"), HasSubstr("has no column \"file\""));
    EXPECT_EQ(failureOf("@gap.csv"), "\"gap.csv\", row 2: the file is missing");
    EXPECT_THAT(failureOf("@gap.csv, a.csv"), HasSubstr("must be the only entry"));
}

TEST_F(FilePropertiesTest, knowsTablesByTheirNames) {
    for (const char* name : {"a.csv", "A.CSV", "a.tsv", "a.csv.gz", "a.tsv.bz2", "a.Csv.Zip"}) {
        EXPECT_TRUE(isPropertyTable(name)) << name;
    }
    for (const char* name : {"a.txt", "csv", "a.csv.txt", "a.gz"}) {
        EXPECT_FALSE(isPropertyTable(name)) << name;
    }
}

TEST_F(FilePropertiesTest, readsTablesOfOtherSystems) {
    write("a.csv", "");
    write("b c.csv", "");
    write("samples.tsv", "\xEF\xBB\xBFweight\tfile\tok\r\n# comment\r\n\ta.csv\ttrue\r\nNA\tb c.csv\tfalse\r\n");
    const FileList list = findFiles("file", "@samples.tsv", context);
    ASSERT_EQ(list.files.size(), 2U);
    EXPECT_EQ(list.files[1].name, "b c.csv");
    EXPECT_EQ(list.properties[1].type, ColumnType::Boolean);
    EXPECT_TRUE(std::isnan(list.values[0]->reals()[0]));
    EXPECT_TRUE(std::isnan(list.values[0]->reals()[1]));
}

TEST_F(FilePropertiesTest, takesManyRows) {
    std::string text = "file,n\n";
    for (int i = 0; i < 70000; ++i) {
        text += std::to_string(i) + ".csv," + std::to_string(i) + "\n";
    }
    write("samples.csv", text);
    const FileList list = findFiles("file", "@samples.csv", context);
    ASSERT_EQ(list.files.size(), 70000U);
    EXPECT_EQ(list.files[69999].name, "69999.csv");
    EXPECT_EQ(list.values[0]->integers()[69999], 69999);
}

TEST_F(FilePropertiesTest, saysWhatIsWrongWithTheTable) {
    write("empty.csv", "");
    write("header.csv", "file,year\n");
    write("short.csv", "file,year\na.csv\n");
    write("missing.csv", "file,year\nrun_*.csv,1\n");
    EXPECT_THAT(failureOf("@empty.csv"), HasSubstr("empty.csv\" has no rows"));
    EXPECT_EQ(failureOf("@header.csv"), "\"header.csv\" lists no file");
    EXPECT_THAT(failureOf("@short.csv"), HasSubstr("short.csv\", line 2: there is 1 field instead of 2"));
    EXPECT_THAT(failureOf("@missing.csv"), HasSubstr("no file matches \"run_*.csv\""));
    EXPECT_THAT(failureOf("@gone.csv"), HasSubstr("gone.csv"));
}

}  // namespace
}  // namespace velmorak
