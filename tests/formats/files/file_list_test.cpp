#include "FilesFixture.h"

#include "files/FileList.h"

#include <gmock/gmock.h>
#include <sys/stat.h>

namespace velmorak {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

class FileListTest : public FilesFixture {
protected:
    std::vector<std::string> names(const std::string& text) {
        std::vector<std::string> all;
        for (const ListedFile& file : findFiles("file", text, context).files) {
            EXPECT_TRUE(std::filesystem::is_regular_file(file.path)) << file.path;
            all.push_back(file.name);
        }
        return all;
    }

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

TEST_F(FileListTest, findsOneFileWhetherOrNotItExists) {
    write("a.csv", "");
    EXPECT_THAT(names("a.csv"), ElementsAre("a.csv"));
    EXPECT_EQ(findFiles("file", "missing.csv", context).files.front().path, folder.path() / "missing.csv");
}

TEST_F(FileListTest, keepsTheOrderOfSeveral) {
    for (const char* name : {"a.csv", "b.csv", "c.csv"}) {
        write(name, "");
    }
    EXPECT_THAT(names("c.csv, a.csv\nb.csv,\r\n"), ElementsAre("c.csv", "a.csv", "b.csv"));
}

TEST_F(FileListTest, takesAnExistingFileByItsWholeName) {
    write("a,b [1]*.csv", "");
    write("a", "");
    EXPECT_THAT(names("a,b [1]*.csv"), ElementsAre("a,b [1]*.csv"));
    EXPECT_THAT(names("a, \"a,b [1]*.csv\""), ElementsAre("a", "a,b [1]*.csv"));
}

TEST_F(FileListTest, sortsTheMatchesOfAPatternByCodePoint) {
    for (const char* name : {"run_10.csv", "run_9.csv", "run_B.csv", "run_a.csv", "run_ä.csv", ".run_1.csv", "x.csv"}) {
        write(name, "");
    }
    EXPECT_THAT(names("run_*.csv"), ElementsAre("run_10.csv", "run_9.csv", "run_B.csv", "run_a.csv", "run_ä.csv"));
    EXPECT_THAT(names("run_[a-b].csv"), ElementsAre("run_a.csv"));
    EXPECT_THAT(names("run_?.csv"), ElementsAre("run_9.csv", "run_B.csv", "run_a.csv", "run_ä.csv"));
}

TEST_F(FileListTest, searchesFoldersBelowWithTwoStars) {
    for (const char* name : {"data/a.csv", "data/x/b.csv", "data/x/y/c.csv", "data/.h/d.csv", "data/x/e.txt"}) {
        write(name, "");
    }
    std::filesystem::create_directory_symlink(folder.path() / "data", folder.path() / "data/x/loop");
    EXPECT_THAT(names("data/**/*.csv"), ElementsAre("data/a.csv", "data/x/b.csv", "data/x/y/c.csv"));
    EXPECT_THAT(names("data/*/b.csv"), ElementsAre("data/x/b.csv"));
    EXPECT_THAT(names("**/y/*"), ElementsAre("data/x/y/c.csv"));
}

TEST_F(FileListTest, takesTheFilesOfAFolder) {
    for (const char* name : {"data/b.csv", "data/a.csv", "data/.hidden", "data/below/c.csv"}) {
        write(name, "");
    }
    EXPECT_THAT(names("data"), ElementsAre("data/a.csv", "data/b.csv"));
    std::filesystem::create_directory(folder.path() / "empty");
    EXPECT_THAT(failureOf("empty"), HasSubstr("/empty\" contains no files"));
}

TEST_F(FileListTest, readsListsRelativeToThem) {
    for (const char* name : {"data/b.csv", "data/a.csv", "data/more/c_2.csv", "data/more/c_1.csv"}) {
        write(name, "");
    }
    write("data/list.txt", "# of May\nb.csv  # good\n\n  more/c_*.csv\r\na.csv");
    EXPECT_THAT(names("@data/list.txt"),
                ElementsAre("data/b.csv", "data/more/c_1.csv", "data/more/c_2.csv", "data/a.csv"));
    EXPECT_THAT(context.inputs, testing::Contains("data/list.txt"));
}

TEST_F(FileListTest, readsListsOfOtherSystems) {
    for (const char* name : {"a.csv", "b.csv", "c #1.csv", "@d.csv"}) {
        write(name, "");
    }
    write("list.txt", "\xEF\xBB\xBF# Windows\r\n\ta.csv \r\n\"c #1.csv\"  # quoted\r\n\"@d.csv\"\r\nb.csv#comment\r\n");
    EXPECT_THAT(names("@list.txt"), ElementsAre("a.csv", "c #1.csv", "@d.csv", "b.csv"));
}

/// Finds names in another folder first, like a run whose document is elsewhere.
class OtherFirst : public FolderContext {
public:
    OtherFirst(const std::filesystem::path& other, const std::filesystem::path& folder)
        : FolderContext(folder), other(other) {}

