#include <velmorak/ChunkFile.h>
#include <velmorak/Failure.h>
#include <velmorak/RowMemory.h>
#include <velmorak/TemporaryFolder.h>

#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <limits>

namespace velmorak::test {
namespace {

/// Temporary files go to a folder of the test's own.
class ChunkFiles : public testing::Test {
protected:
    ChunkFiles() { setenv("TMPDIR", folder.path().c_str(), 1); }
    ~ChunkFiles() override { unsetenv("TMPDIR"); }

    TemporaryFolder folder{"chunk-file-test"};
};

ColumnPtr listsOf(Column::Texts texts, std::vector<std::uint64_t> offsets) {
    return std::make_shared<const Column>(Column{std::move(texts), std::move(offsets)});
}

TEST_F(ChunkFiles, giveBackEveryColumnToTheLastBit) {
    const double odd = -std::numeric_limits<double>::quiet_NaN();
    const std::vector<ColumnPtr> columns = {columnOf(std::vector<double>{0.1, -0.0, odd}),
                                            columnOf(std::vector<std::int64_t>{1, -9007199254740993, 0}),
                                            columnOf(std::vector<bool>{true, false, true}),
                                            columnOf(std::vector<std::string>{"", "a\0b", "\xFF long text"}),
                                            nullptr,
                                            listsOf({"x", "", "z"}, {0, 0, 3, 3})};
    ChunkFile file;
    const ChunkFile::Place first = file.append({columnOf(std::vector<double>{7})}, 1);
    const ChunkFile::Place place = file.append(columns, 3);
    const std::vector<ColumnPtr> read = file.read(place);
    ASSERT_EQ(read.size(), columns.size());
    EXPECT_EQ(place.rows, 3U);
    EXPECT_TRUE(std::signbit(read[0]->reals()[1]));
    EXPECT_TRUE(std::isnan(read[0]->reals()[2]));
    EXPECT_EQ(read[1]->integers(), columns[1]->integers());
    EXPECT_EQ(read[2]->booleans(), columns[2]->booleans());
    EXPECT_EQ(read[3]->texts(), columns[3]->texts());
    EXPECT_EQ(read[4], nullptr);
    EXPECT_EQ(read[5]->texts(), columns[5]->texts());
    EXPECT_EQ(read[5]->offsets, columns[5]->offsets);
    EXPECT_EQ(file.read(first).front()->reals(), (Column::Reals{7}));
    EXPECT_EQ(file.bytes(), first.bytes + place.bytes);
}

/// What has no name cannot be left behind by a process that is killed.
TEST_F(ChunkFiles, haveNoName) {
    ChunkFile file;
    file.append({columnOf(std::vector<double>{1, 2, 3})}, 3);
    EXPECT_TRUE(std::filesystem::is_empty(folder.path()));
}

TEST_F(ChunkFiles, thatCannotBeMadeSayWhere) {
    setenv("TMPDIR", "/proc", 1);
    try {
        const ChunkFile file;
        FAIL() << "a file in /proc";
    } catch (const Failure& failure) {
        const std::string sentence = failure.what();
        EXPECT_EQ(sentence.substr(0, 41), "cannot create a temporary file in \"/proc\"") << sentence;
        EXPECT_NE(sentence.find("set TMPDIR to a folder with more space"), std::string::npos);
    }
}

TEST_F(ChunkFiles, refuseAPlaceBeyondTheirEnd) {
    ChunkFile file;
    ChunkFile::Place place = file.append({columnOf(std::vector<double>{1, 2, 3})}, 3);
    place.offset += 8;
    EXPECT_THROW(file.read(place), Failure);
}

TEST(MemoryBudgetTest, givesNoMoreThanItHas) {
    const auto budget = std::make_shared<MemoryBudget>(100);
    EXPECT_TRUE(budget->take(60));
    EXPECT_FALSE(budget->take(41));
    EXPECT_FALSE(budget->take(std::numeric_limits<std::size_t>::max()));
    EXPECT_EQ(budget->used(), 60U);
    {
        MemoryShare share(budget);
        EXPECT_TRUE(share.take(40));
        EXPECT_FALSE(share.take(1));
        share.force(10);
        EXPECT_EQ(budget->used(), 110U);
    }
    EXPECT_EQ(budget->used(), 60U);
}

}  // namespace
}  // namespace velmorak::test
