#include "RunFixture.h"

#include <velmorak/OrderedAccumulation.h>

#include <cstring>
#include <random>

namespace velmorak::test {
namespace {

/// A file of the kind below: its rows depend on its letter alone.
struct File {
    char letter = 'a';
    std::uint64_t rows = 0;
};

std::vector<File> filesIn(const std::string& list) {
    std::vector<File> files;
    std::istringstream words(list);
    for (std::string word; words >> word;) {
        files.push_back({word.front(), std::stoull(word.substr(1))});
    }
    return files;
}

class FilesReader : public TableReader {
public:
    explicit FilesReader(std::vector<File> files) : files(std::move(files)) {}

    const Schema& schema() const override { return columns; }
    std::uint64_t fileCount() const override { return files.size(); }
    bool next(Chunk& chunk) override {
        while (position < files.size() && row == files[position].rows) {
            ++position;
            row = 0;
        }
        if (position == files.size()) {
            return false;
        }
        const File& file = files[position];
        chunk.file = position;
        chunk.rows = static_cast<std::size_t>(std::min<std::uint64_t>(chunkRows, file.rows - row));
        Column::Reals values(chunk.rows);
        for (double& value : values) {
            value = valueOfRow(row++ * 31 + static_cast<std::uint64_t>(file.letter));
        }
        Column::Texts names(chunk.rows, std::string(1, file.letter));
        chunk.columns = {std::make_shared<Column>(Column{std::move(values), {}}),
                         std::make_shared<Column>(Column{std::move(names), {}})};
        return true;
    }

private:
    Schema columns{std::vector<ColumnInfo>{{"x", ColumnType::Real, false, ""}, {"file", ColumnType::Text, false, ""}}};
    std::vector<File> files;
    std::size_t position = 0;
    std::uint64_t row = 0;
};

/// Yields the rows of several files: "a70000 b5" are 70000 rows of a and 5 of b.
class FilesSource : public Source {
public:
    std::string name() const override { return "Files"; }
    std::string summary() const override { return "Yields the rows of files."; }
    Ports ports(const ValueTexts&) const override {
        return {{textInput("files")}, {output("table", ValueType::Table)}};
    }
    std::unique_ptr<TableReader> open(const Arguments& arguments, RunContext&) const override {
        return std::make_unique<FilesReader>(filesIn(arguments.text("files")));
    }
};

/// The sum of each file, as hexadecimal digits, and the places where states met.
struct FileSums : AccumulatorState {
    struct Sum {
        std::string file;
        double x = 0.0;
    };

    void fill(const Chunk& chunk) override {
        sums.push_back({std::get<Column::Texts>(chunk.columns[1]->values).front(), 0.0});
        for (const double x : chunk.columns[0]->reals()) {
            sums.back().x += x;
        }
        order = sums.back().file + std::to_string(chunk.number);
    }
    void merge(AccumulatorState& other) override {
        auto& next = dynamic_cast<FileSums&>(other);
        if (!sums.empty() && sums.back().file == next.sums.front().file) {
            sums.back().x += next.sums.front().x;
            next.sums.erase(next.sums.begin());
        }
        sums.insert(sums.end(), next.sums.begin(), next.sums.end());
        order = "(" + order + " " + next.order + ")";
    }

