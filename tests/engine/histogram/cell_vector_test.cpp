#include <velmorak/CellSums.h>
#include <velmorak/CellVector.h>

#include <gtest/gtest.h>

#include <map>
#include <random>

namespace velmorak {
namespace {

using Cells = CellVector<CellSums<2>>;

constexpr std::size_t sparseSize = Cells::maxDenseBytes / sizeof(CellSums<2>) + 1;

/// Writes cells at random and compares with a map.
void expectToHoldWhatIsWritten(std::size_t size, std::size_t writes) {
    std::mt19937_64 random(size);
    Cells cells(size);
    std::map<std::size_t, double> written;
    for (std::size_t i = 0; i < writes; ++i) {
        const std::size_t cell = random() % size;
        cells[cell].w += static_cast<double>(i);
        written[cell] += static_cast<double>(i);
    }
    const Cells copy = cells;
    ASSERT_EQ(copy.size(), size);
    std::size_t cell = 0;
    for (const CellSums<2>& sums : copy) {
        const auto found = written.find(cell++);
        ASSERT_EQ(sums.w, found == written.end() ? 0.0 : found->second) << cell - 1;
    }
    EXPECT_EQ(copy, cells);
    cells[size - 1].entries = -1;
    EXPECT_NE(copy, cells);
    EXPECT_EQ(cells.back().entries, -1);
}

TEST(CellVector, holdsWhatIsWrittenToDenseCells) {
    EXPECT_FALSE(Cells(100).isSparse());
    expectToHoldWhatIsWritten(100, 1000);
    expectToHoldWhatIsWritten(sparseSize - 1, 1000);
}

TEST(CellVector, holdsWhatIsWrittenToSparseCells) {
    EXPECT_TRUE(Cells(sparseSize).isSparse());
    expectToHoldWhatIsWritten(sparseSize, 1000);
    // More cells than a block has.
    expectToHoldWhatIsWritten(sparseSize, 600'000);
}

TEST(CellVector, givesSparseCellsOneAfterTheOtherToReadersOnly) {
    Cells cells(sparseSize);
    EXPECT_EQ(cells.denseData(), nullptr);
    EXPECT_EQ(&std::as_const(cells)[0], &std::as_const(cells)[sparseSize - 1]) << "reading stores a cell";
    cells[7].w = 1.0;
    EXPECT_NE(&std::as_const(cells)[7], &std::as_const(cells)[6]);
}

TEST(CellVector, changesFilledCellsInTheirOrder) {
    for (const std::size_t size : {std::size_t{100}, sparseSize}) {
        Cells cells(size);
        for (const std::size_t cell : {70U, 3U, 99U}) {
            cells[cell].w = static_cast<double>(cell);
        }
        std::vector<double> order;
        cells.changeFilled([&](CellSums<2>& sums) {
            order.push_back(sums.w);
            sums.w = -sums.w;
        });
        EXPECT_EQ(order, (std::vector<double>{3, 70, 99}));
        EXPECT_EQ(cells[70].w, -70.0);
    }
}

TEST(CellVector, canBeMoved) {
    Cells cells(sparseSize);
    cells[5].w = 5.0;
    Cells moved = std::move(cells);
    EXPECT_EQ(std::as_const(moved)[5].w, 5.0);
    cells = Cells(3);
    EXPECT_EQ(cells.size(), 3U);
    EXPECT_TRUE(Cells().empty());
}

}  // namespace
}  // namespace velmorak
