#include "aida/containers/TextInput.h"
#include "aida/text/RowBlocks.h"
#include "executor/ThreadPool.h"
#include "support.h"

#include <malloc.h>

#include <future>

namespace velmorak {
namespace {

class RowBlocks : public AidaFiles {
protected:
    /// Taken of the operating system, and in use.
    static std::size_t bytesInUse() {
        const struct mallinfo2 all = mallinfo2();
        return all.uordblks + all.hblkhd;
    }
};

TEST_F(RowBlocks, LeaveNoTextToAHelperThatComesLate) {
    constexpr std::size_t oneBlock = std::size_t{1} << 19;
    std::string rows;
    while (rows.size() < 4 * oneBlock) {
        rows += "<row><entry value=\"1\"/></row>";
    }
    const auto file = aidaWith(rows);
    io::TextInput stream(file, run);

    // The only helper of two threads is busy with something else.
    std::promise<void> came;
    std::promise<void> leave;
    ThreadPool pool(2);
    pool.submit([&came, left = leave.get_future().share()] {
        came.set_value();
        left.wait();
    });
    came.get_future().wait();

    const std::size_t before = bytesInUse();
    const auto readThreeBlocks = [&] {
        io::RowBlocks blocks(stream, {{ColumnType::Real, false}});
        for (int i = 0; i < 3; ++i) {
            ASSERT_NE(blocks.front(), nullptr);
            blocks.pop();
        }
    };
    readThreeBlocks();
    EXPECT_LT(bytesInUse(), before + oneBlock / 2);
    leave.set_value();
}

}  // namespace
}  // namespace velmorak
