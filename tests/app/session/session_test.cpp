#include "Session.h"

#include <QzManager.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>

namespace {

namespace fs = std::filesystem;

const fs::path example = fs::path(VELMORAK_EXAMPLES) / "Particle_physics" / "Dimuon_mass.zedra";
constexpr const char* lastToRun = "AidaWriter \"Results\"";

// The row of the histogram's bins in its dialog: below the name, the table, the expression and the weight.
constexpr int binsRow = 4;
constexpr int binsInput = 3;

/// A language of the user interface.
struct Language {
    std::string name;
    std::map<std::string, std::string> environment;
};

void PrintTo(const Language& language, std::ostream* out) {
    *out << language.name;
}

/// Position of its group in the list of examples, which is in the order of names.
int groupOf(const fs::path& document) {
    const fs::path group = document.parent_path();
    return static_cast<int>(std::count_if(
        fs::directory_iterator(group.parent_path()), fs::directory_iterator(),
        [&group](const fs::directory_entry& entry) { return entry.is_directory() && entry.path() < group; }));
}

/// The results of the library for the example after the same edits.
std::string expectedText() {
    QzManager manager("QzAnalysisFactory");
    manager.ReadDocument(example.string());
    const int peak = manager.IndexOf("Peak");
    manager.SetInputValue(peak, binsInput, "30");
    manager.plugins.at(static_cast<std::size_t>(peak))->SetName("Zboson");
    return manager.DocumentText();
}

class InstalledSession : public testing::TestWithParam<Language> {
protected:
    void exampleOpened() {
        ASSERT_TRUE(session.start({}));
        // The last menu; "Examples" is above "About".
        ASSERT_TRUE(session.choose(-1, 2, "Examples"));
        session.chooseInGroup(groupOf(example));
        session.picture("Examples", "examples");
        session.confirm();
        ASSERT_TRUE(session.seesPipeline());
        EXPECT_EQ(session.output(), "Trying to open " + example.string() + "\n");
        ASSERT_TRUE(session.closeByManager("Examples"));
    }

    void runTwiceWithOtherBins() {
        ASSERT_TRUE(session.run(lastToRun)) << session.errors();
        session.picture("run");
        EXPECT_NE(histogram().find("numberOfBins=\"60\""), std::string::npos);
        fs::copy_file(results / "mass.png", fs::path(VELMORAK_PICTURES) / ("session-" + GetParam().name + "-mass.png"),
                      fs::copy_options::overwrite_existing);
        ASSERT_TRUE(session.select(pipeline, "Peak"));
        ASSERT_TRUE(session.openVariables("Peak"));
        session.type(binsRow, "30");
        session.pressButton("Peak Variables", 1);
        session.picture("Peak Variables", "variables");
        session.pressButton("Peak Variables", 0);
        ASSERT_TRUE(session.isGone("Peak Variables"));
        ASSERT_TRUE(session.run(lastToRun)) << session.errors();
        session.picture("run-again");
        EXPECT_NE(histogram().find("numberOfBins=\"30\""), std::string::npos);
    }

    void renamed() {
        ASSERT_TRUE(session.openVariables("Peak"));
        session.type(0, "Zboson");
        session.pressButton("Peak Variables", 0);
        ASSERT_TRUE(session.isGone("Peak Variables"));
        session.picture("renamed");
    }

    void savedAndStartedAgain() {
        ASSERT_TRUE(session.saveAs(document));
        EXPECT_EQ(contentOf(document), expectedText());
        ASSERT_TRUE(session.quit());
        ASSERT_TRUE(session.start({document.string()}));
        ASSERT_TRUE(session.seesPipeline());
        session.picture("started-again");
    }

    std::string histogram() const { return contentOf(results / "mass.aida"); }

    const SavedPipeline pipeline = SavedPipeline::read(example);
    Session session{"session-" + GetParam().name, GetParam().environment};
    const fs::path document = session.folder() / "walk.zedra";
    const fs::path results = session.folder() / "Dimuon_mass.results";
};

TEST_P(InstalledSession, whatWasDoneIsThereAfterTheNextStart) {
    ASSERT_NO_FATAL_FAILURE(exampleOpened());
    ASSERT_NO_FATAL_FAILURE(runTwiceWithOtherBins());
    ASSERT_NO_FATAL_FAILURE(renamed());
    ASSERT_NO_FATAL_FAILURE(savedAndStartedAgain());

    ASSERT_TRUE(session.select(SavedPipeline::read(document), "Zboson"));
    ASSERT_TRUE(session.openVariables("Zboson"));
    session.picture("Zboson Variables", "variables-again");
    session.pressButton("Zboson Variables", 2);
    ASSERT_TRUE(session.isGone("Zboson Variables"));
    // The program's document, saved again.
    fs::remove(document);
    ASSERT_TRUE(session.makes("ctrl+s", document));
    EXPECT_EQ(contentOf(document), expectedText());
    EXPECT_TRUE(session.quit());
    EXPECT_EQ(session.errors().find("ocale"), std::string::npos) << session.errors();
}

INSTANTIATE_TEST_SUITE_P(Languages, InstalledSession,
                         testing::Values(Language{"plain", {{"LC_ALL", "C.UTF-8"}}},
                                         Language{"german",
                                                  {{"LC_ALL", "de_DE.UTF-8"}, {"LOCPATH", VELMORAK_TEST_LOCALES}}}),
                         [](const testing::TestParamInfo<Language>& language) { return language.param.name; });

}  // namespace
