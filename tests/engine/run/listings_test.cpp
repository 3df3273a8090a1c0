#include "RunFixture.h"

#include <velmorak/Parts.h>

/// Folders whose names a plug-in asks for, and files that it goes on without.
namespace velmorak::test {
namespace {

class FolderListings : public RunTest {
protected:
    FolderListings() {
        std::filesystem::create_directory(folder / "data");
        write("data/a.csv", "");
        write("data/b.txt", "");
        add(count, "count");
    }

    std::function<void()> afterAsking = [] {};
    const FreeFunction count{"Count",
                             {{}, {output("number", ValueType::Number)}},
                             [this](const Arguments&, Results& results, RunContext& context) {
                                 results.set("number", static_cast<double>(context.namesIn("data", "*.csv").size()));
                                 afterAsking();
                             }};
};

TEST_F(FolderListings, areAnInputOfTheResult) {
    run();
    EXPECT_EQ(number("count"), 1.0);
    write("data/a.csv", "more");
    write("data/other.txt", "");
    run();
    EXPECT_EQ(status("count"), NodeStatus::Reused) << "the names that match are the same";
    write("data/c.csv", "");
    run();
    EXPECT_EQ(status("count"), NodeStatus::Done);
    EXPECT_EQ(number("count"), 2.0);
    std::filesystem::remove_all(folder / "data");
    run();
    EXPECT_EQ(number("count"), 0.0);
}

TEST_F(FolderListings, areRelativeToTheDocument) {
    run();
    const std::filesystem::path moved = folder / "moved";
    std::filesystem::create_directory(moved);
    std::filesystem::rename(folder / "data", moved / "data");
    pipeline.documentFolder = moved;
    run();
    EXPECT_EQ(status("count"), NodeStatus::Reused);
}

TEST_F(FolderListings, areTakenWhenThePlugInAsks) {
    afterAsking = [this] { write("data/late.csv", ""); };
    run();
    EXPECT_EQ(number("count"), 1.0);
    run();
    EXPECT_EQ(status("count"), NodeStatus::Done) << "the file came after the question";
    EXPECT_EQ(number("count"), 2.0);
}

TEST_F(FolderListings, areNoFilesOfTheRecord) {
    run();
    EXPECT_TRUE(report.files.empty());
    EXPECT_TRUE(of("count").files.empty());
}

/// Finds the names of its files as a fact, and asks for each of them under two names.
class NamesSource : public Source {
public:
    std::string name() const override { return "Names"; }
    std::string summary() const override { return "Yields a row for each file."; }
    Ports ports(const ValueTexts&) const override { return {{}, {output("table", ValueType::Table)}}; }
    std::unique_ptr<TableReader> open(const Arguments& arguments, RunContext& context) const override {
        return std::make_unique<Reader>(files(arguments, context).size());
    }
    std::vector<std::filesystem::path> files(const Arguments&, RunContext& context) const override;

    mutable int found = 0;

private:
    class Reader : public TableReader {
    public:
        explicit Reader(std::size_t files) : files(files) {}

        const Schema& schema() const override { return columns; }
        std::uint64_t fileCount() const override { return files; }
        bool next(Chunk& chunk) override {
            chunk.rows = file < files ? 1 : 0;
            chunk.file = file;
            chunk.columns = {std::make_shared<const Column>(Column{Column::Reals(chunk.rows, 1.0), {}})};
            return file++ < files;
        }

    private:
        const std::size_t files;
        Schema columns{{{.name = "x"}}};
        std::uint64_t file = 0;
    };
};

std::vector<std::filesystem::path> NamesSource::files(const Arguments&, RunContext& context) const {
    std::istringstream names(factOf(context, "names", [&] {
        ++found;
        std::string all;
        for (const std::string& each : context.namesIn("data", "*.csv")) {
            all += "data/" + each + "\n";
        }
        return all;
    }));
    std::vector<std::filesystem::path> all;
    for (std::string each; std::getline(names, each);) {
        all.push_back(context.inputFile(each));
    }
    return all;
}

class FactsAboutFiles : public RunTest {
protected:
    FactsAboutFiles() {
        std::filesystem::create_directory(folder / "data");
        write("data/a.csv", "1");
        write("data/b.csv", "2");
        add(source, "rows");
        add(sum, "sum");
        wire("rows", "table", "sum", "table");
    }

    const NamesSource source;
    SumKind sum;
};

TEST_F(FactsAboutFiles, areFoundOnceInARun) {
    run();
    EXPECT_EQ(source.found, 1) << "for the result store, and to open and read the files";
    EXPECT_EQ(of("sum").rowsIn, 2U);
    run();
    EXPECT_EQ(source.found, 2);
    EXPECT_EQ(status("sum"), NodeStatus::Reused);
}

TEST_F(FactsAboutFiles, areFoundAnewInTheNextRun) {
    run();
    write("data/c.csv", "3");
    run();
    EXPECT_EQ(of("sum").rowsIn, 3U);
    write("data/b.csv", "4");
    run();
    EXPECT_EQ(status("sum"), NodeStatus::Done) << "the content is an input, too";
}

TEST_F(FactsAboutFiles, nameEachFileOnceInTheRecord) {
    run();
    const std::vector<std::string> names{"data/a.csv", "data/b.csv"};
    ASSERT_EQ(report.files.size(), names.size());
    for (std::size_t i = 0; i < names.size(); ++i) {
        EXPECT_EQ(report.files[i].name, names[i]);
    }
}

class SkippedFiles : public RunTest {
protected:
    SkippedFiles() {
        add(skipping, "skipping");
        add(pass, "after");
        wire("skipping", "number", "after", "value");
    }

