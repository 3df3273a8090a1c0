#include "isolate/ChunkCodec.h"
#include "isolate/Codec.h"

#include <velmorak/Failure.h>

#include <gtest/gtest.h>

#include <limits>
#include <new>

namespace velmorak::isolation {
namespace {

/// A message that is written and read in one process.
class Messages : public testing::Test {
protected:
    MessageReader written() { return MessageReader({area.data(), writer.size()}); }

    Area area{newMemory()};
    MessageWriter writer{area};
};

ColumnPtr lists() {
    return std::make_shared<const Column>(Column{Column::Integers{1, 2, 3}, {0, 2, 2, 3}});
}

TEST_F(Messages, keepEveryBitOfAChunk) {
    Chunk chunk;
    chunk.number = 3;
    chunk.firstRow = 98304;
    chunk.rows = 3;
    chunk.rowsBefore = 7;
    chunk.file = 1;
    chunk.columns = {columnOf(std::vector<double>{0.1, -0.0, std::numeric_limits<double>::quiet_NaN()}),
                     columnOf(std::vector<std::string>{"", "two words", std::string("\0x", 2)}),
                     columnOf(std::vector<bool>{true, false, true}), nullptr, lists()};
    writer.flag(true);  // What follows is not aligned by itself.
    writeChunk(writer, chunk);
    MessageReader reader = written();
    reader.flag();
    const Chunk copy = readChunk(reader);
    EXPECT_EQ(copy.number, chunk.number);
    EXPECT_EQ(copy.firstRow, chunk.firstRow);
    EXPECT_EQ(copy.rows, chunk.rows);
    EXPECT_EQ(copy.rowsBefore, chunk.rowsBefore);
    EXPECT_EQ(copy.file, chunk.file);
    ASSERT_EQ(copy.columns.size(), chunk.columns.size());
    EXPECT_EQ(std::memcmp(copy.columns[0]->reals().data(), chunk.columns[0]->reals().data(), 3 * sizeof(double)), 0);
    EXPECT_EQ(copy.columns[1]->texts(), chunk.columns[1]->texts());
    EXPECT_EQ(copy.columns[2]->booleans(), chunk.columns[2]->booleans());
    EXPECT_EQ(copy.columns[3], nullptr);
    EXPECT_EQ(copy.columns[4]->integers(), chunk.columns[4]->integers());
    EXPECT_EQ(copy.columns[4]->offsets, chunk.columns[4]->offsets);
}

TEST_F(Messages, sendNoColumnThatTheOtherSideHas) {
    Chunk chunk;
    chunk.rows = 10000;
    chunk.columns = {columnOf(std::vector<double>(10000, 1.5)), columnOf(std::vector<double>(10000, 2.5))};
    writeChunk(writer, chunk, chunk.columns);
    EXPECT_LT(writer.size(), 200U);
    MessageReader reader = written();
    EXPECT_EQ(readChunk(reader, chunk.columns).columns, chunk.columns);
}

TEST_F(Messages, keepTheClassAndTheWordsOfAnException) {
    write(writer, std::make_exception_ptr(Failure("file", "there is none")));
    MessageReader reader = written();
    try {
        rethrow(reader);
        FAIL();
    } catch (const Failure& failure) {
        EXPECT_EQ(failure.input(), "file");
        EXPECT_STREQ(failure.what(), "there is none");
    }
}

TEST_F(Messages, tellAStopFromAFailure) {
    write(writer, std::make_exception_ptr(Stopped()));
    MessageReader reader = written();
    EXPECT_THROW(rethrow(reader), Stopped);
}

TEST_F(Messages, thatAreCutOffAreRefused) {
    writer.text("a text");
    MessageReader reader({area.data(), writer.size() - 1});
    EXPECT_THROW(reader.text(), std::runtime_error);
    MessageReader list({area.data(), 12});
    EXPECT_THROW(list.list<std::vector<double>>(), std::runtime_error);
}

TEST_F(Messages, growBeyondTheFirstMemory) {
    const std::vector<double> values(100000, 0.1);
    writer.list(values);
    MessageReader reader = written();
    EXPECT_EQ(reader.list<std::vector<double>>(), values);
}

}  // namespace
}  // namespace velmorak::isolation