    std::filesystem::path inputFile(const std::string& text) const override {
        inputs.push_back(text);
        return locate(text);
    }
    std::filesystem::path locate(const std::string& text) const override {
        return std::filesystem::exists(other / text) ? other / text : FolderContext::locate(text);
    }

private:
    std::filesystem::path other;
};

TEST_F(FileListTest, readsAListRelativeToItAndNowhereElse) {
    write("other/d/a.csv", "");
    write("d/list.txt", "a.csv\nb.csv\n*_?.csv\n");
    write("d/a.csv", "");
    write("d/b.csv", "");
    write("d/c_1.csv", "");
    OtherFirst run(folder.path() / "other", folder.path());
    const FileList list = findFiles("file", "@d/list.txt", run);
    ASSERT_EQ(list.files.size(), 3U);
    EXPECT_EQ(list.files[0].path, folder.path() / "d/a.csv");
    EXPECT_EQ(list.files[1].name, "d/b.csv");
    EXPECT_EQ(list.files[2].path, folder.path() / "d/c_1.csv");
}

TEST_F(FileListTest, takesSeveralListsAndFiles) {
    for (const char* name : {"a", "b", "c"}) {
        write(name, "");
    }
    write("1.txt", "c");
    write("2.txt", "a\n");
    EXPECT_THAT(names("@1.txt, b\n@2.txt"), ElementsAre("c", "b", "a"));
    write("3.txt", "#\n");
    EXPECT_EQ(failureOf("@1.txt, @3.txt"), "\"3.txt\" lists no file");
}

TEST_F(FileListTest, takesNamesWithAnyCharacters) {
    for (const char* name : {"a, b.csv", "line\nend.csv", " blank ", "@at.csv", "x[1].csv", "quote\".csv"}) {
        write(name, "");
    }
    EXPECT_THAT(names("\"a, b.csv\",\"line\nend.csv\"\n\" blank \", \"@at.csv\", x[1].csv, quote?.csv"),
                ElementsAre("a, b.csv", "line\nend.csv", " blank ", "@at.csv", "x[1].csv", "quote\".csv"));
}

TEST_F(FileListTest, refusesListsThatCannotBeUsed) {
    write("empty.txt", "# nothing\n");
    write("nested.txt", "a.csv\n@other.txt\n");
    EXPECT_EQ(failureOf("@empty.txt"), "\"empty.txt\" lists no file");
    EXPECT_THAT(failureOf("@nested.txt"), HasSubstr("\"nested.txt\", line 2: a list cannot contain another list"));
    EXPECT_THAT(failureOf("@missing.txt"), HasSubstr("missing.txt\": No such file or directory"));
    EXPECT_THAT(failureOf("@"), HasSubstr("the name of a list is missing"));
    write("zero.txt", std::string("a\0b\n", 4));
    write("more.txt", "\"a.csv\" b.csv\n");
    write("open.txt", "\n\"a.csv\n");
    write("none.txt", "\"\"\n");
    EXPECT_EQ(failureOf("@zero.txt"), "\"zero.txt\", line 1: it is not a line of text");
    EXPECT_EQ(failureOf("@more.txt"), "\"more.txt\", line 1: only a comment may follow the quoted name");
    EXPECT_EQ(failureOf("@open.txt"), "\"open.txt\", line 2: the quote before \"a.csv\" is not closed");
    EXPECT_EQ(failureOf("@none.txt"), "a file has an empty name");
    ASSERT_EQ(mkfifo((folder.path() / "pipe.txt").c_str(), 0600), 0);
    EXPECT_THROW(findFiles("file", "@pipe.txt", context), Failure);
}

TEST_F(FileListTest, saysWhatIsMissing) {
    write("a.csv", "");
    EXPECT_EQ(failureOf(" \n,"), "no file is given");
    EXPECT_EQ(failureOf("run_*.csv"), "no file matches \"run_*.csv\" in the folder \"" + (folder.path() / "").string() +
                                          "\" or in \"" + std::filesystem::current_path().string() + "\"");
    EXPECT_EQ(failureOf("a.csv, ./a.csv"), "the file \"./a.csv\" is listed twice");
    EXPECT_EQ(failureOf("a.csv, *.csv"), "the file \"a.csv\" is listed twice");
    EXPECT_THAT(failureOf("\"a.csv"), HasSubstr("is not closed"));
    EXPECT_EQ(failureOf("\"a.csv\"b.csv"), "a comma or a line end is missing after \"a.csv\"");
    EXPECT_EQ(failureOf("a.csv, \"\""), "a file has an empty name");
}

TEST_F(FileListTest, recordsFilesAndListings) {
    write("data/x/a.csv", "");
    write("data/x/b.csv", "");
    names("data/*/*.csv");
    EXPECT_THAT(context.inputs, ElementsAre("data/x/a.csv", "data/x/b.csv"));
    EXPECT_THAT(context.listings, ElementsAre("data:*", "data/x:*.csv"));
}

TEST_F(FileListTest, canBeStopped) {
    write("a.csv", "");
    context.stopping = true;
    EXPECT_THROW(findFiles("file", "*.csv", context), Stopped);
}

}  // namespace
}  // namespace velmorak
