#include "RunFixture.h"

namespace velmorak::test {
namespace {

/// rows (reads data.txt) -> total -> "report", which asks what it is made from.
class RunRecords : public RunTest {
protected:
    RunRecords() {
        write("data.txt", "abc");
        add(rows, "rows", {{"rows", "70000"}, {"file", "data.txt"}});
        add(sum, "total", {{"scale", "3"}});
        add(reporting, "report");
        add(rows, "apart");
        wire("rows", "table", "total", "table");
        wire("total", "sum", "report", "value");
        start("report");
        run();
    }

    RowSource rows;
    SumKind sum;
    RunRecord asked;
    FreeFunction reporting{"Report",
                           {{numberInput("value")}, {}},
                           [this](const Arguments&, Results&, RunContext& context) { asked = context.record(); }};
};

TEST_F(RunRecords, namesThePlugInAndAllUpstreamWithKindsVersionsAndValues) {
    ASSERT_EQ(asked.plugins.size(), 3U);
    EXPECT_EQ(asked.plugins[0].name, "rows");
    EXPECT_EQ(asked.plugins[0].kind, "Rows");
    EXPECT_EQ(asked.plugins[0].version, 1);
    EXPECT_EQ(asked.plugins[1].inputs.at(0).plugin, "rows");
    EXPECT_EQ(asked.plugins[1].inputs.at(0).output, "table");
    EXPECT_EQ(asked.plugins[1].inputs.at(1).name, "scale");
    EXPECT_EQ(asked.plugins[1].inputs.at(1).value, "3");
    EXPECT_EQ(asked.plugins[2].name, "report");
    EXPECT_FALSE(asked.program.empty());
}

TEST_F(RunRecords, namesTheFilesWithTheirSums) {
    ASSERT_EQ(asked.files.size(), 1U);
    EXPECT_EQ(asked.files[0].sha256, "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad");
}

TEST_F(RunRecords, isTheSameWhenAllUpstreamIsReused) {
    const RunRecord before = asked;
    set("report", "value", "1");
    reporting.kindVersion = 2;
    run();
    ASSERT_EQ(status("total"), NodeStatus::Reused);
    ASSERT_EQ(asked.files.size(), 1U);
    EXPECT_EQ(asked.files[0].name, before.files[0].name);
    EXPECT_EQ(asked.plugins.size(), 3U);
    EXPECT_EQ(asked.plugins[2].version, 2);
}

}  // namespace
}  // namespace velmorak::test