    std::vector<Sum> sums;
    std::string order;
};

template <typename Base>
class Listing : public Base {
public:
    std::unique_ptr<AccumulatorState> newState() const override { return std::make_unique<FileSums>(); }
    void finish(AccumulatorState& state, Results& results) override {
        std::ostringstream text;
        for (const FileSums::Sum& sum : dynamic_cast<FileSums&>(state).sums) {
            text << sum.file << ' ' << std::hexfloat << sum.x << '\n';
        }
        results.set("sums", text.str());
        results.set("order", dynamic_cast<FileSums&>(state).order);
    }
};

class ListingKind : public Accumulator {
public:
    explicit ListingKind(bool isOrdered, MergeOrder order = MergeOrder::Tree) : isOrdered(isOrdered), order(order) {}
    std::string name() const override { return "Listing"; }
    std::string summary() const override { return "Sums up each file."; }
    Ports ports(const ValueTexts&) const override {
        return {{wireInput("table", ValueType::Table)},
                {output("sums", ValueType::Text), output("order", ValueType::Text)}};
    }
    MergeOrder mergeOrder() const override { return order; }
    std::unique_ptr<Accumulation> prepare(const Arguments&, const Schema*, RunContext&) const override {
        if (isOrdered) {
            return std::make_unique<Listing<OrderedAccumulation>>();
        }
        return std::make_unique<Listing<Accumulation>>();
    }

private:
    bool isOrdered;
    MergeOrder order;
};

std::string chunksOf(char letter, std::uint64_t chunks) {
    return letter + std::to_string(chunks * chunkRows - 7) + " ";
}

class Files : public RunTest {
protected:
    Files() {
        add(source, "files");
        add(tree, "tree");
        add(ordered, "ordered");
        add(sequence, "sequence");
        for (const char* name : {"tree", "ordered", "sequence"}) {
            wire("files", "table", name, "table");
        }
    }

    void read(const std::string& files, std::size_t threads = 4) {
        set("files", "files", files);
        runner.setThreads(threads);
        runner.reset();
        run();
    }

    FilesSource source;
    ListingKind tree{false};
    ListingKind ordered{true};
    ListingKind sequence{false, Accumulator::MergeOrder::FirstToLast};
    JoinKind join;
};

TEST_F(Files, areMergedOneByOneAndThenInPairs) {
    for (const std::size_t threads : {1U, 4U}) {
        read(chunksOf('a', 3) + chunksOf('b', 1) + chunksOf('c', 4), threads);
        EXPECT_EQ(text("tree", 1), "((((a0 a1) a2) b0) ((c0 c1) (c2 c3)))");
        EXPECT_EQ(text("ordered", 1), "((((( a0) a1) a2) ( b0)) (((( c0) c1) c2) c3))");
        EXPECT_EQ(text("sequence", 1), "(((((((( a0) a1) a2) b0) c0) c1) c2) c3)");
    }
}

TEST_F(Files, withoutRowsKeepTheirPlaces) {
    read("a5 b0 c5 d5");
    EXPECT_EQ(text("tree", 1), "(a0 (c0 d0))");
    EXPECT_EQ(text("ordered", 1), "(( a0) (( c0) ( d0)))");
    read("a0 b0");
    EXPECT_EQ(text("tree", 1), "");
    EXPECT_EQ(text("ordered", 1), "");
}

TEST_F(Files, ofConcatenatedTablesFollowEachOther) {
    add(source, "more", {{"files", chunksOf('c', 1) + chunksOf('d', 2)}});
    add(join, "join");
    add(tree, "joined");
    add(tree, "ofMore");
    wire("files", "table", "join", "first");
    wire("more", "table", "join", "second");
    wire("join", "table", "joined", "table");
    wire("more", "table", "ofMore", "table");
    start("more");
    for (const std::size_t threads : {1U, 4U}) {
        read(chunksOf('a', 1) + chunksOf('b', 3), threads);
        EXPECT_EQ(text("joined", 1), "((a0 ((b0 b1) b2)) (c0 (d0 d1)))");
        EXPECT_EQ(text("ofMore", 1), "(c0 (d0 d1))") << "as if it were read alone";
    }
    const std::string joined = text("joined");
    start("files");
    read(chunksOf('a', 1) + chunksOf('b', 3) + chunksOf('c', 1) + chunksOf('d', 2));
    EXPECT_EQ(text("tree"), joined) << "one list of all files has the same bits";
}

class FilesAfterALimit : public RunTest {
protected:
    FilesSource source;
    HeadKind head;
    JoinKind join;
    ListingKind tree{false};
};

TEST_F(FilesAfterALimit, keepTheirPlaces) {
    add(source, "files", {{"files", "a5 b5 c5 d5 e5 f5"}});
    add(source, "more", {{"files", "x5 y5"}});
    add(head, "head", {{"count", "7"}});
    add(join, "join");
    add(tree, "joined");
    wire("files", "table", "head", "table");
    wire("head", "table", "join", "first");
    wire("more", "table", "join", "second");
    wire("join", "table", "joined", "table");
    for (const std::size_t threads : {1U, 2U, 16U}) {
        runner.setThreads(threads);
        runner.reset();
        run();
        EXPECT_EQ(text("joined", 1), "((a0 b0) (x0 y0))") << threads << " threads";
    }
}

/// The line of each file when it is read alone.
class RandomLists : public Files {
protected:
    std::string alone(const std::string& file) {
        if (const auto known = lines.find(file); known != lines.end()) {
            return known->second;
        }
        read(file, 1);
        return lines[file] = text("tree");
    }

