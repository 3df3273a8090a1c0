#include "ChainFixture.h"

#include "files/FileFacts.h"

#include <velmorak/Parts.h>

#include <gmock/gmock.h>

#include <map>

namespace velmorak {

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::Pair;
using testing::SizeIs;

/// A run that knows what an earlier one found.
class PlannedContext : public FolderContext, public SharedRun {
public:
    using FolderContext::FolderContext;

    std::string fact(const std::string& name, const std::function<std::string()>& find) override {
        const auto found = facts.find(name);
        return found != facts.end() ? found->second : facts[name] = find();
    }
    bool isPlanned() const override { return true; }
    std::string partial() const override { return {}; }

    std::map<std::string, std::string> facts;
};

class FileFacts : public FileChainTest {
protected:
    std::unique_ptr<TableReader> openPlanned(const std::string& text, const FileChainOptions& options = {}) {
        return openFiles(findFiles("file", text, planned), std::make_shared<CsvOpener>(), options, planned);
    }
    void remove(const std::string& name) const { std::filesystem::remove(folder.path() / name); }

    PlannedContext planned{folder.path()};
};

}  // namespace

TEST_F(FileFacts, aPlannedRunHasTheFilesThatWereFoundThen) {
    write("b.csv", "x\n1\n");
    write("a.csv", "x\n2\n");
    write("samples.csv", "file,name,weight,year,isGood\n[ab].csv,\"one, two\",0.5,2024,true\n");
    const FileList found = findFiles("file", "@samples.csv", planned);
    for (const char* name : {"a.csv", "b.csv", "samples.csv"}) {
        remove(name);
    }
    planned.inputs.clear();
    const FileList known = findFiles("file", "@samples.csv", planned);
    ASSERT_THAT(known.files, SizeIs(2));
    EXPECT_EQ(known.files[0].name, "a.csv");
    EXPECT_EQ(known.files[1].path, folder.path() / "b.csv");
    EXPECT_EQ(known.properties, found.properties);
    EXPECT_THAT(known.values[0]->texts(), ElementsAre("one, two"));
    EXPECT_THAT(known.values[1]->reals(), ElementsAre(0.5));
    EXPECT_THAT(known.values[2]->integers(), ElementsAre(2024));
    EXPECT_THAT(known.values[3]->booleans(), ElementsAre(1));
    EXPECT_THAT(planned.inputs, ElementsAre("samples.csv", "a.csv", "b.csv"));
    EXPECT_THAT(planned.skipped, SizeIs(0));
}

TEST_F(FileFacts, aPartOpensNoFilesButItsOwn) {
    write("a.csv", "x,n\n1,1\n");
    write("b.csv", "n,x\n2,3\n");
    write("c.csv", "x,n\n0.5,4\n");
    const Schema columns = openPlanned("*.csv")->schema();
    EXPECT_EQ(columns[0].type, ColumnType::Real) << "as the third file suggests";
    remove("a.csv");
    remove("c.csv");
    const std::unique_ptr<TableReader> reader = openPlanned("*.csv");
    EXPECT_EQ(reader->schema(), columns);
    dynamic_cast<FileSelection&>(*reader).readOnly({false, true, false});
    const std::vector<Chunk> chunks = chunksOf(*reader);
    ASSERT_THAT(chunks, SizeIs(1));
    EXPECT_THAT(chunks[0].columns[0]->reals(), ElementsAre(3.0));
    EXPECT_THAT(chunks[0].columns[1]->integers(), ElementsAre(2));
}

TEST_F(FileFacts, theColumnsOfOneFileAreThoseThatWereFoundThen) {
    write("a.csv", "x\n1\n");
    openPlanned("a.csv");
    write("a.csv", "x\n2.5\n");
    EXPECT_EQ(open("a.csv")->schema()[0].type, ColumnType::Real);
    EXPECT_EQ(openPlanned("a.csv")->schema()[0].type, ColumnType::Integer);
}

TEST_F(FileFacts, filesThatWereSkippedThenAreReportedAgain) {
    write("a.csv", "x\n1\n");
    write("b.csv", "");
    openPlanned("*.csv", {.skipsDamaged = true});
    const auto first = planned.skipped;
    ASSERT_THAT(first, ElementsAre(Pair("b.csv", HasSubstr("no rows"))));
    planned.skipped.clear();
    write("b.csv", "x\n2\n");
    openPlanned("*.csv", {.skipsDamaged = true});
    EXPECT_EQ(planned.skipped, first);
}

TEST_F(FileFacts, bytesThatAreNoFactsAreRefused) {
    write("a.csv", "x\n1\n");
    std::string bytes = bytesOf(findFiles("file", "a.csv", planned));
    EXPECT_THROW(fileListFrom("", context), Failure);
    bytes[bytes.size() / 2] ^= 1;
    EXPECT_THROW(fileListFrom(bytes, context), Failure);
    FileSurvey survey{Schema({{.name = "x"}}), {false, true}, {"it is empty"}, {}};
    EXPECT_THROW(fileSurveyFrom(bytesOf(survey), 3), Failure) << "another number of files";
    survey.reasons.clear();
    EXPECT_THROW(fileSurveyFrom(bytesOf(survey), 2), Failure) << "a file without a reason";
}

}  // namespace velmorak
