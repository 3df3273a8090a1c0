#include "GraphFixture.h"

#include "graph/collections/Catalogue.h"

namespace velmorak::test {
namespace {

using testing::ElementsAre;

class Examples : public testing::Test {
protected:
    Folder first;
    Folder second;

    Catalogue list() { return {{{}, {first.path, second.path}}, "QzAnalysisFactory"}; }
    std::vector<std::string> listed() {
        std::vector<std::string> all;
        const Catalogue catalogue = list();
        for (const QzExample& each : catalogue.examples()) {
            all.push_back(each.group + '/' + each.name);
        }
        return all;
    }
};

TEST_F(Examples, groupsAreFoldersWithBlanksForUnderscores) {
    first.write("Two_muons/b.zedra", "{}");
    first.write("Two_muons/a.zedra", "{}");
    first.write("First_steps/sum.zedra", "{}");
    first.write("First_steps/data.csv", "1");
    first.write("stray.zedra", "{}");
    EXPECT_THAT(listed(), ElementsAre("First steps/sum.zedra", "Two muons/a.zedra", "Two muons/b.zedra"));
}

TEST_F(Examples, anEarlierFolderComesFirstAndGroupsStayTogether) {
    second.write("A/one.zedra", "{}");
    second.write("M/two.zedra", "{}");
    first.write("M/three.zedra", "{}");
    EXPECT_THAT(listed(), ElementsAre("M/three.zedra", "M/two.zedra", "A/one.zedra"));
}

TEST_F(Examples, directoryAndNameMakeThePath) {
    first.write("A/one.zedra", "{}");
    const QzExample example = list().examples().at(0);
    EXPECT_EQ(contentOf(example.directory + '/' + example.name), "{}");
    EXPECT_NE(example.directory.back(), '/');
}

TEST_F(Examples, theSummaryIsTheDocuments) {
    first.write("A/damaged.zedra", "{");
    first.write("A/good.zedra", R"({"zedra": 1, "summary": "Shows something.", "plugins": []})");
    const Errors errors;
    const Catalogue catalogue = list();
    EXPECT_EQ(catalogue.examples().at(0).summary, "");
    EXPECT_EQ(catalogue.examples().at(1).summary, "Shows something.");
    EXPECT_EQ(errors.text(), "");
}

TEST_F(Examples, filesBelowTheirFolderAreExamplesAlsoThroughALink) {
    const std::string file = first.write("A/one.zedra", "{}");
    const Folder elsewhere;
    std::filesystem::create_symlink(file, elsewhere.path / "link.zedra");
    const Catalogue catalogue = list();
    EXPECT_TRUE(catalogue.isExample(file));
    EXPECT_TRUE(catalogue.isExample(elsewhere.path / "link.zedra"));
    EXPECT_TRUE(catalogue.isExample(first.path / "A/../A/one.zedra"));
    EXPECT_FALSE(catalogue.isExample(elsewhere.path / "one.zedra"));
    EXPECT_FALSE(catalogue.isExample(first.path.string() + "-not/A/one.zedra"));
}

}  // namespace
}  // namespace velmorak::test