    std::vector<std::string> randomList() {
        std::vector<std::string> list;
        for (std::size_t count = random() % 6 + 1; list.size() < count;) {
            const char letter = static_cast<char>('a' + list.size());
            list.push_back(letter + std::to_string(chunkRows * (random() % 7) + random() % 3 * 1000));
        }
        std::shuffle(list.begin(), list.end(), random);
        return list;
    }

    std::mt19937_64 random{13};

private:
    std::map<std::string, std::string> lines;
};

TEST_F(RandomLists, giveEachFileTheBitsThatItHasAlone) {
    for (int round = 0; round < 12; ++round) {
        const std::vector<std::string> list = randomList();
        std::string all;
        std::string expected;
        for (const std::string& file : list) {
            expected += alone(file);
            all += file + " ";
        }
        for (const std::size_t threads : {1U, 2U, 3U, 16U}) {
            read(all, threads);
            EXPECT_EQ(text("tree"), expected) << all << "on " << threads << " threads";
        }
    }
}

/// Yields chunks of one row from the given files.
class WrongFiles : public Source {
public:
    WrongFiles(std::uint64_t count, std::vector<std::uint64_t> files) : count(count), files(std::move(files)) {}
    std::string name() const override { return "Wrong"; }
    std::string summary() const override { return "Yields chunks of files."; }
    Ports ports(const ValueTexts&) const override { return {{}, {output("table", ValueType::Table)}}; }
    std::unique_ptr<TableReader> open(const Arguments&, RunContext&) const override {
        return std::make_unique<Reader>(*this);
    }

private:
    class Reader : public TableReader {
    public:
        explicit Reader(const WrongFiles& kind) : kind(kind) {}
        const Schema& schema() const override { return columns; }
        std::uint64_t fileCount() const override { return kind.count; }
        bool next(Chunk& chunk) override {
            if (position == kind.files.size()) {
                return false;
            }
            chunk.file = kind.files[position++];
            chunk.rows = 1;
            chunk.columns = {std::make_shared<Column>(Column{Column::Reals{1.0}, {}})};
            return true;
        }

    private:
        const WrongFiles& kind;
        Schema columns{std::vector<ColumnInfo>{{"x", ColumnType::Real, false, ""}}};
        std::size_t position = 0;
    };

    std::uint64_t count;
    std::vector<std::uint64_t> files;
};

class FilesOutOfOrder : public RunTest {
protected:
    std::string complaint(std::uint64_t count, std::vector<std::uint64_t> files) {
        pipeline.nodes.clear();
        const WrongFiles wrong(count, std::move(files));
        add(wrong, "wrong");
        add(sum, "sum");
        wire("wrong", "table", "sum", "table");
        runner.reset();
        run();
        return sentence("wrong");
    }

    SumKind sum;
};

TEST_F(FilesOutOfOrder, areRefused) {
    EXPECT_EQ(complaint(3, {0, 2}), "");
    EXPECT_EQ(number("sum"), 2.0);
    EXPECT_NE(complaint(3, {1, 0}).find("a chunk of file 0 after one of file 1"), std::string::npos);
    EXPECT_NE(complaint(3, {0, 3}).find("a chunk of file 3, counted from 0, and there are 3"), std::string::npos);
    EXPECT_NE(complaint(1, {1}).find("a chunk of file 1, counted from 0, and there are 1"), std::string::npos);
    EXPECT_NE(complaint(0, {}).find("reads 0 files"), std::string::npos);
    EXPECT_NE(complaint(2, {1, 1}).find("a chunk of 1 row before its last one"), std::string::npos);
}

}  // namespace
}  // namespace velmorak::test
