#include "RunFixture.h"

#include <velmorak/Points.h>

#include <cmath>

namespace velmorak::test {
namespace {

/// rows (reads data.txt) -> total -> middle -> write (leaves note.txt), run by one program after the other.
class CacheOfFormerProgram : public RunTest {
protected:
    CacheOfFormerProgram() {
        write("data.txt", "one");
        add(rows, "rows", {{"rows", "70000"}, {"file", "data.txt"}});
        add(sum, "total");
        add(pass, "middle");
        add(writing, "write");
        wire("rows", "table", "total", "table");
        wire("total", "sum", "middle", "value");
        wire("middle", "number", "write", "value");
        start("rows");
        runAnew();
    }

    /// As a program does that has just been started.
    void runAnew() {
        Runner fresh(messages, false, {{folder / "cache", 1 << 20}});
        fresh.explain(true);
        messages.str("");
        report = fresh.run(pipeline);
    }
    int executed() const {
        return static_cast<int>(std::count_if(report.nodes.begin(), report.nodes.end(),
                                              [](const NodeReport& node) { return node.status == NodeStatus::Done; }));
    }

    RowSource rows;
    SumKind sum;
    PassKind pass;
    FreeFunction writing{"Write",
                         {{numberInput("value")}, {output("number", ValueType::Number)}},
                         [](const Arguments& arguments, Results& results, RunContext& context) {
                             context.writeResult("note.txt", [&](const std::filesystem::path& path) {
                                 std::ofstream(path) << textOf(arguments.number("value"));
                             });
                             results.set("number", arguments.number("value"));
                         }};
};

TEST_F(CacheOfFormerProgram, ofAnUnchangedPipelineExecutesNothing) {
    EXPECT_EQ(executed(), 4);
    const double before = number("write");
    runAnew();
    EXPECT_EQ(executed(), 0) << messages.str();
    EXPECT_EQ(rows.opened, 1);
    EXPECT_EQ(number("write"), before);
    EXPECT_TRUE(wasSaid("Write \"write\": reused, nothing changed")) << messages.str();
}

TEST_F(CacheOfFormerProgram, isToldOfAResultThatIsTooLargeToKeep) {
    const FreeFunction large(
        "Large", {{}, {output("text", ValueType::Text)}},
        [](const Arguments&, Results& results, RunContext&) { results.set("text", std::string(2 << 20, 'x')); });
    add(large, "large");
    start("large");
    runAnew();
    EXPECT_EQ(status("large"), NodeStatus::Done);
    EXPECT_TRUE(wasSaid("Large \"large\": result not cached: 2.0 MiB exceed the limit of 1.0 MiB")) << messages.str();
    runAnew();
    EXPECT_EQ(large.evaluated, 2);
}

TEST_F(CacheOfFormerProgram, executesWhatChangedAndWhatLiesDownstream) {
    set("middle", "value", "1");
    inputOf("middle", "value").wire.reset();
    runAnew();
    EXPECT_EQ(status("middle"), NodeStatus::NotRequested) << "it hangs on the start no more";
    start("middle");
    runAnew();
    EXPECT_EQ(executed(), 2);
    EXPECT_EQ(rows.opened, 1);
    EXPECT_TRUE(wasSaid("Pass \"middle\": executed, value changed from \"total\" sum to 1")) << messages.str();
    EXPECT_TRUE(wasSaid("Write \"write\": executed, \"middle\" changed")) << messages.str();
}

TEST_F(CacheOfFormerProgram, namesTheValueThatChangedAndWhatHangsOnIt) {
    set("total", "scale", "25");
    runAnew();
    EXPECT_TRUE(wasSaid("Sum \"total\": executed, scale changed from 1 to 25")) << messages.str();
    EXPECT_TRUE(wasSaid("Rows \"rows\": executed, its rows are needed by \"total\"")) << messages.str();
}

TEST_F(CacheOfFormerProgram, executesNothingForATouchedFile) {
    write("data.txt", "one");
    runAnew();
    EXPECT_EQ(executed(), 0) << messages.str();
}

TEST_F(CacheOfFormerProgram, namesTheFileThatChanged) {
    write("data.txt", "two");
    runAnew();
    EXPECT_TRUE(wasSaid("Rows \"rows\": executed, file data.txt changed")) << messages.str();
}

TEST_F(CacheOfFormerProgram, writesAFileAgainThatIsGone) {
    const std::filesystem::path note = pipeline.resultsFolder / "note.txt";
    const std::string before = content(note);
    std::filesystem::remove(note);
    runAnew();
    EXPECT_EQ(executed(), 1) << messages.str();
    EXPECT_EQ(content(note), before);
    EXPECT_TRUE(wasSaid("Write \"write\": executed, file note.txt is gone")) << messages.str();
}

TEST_F(CacheOfFormerProgram, executesAllAgainWhereTheStoreIsDamaged) {
    for (const auto& entry : std::filesystem::recursive_directory_iterator(folder / "cache")) {
        if (entry.is_regular_file() && entry.file_size() > 0) {
            std::filesystem::resize_file(entry.path(), entry.file_size() / 2);
        }
    }
    runAnew();
    EXPECT_EQ(executed(), 4) << messages.str();
    runAnew();
    EXPECT_EQ(executed(), 0) << messages.str();
}

TEST_F(CacheOfFormerProgram, findsNothingAfterAReset) {
    Runner(messages, false, {{folder / "cache", 1 << 20}}).reset();
    runAnew();
    EXPECT_EQ(executed(), 4) << messages.str();
}

TEST_F(CacheOfFormerProgram, runsWithoutAStoreThatCannotBeWritten) {
    std::filesystem::remove_all(folder / "cache");
    write("cache", "a file");
    runAnew();
    EXPECT_EQ(executed(), 4) << messages.str();
    const std::string said = messages.str();
    const std::size_t first = said.find("cannot write to");
    EXPECT_NE(first, std::string::npos);
    EXPECT_EQ(said.find("cannot write to", first + 1), std::string::npos) << said;
}

TEST_F(CacheOfFormerProgram, executesAKindOfAnotherVersion) {
    writing.kindVersion = 2;
    runAnew();
    EXPECT_EQ(executed(), 1) << messages.str();
    EXPECT_TRUE(wasSaid("Write \"write\": executed, version 2 of Write was 1 of Write")) << messages.str();
}

TEST_F(CacheOfFormerProgram, knowsThatTheOneBeforeWasInterrupted) {
    set("middle", "value", "0");
    FreeFunction dying("Die", {{numberInput("value")}, {}}, [this](const Arguments&, Results&, RunContext&) {
        // What lies on disk at this moment is all that is left of a program that is killed now.
        std::filesystem::copy(folder / "cache", folder / "left", std::filesystem::copy_options::recursive);
    });
    add(dying, "die");
    wire("write", "number", "die", "value");
    set("total", "scale", "7");
    runAnew();
    std::filesystem::remove_all(folder / "cache");
    std::filesystem::rename(folder / "left", folder / "cache");
    runAnew();
    EXPECT_EQ(executed(), 1) << messages.str();
    EXPECT_TRUE(wasSaid("Write \"write\": reused, nothing changed")) << messages.str();
    EXPECT_TRUE(wasSaid("Die \"die\": executed, it was not finished in the run before")) << messages.str();
}

TEST_F(CacheOfFormerProgram, keepsTextsAndObjectsToTheLastBit) {
    FreeFunction making("Make", {{}, {output("object", ValueType::Points), output("text", ValueType::Text)}},
                        [](const Arguments&, Results& results, RunContext&) {
                            auto points = std::make_shared<Points>(2, std::vector<Measurement>(2));
                            points->name = "curve";
                            results.set("object", points);
                            results.set("text", std::string("a\0b", 3));
                        });
    SeeKind see;
    add(making, "make");
    add(see, "see");
    wire("make", "object", "see", "object");
    start("make");
    runAnew();
    runAnew();
    EXPECT_EQ(executed(), 0) << messages.str();
    EXPECT_EQ(text("make", 1), std::string("a\0b", 3));
    EXPECT_EQ(std::get<DataObjectPtr>(of("make").outputs[0])->name, "curve");
}

TEST_F(CacheOfFormerProgram, keepsNumbersWithErrorsAndTheirCorrelation) {
    FreeFunction fitting("Fit", {{}, {output("a", ValueType::Number), output("b", ValueType::Number)}},
                         [](const Arguments&, Results& results, RunContext& context) {
                             const auto numbers = numbersWithErrors(
                                 {10.0, 20.0},
                                 {.origin = context.pluginName(), .names = {"a", "b"}, .elements = {4, 3, 3, 9}});
                             results.set("a", numbers[0]);
                             results.set("b", numbers[1]);
                         });
    FreeFunction adding(
        "Add", {{numberInput("a"), numberInput("b"), numberInput("unused")}, {output("sum", ValueType::Number)}},
        [](const Arguments& arguments, Results& results, RunContext&) {
            const NumberWithError a = arguments.numberWithError("a");
            const NumberWithError b = arguments.numberWithError("b");
            results.set("sum", withPropagatedError(a.value() + b.value(), {{a, 1.0}, {b, 1.0}}));
        });
    add(fitting, "fit");
    add(adding, "add");
    wire("fit", "a", "add", "a");
    wire("fit", "b", "add", "b");
    start("fit");
    runAnew();
    set("add", "unused", "1");
    runAnew();
    EXPECT_EQ(executed(), 1) << messages.str();
    EXPECT_EQ(fitting.evaluated, 1);
    const NumberWithError sum = numberIn(of("add").outputs[0]).value();
    EXPECT_EQ(sum.value(), 30.0);
    EXPECT_EQ(sum.error(), std::sqrt(4.0 + 9.0 + 2.0 * 3.0));
    EXPECT_EQ(sum.terms().at(0).covariance->origin, "fit");
    EXPECT_EQ(sum.terms().at(0).covariance->names, (std::vector<std::string>{"a", "b"}));
}

}  // namespace
}  // namespace velmorak::test
