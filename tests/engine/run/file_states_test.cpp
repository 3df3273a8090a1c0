#include "RunFixture.h"

#include "executor/StagePipeline.h"
#include "run/pass/FileStates.h"
#include "run/pass/PassPlanner.h"
#include "run/pass/SourceSet.h"
#include "run/pass/StreamPass.h"

#include <velmorak/Parts.h>

#include <atomic>
#include <chrono>
#include <memory>
#include <set>

namespace velmorak::test {
namespace {

using std::chrono::milliseconds;

/// Yields for each of its files as many chunks as the text of the file has characters.
class FilesSource : public Source {
public:
    std::string name() const override { return "Files"; }
    std::string summary() const override { return "Yields rows of files."; }
    Ports ports(const ValueTexts&) const override { return {{textInput("file")}, {output("table", ValueType::Table)}}; }
    std::unique_ptr<TableReader> open(const Arguments& arguments, RunContext& context) const override;
    std::vector<std::filesystem::path> files(const Arguments& arguments, RunContext& context) const override;

    mutable std::set<std::uint64_t> read;  ///< Files.
};

class FilesReader : public TableReader, public FileSelection {
public:
    FilesReader(const FilesSource& kind, std::vector<std::size_t> chunks) : kind(kind), chunks(std::move(chunks)) {}

    const Schema& schema() const override { return columns; }
    std::uint64_t fileCount() const override { return chunks.size(); }
    void readOnly(const std::vector<bool>& isRead) override { isWanted = isRead; }
    bool next(Chunk& chunk) override {
        while (file < chunks.size() && (number == chunks[file] || (!isWanted.empty() && !isWanted[file]))) {
            ++file;
            number = 0;
        }
        if (file == chunks.size()) {
            return false;
        }
        kind.read.insert(file);
        // A file that has one more chunk fills this one.
        chunk.rows = ++number < chunks[file] ? chunkRows : 1;
        chunk.file = file;
        chunk.columns = {
            std::make_shared<const Column>(Column{Column::Reals(chunk.rows, static_cast<double>(file + 1)), {}})};
        return true;
    }

private:
    const FilesSource& kind;
    const std::vector<std::size_t> chunks;  ///< By file.
    std::vector<bool> isWanted;
    Schema columns{{{.name = "x"}}};
    std::size_t file = 0;
    std::size_t number = 0;
};

std::vector<std::filesystem::path> FilesSource::files(const Arguments& arguments, RunContext& context) const {
    std::vector<std::filesystem::path> all;
    std::istringstream names(arguments.text("file"));
    for (std::string each; names >> each;) {
        all.push_back(context.inputFile(each));
    }
    return all;
}

std::unique_ptr<TableReader> FilesSource::open(const Arguments& arguments, RunContext& context) const {
    std::vector<std::size_t> chunks;
    for (const std::filesystem::path& file : files(arguments, context)) {
        chunks.push_back(static_cast<std::size_t>(std::filesystem::file_size(file)));
    }
    return std::make_unique<FilesReader>(*this, std::move(chunks));
}

/// Carries each chunk through all stages before the next one is read.
class OneByOne : public Executor {
public:
    std::size_t maxInFlight() const override { return 1; }
    void run(const StagePipeline& pipeline) override {
        while (pipeline.load(0)) {
            for (const StagePipeline::Stage& stage : pipeline.stages) {
                stage.work(0);
            }
        }
    }
};

/// Three files of 1, 2 and 1 chunks, and a clock that goes on by a step whenever it is looked at.
class FileStatesKept : public RunTest {
protected:
    FileStatesKept() {
        write("a", ".");
        write("b", "..");
        write("c", ".");
        add(source, "files", {{"file", "a b c"}});
        add(sum, "total");
        wire("files", "table", "total", "table");
    }

    /// @return the sum. @param step of the clock.
    double pass(milliseconds step) {
        source.read.clear();
        const std::atomic<bool> stopping = false;
        Messages quiet(messages, false);
        RunLedger ledger(pipeline);
        RunState state(pipeline, stopping, quiet, ledger, nullptr);
        std::int64_t ticks = 0;
        state.environment.clock = [&ticks, step] { return std::chrono::steady_clock::time_point(step * ticks++); };
        for (NodeRun& run : state.runs) {
            run.isNeeded = true;
        }
        PassPlanner planner(state);
        const std::vector<std::size_t> targets = planner.nextTargets();
        StreamPass stream(state, state.plan.segments(targets.at(0)), planner.operatorsFor(targets));
        FileStates states(state, disk, hashes, false);
        stream.keepWith(states);
        OneByOne executor;
        stream.execute(executor);
        return std::get<double>(state.runs[positionOf("total")].report.outputs.at(0));
    }

    /// @return the files that are read after one was added.
    std::set<std::uint64_t> readAfter(milliseconds step) {
        EXPECT_EQ(pass(step), 1.0 + 2.0 * (chunkRows + 1) + 3.0);
        EXPECT_EQ(source.read, (std::set<std::uint64_t>{0, 1, 2}));
        write("d", ".");
        set("files", "file", "a b c d");
        EXPECT_EQ(pass(step), 1.0 + 2.0 * (chunkRows + 1) + 3.0 + 4.0);
        return source.read;
    }

    FilesSource source;
    SumKind sum;
    FileHashes hashes;
    DiskStore disk{{.folder = folder / "cache", .limitBytes = 1U << 30U, .minReadingTime = milliseconds(10)},
                   [](const std::string&) {}};
};

class RangeOfFiles : public FileStatesKept {};

/// As a part of a run shows its progress.
TEST_F(RangeOfFiles, countsItsOwnFilesOnly) {
    const std::atomic<bool> stopping = false;
    Messages quiet(messages, false);
    RunLedger ledger(pipeline);
    RunState state(pipeline, stopping, quiet, ledger, nullptr);
    SourceSet sources(state, {positionOf("files")}, {{1, 1}, {3, 0}, {}});
    ASSERT_TRUE(sources.open());
    std::vector<std::pair<std::uint64_t, std::uint64_t>> shown;
    for (ChunkTask task; sources.read(task);) {
        shown.push_back(sources.fileOfCurrent());
    }
    EXPECT_EQ(shown, (std::vector<std::pair<std::uint64_t, std::uint64_t>>{{0, 2}, {1, 2}}));
    EXPECT_EQ(source.read, (std::set<std::uint64_t>{1, 2}));
}

/// Reading a chunk, completing it and adding it up take a step each.
TEST_F(FileStatesKept, areThoseOfFilesThatTakeTenMilliseconds) {
    EXPECT_EQ(readAfter(milliseconds(4)), (std::set<std::uint64_t>{3})) << "12 ms a chunk";
}

TEST_F(FileStatesKept, areNotThoseOfFilesThatAreReadFaster) {
    EXPECT_EQ(readAfter(milliseconds(1)), (std::set<std::uint64_t>{0, 1, 2, 3})) << "3 ms a chunk";
}

TEST_F(FileStatesKept, dependOnAllChunksOfAFile) {
    EXPECT_EQ(readAfter(milliseconds(3)), (std::set<std::uint64_t>{0, 2, 3}))
        << "9 ms a chunk, of which file 1 has two";
}

}  // namespace
}  // namespace velmorak::test