    const FreeFunction skipping{"Skip",
                                {{}, {output("number", ValueType::Number)}},
                                [](const Arguments&, Results& results, RunContext& context) {
                                    context.skipFile("/d/b", "it ends early");
                                    context.skipFile("/d/a", "/d/a is empty");
                                    context.skipFile("/d/b", "a block is damaged");
                                    results.set("number", 1.0);
                                }};
    PassKind pass;
};

TEST_F(SkippedFiles, areReportedByPathWithOneReason) {
    run();
    ASSERT_EQ(report.skipped.size(), 2U);
    EXPECT_EQ(report.skipped[0].file, "/d/a");
    EXPECT_EQ(report.skipped[1].plugin, "skipping");
    EXPECT_EQ(report.skipped[1].reason, "a block is damaged") << "whichever thread comes first";
    EXPECT_TRUE(wasSaid("Skip \"skipping\": warning: skips a damaged file: \"/d/b\": it ends early"));
    EXPECT_TRUE(wasSaid("Skip \"skipping\": warning: skips a damaged file: /d/a is empty"));
}

TEST_F(SkippedFiles, keepNothingThatDependsOnThem) {
    run();
    run();
    EXPECT_EQ(status("skipping"), NodeStatus::Done);
    EXPECT_EQ(status("after"), NodeStatus::Done);
    EXPECT_EQ(report.skipped.size(), 2U);
}

TEST_F(SkippedFiles, areShownTenAtMost) {
    const FreeFunction many("Many", {{}, {output("number", ValueType::Number)}},
                            [](const Arguments&, Results& results, RunContext& context) {
                                for (int i = 0; i < 50; ++i) {
                                    context.skipFile("/d/" + std::to_string(i), "gone");
                                }
                                results.set("number", 1.0);
                            });
    add(many, "many");
    start("many");
    run();
    EXPECT_EQ(report.skipped.size(), 50U);
    EXPECT_TRUE(wasSaid("Many \"many\": warning: skips a damaged file: \"/d/9\": gone"));
    EXPECT_FALSE(wasSaid("Many \"many\": warning: skips a damaged file: \"/d/10\": gone"));
    EXPECT_TRUE(wasSaid("Many \"many\": warning: skips 40 more damaged files; run.json lists all of them"));
}

/// Has five chunks, the second and fourth of which cannot be read.
class LossySource : public Source {
public:
    std::string name() const override { return "Lossy"; }
    std::string summary() const override { return "Loses chunks."; }
    Ports ports(const ValueTexts&) const override { return {{}, {output("table", ValueType::Table)}}; }
    std::unique_ptr<TableReader> open(const Arguments&, RunContext&) const override {
        return std::make_unique<Reader>();
    }

private:
    class Reader : public TableReader {
    public:
        const Schema& schema() const override { return columns; }
        bool next(Chunk& chunk) override {
            chunk.rows = left > 0 ? chunkRows : 0;
            return left > 0 && left-- > 0;
        }
        void complete(Chunk& chunk) const override {
            chunk.rows = chunk.number % 2 == 1 ? 0 : chunk.rows;
            chunk.columns = {std::make_shared<const Column>(Column{Column::Reals(chunk.rows, 1.0), {}})};
        }

    private:
        int left = 5;
        Schema columns{{ColumnInfo{.name = "x"}}};
    };
};

TEST_F(RunTest, lostChunksHaveNoRows) {
    const LossySource lossy;
    const SumKind sum;
    const HeadKind head;
    for (const bool isSeenByOthers : {false, true}) {
        pipeline.nodes.clear();
        add(lossy, "lossy");
        add(head, "head", {{"count", std::to_string(2 * chunkRows + 7)}});
        add(sum, "first");
        wire("lossy", "table", "head", "table");
        wire("head", "table", "first", "table");
        if (isSeenByOthers) {
            add(sum, "all");
            wire("lossy", "table", "all", "table");
        }
        runner.reset();
        run();
        EXPECT_EQ(number("first"), chunkRows + 7.0) << "lost rows count for a range as if they were there";
        if (isSeenByOthers) {
            EXPECT_EQ(number("all"), 3.0 * chunkRows);
            EXPECT_EQ(of("all").rowsIn, 3 * chunkRows);
            EXPECT_EQ(of("lossy").rowsOut, 3 * chunkRows);
        }
    }
}

}  // namespace
}  // namespace velmorak::test
