#include "GraphFixture.h"

#include "graph/LibraryConfig.h"
#include "graph/collections/Catalogue.h"

#include <cstdlib>
#include <set>

namespace velmorak::test {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

std::vector<std::string> idsOf(const Catalogue& catalogue) {
    std::vector<std::string> ids;
    for (const QzKind& kind : catalogue.kinds()) {
        ids.push_back(kind.id);
    }
    return ids;
}

TEST(Catalogue, kindsAreSortedByGroupAndName) {
    const Errors errors;
    const Catalogue catalogue({{TEST_COLLECTIONS}, {}}, "QzAnalysisFactory");
    EXPECT_THAT(idsOf(catalogue), ElementsAre("Drains/Drain", "TestCollection/Letters", "TestCollection/Pair",
                                              "TestCollection/Waiter", "Twice/Single"));
}

TEST(Catalogue, aRecordNamesTheSharedObjectOfItsKind) {
    const Errors errors;
    const Catalogue catalogue({{TEST_COLLECTIONS}, {}}, "QzAnalysisFactory");
    const QzKind& pair = catalogue.kinds()[catalogue.find("Pair")];
    EXPECT_EQ(pair.group, "TestCollection");
    EXPECT_EQ(pair.library, TEST_COLLECTIONS "/TestCollection/TestCollection.so");
    EXPECT_EQ(pair.directory, TEST_COLLECTIONS "/TestCollection/");
    EXPECT_EQ(pair.summary, "Adds two numbers.");
    EXPECT_EQ(catalogue.kind(catalogue.find("Pair")).name(), "Pair");
    EXPECT_EQ(catalogue.find("Absent"), catalogue.kinds().size());
}

TEST(Catalogue, unusableCollectionsAreSkippedWithOneSentenceEach) {
    const Errors errors;
    const Catalogue catalogue({{TEST_COLLECTIONS}, {}}, "QzAnalysisFactory");
    EXPECT_EQ(errors.lines(), 6);
    EXPECT_THAT(errors.text(), HasSubstr("Damaged/Damaged.so is skipped: "));
    EXPECT_THAT(errors.text(), HasSubstr("NoFactory.so is skipped: it does not offer QzAnalysisFactory."));
    EXPECT_THAT(errors.text(),
                HasSubstr("OldSdk.so is skipped: it was built with version 0123456789abcdef of the SDK, and "
                          "this library with " VELMORAK_SDK_VERSION "; rebuild it."));
    EXPECT_THAT(errors.text(), HasSubstr("Throwing.so is skipped: its licence has run out.\n"));
    EXPECT_THAT(errors.text(), HasSubstr("The kind Single of the collection"));
    EXPECT_THAT(errors.text(), HasSubstr("its name \"two words\" is not one word."));
}

TEST(Catalogue, anotherFunctionNameFindsNothing) {
    const Errors errors;
    const Catalogue catalogue({{TEST_COLLECTIONS}, {}}, "OtherFactory");
    EXPECT_THAT(catalogue.kinds(), IsEmpty());
    EXPECT_THAT(errors.text(), HasSubstr("TestCollection.so is skipped: it does not offer OtherFactory."));
}

TEST(Catalogue, aFolderThatIsNotThereOffersNothing) {
    const Errors errors;
    EXPECT_THAT(Catalogue({{"/nowhere"}, {"/nowhere"}}, "QzAnalysisFactory").kinds(), IsEmpty());
    EXPECT_EQ(errors.text(), "");
}

TEST(Catalogue, anEarlierFolderWinsWhereAKindIsOfferedTwice) {
    const Folder copies;
    fs::create_directories(copies.path / "TestCollection");
    fs::copy(TEST_COLLECTIONS "/TestCollection/TestCollection.so", copies.path / "TestCollection");
    const Errors errors;
    const Catalogue catalogue({{copies.path, TEST_COLLECTIONS}, {}}, "QzAnalysisFactory");
    EXPECT_EQ(catalogue.kinds()[catalogue.find("Pair")].directory, (copies.path / "TestCollection/").string());
    EXPECT_THAT(errors.text(), HasSubstr("The kind Pair of the collection " TEST_COLLECTIONS));
}

TEST(Catalogue, theSameFolderTwiceIsReadOnce) {
    const Errors errors;
    const Catalogue catalogue({{TEST_COLLECTIONS, TEST_COLLECTIONS "/../collections"}, {}}, "QzAnalysisFactory");
    EXPECT_EQ(errors.lines(), 6);
}

TEST(LibraryConfig, onlyTheValue1AllowsToWriteAnywhere) {
    EXPECT_FALSE(libraryConfigFromEnvironment().mayWriteAnywhere);
    setenv("VELMORAK_WRITE_ANYWHERE", "yes", 1);
    EXPECT_FALSE(libraryConfigFromEnvironment().mayWriteAnywhere);
    setenv("VELMORAK_WRITE_ANYWHERE", "1", 1);
    EXPECT_TRUE(libraryConfigFromEnvironment().mayWriteAnywhere);
    unsetenv("VELMORAK_WRITE_ANYWHERE");
}

TEST(LibraryConfig, theEnvironmentComesBeforeWhatLiesBesideTheLibrary) {
    setenv("VELMORAK_EXAMPLES", "/one::/two:", 1);
    const Catalogue::SearchPath places = libraryConfigFromEnvironment().search;
    unsetenv("VELMORAK_EXAMPLES");
    ASSERT_EQ(places.collections.size(), 3U);
    EXPECT_EQ(places.collections[0], TEST_COLLECTIONS);
    EXPECT_EQ(places.collections[1], fs::path(std::getenv("XDG_DATA_HOME")) / "velmorak" / "collections");
    EXPECT_TRUE(fs::exists(places.collections[2].parent_path() / "QzManager.so"));
    EXPECT_EQ(places.collections[2].filename(), "collections");
    ASSERT_EQ(places.examples.size(), 3U);
    EXPECT_EQ(places.examples[0], "/one");
    EXPECT_EQ(places.examples[1], "/two");
    EXPECT_EQ(places.examples[2].filename(), "examples");
}

TEST(Catalogue, everyManagerHasTheSameLists) {
    const QzManager first("QzAnalysisFactory");
    const auto* const kinds = &QzManager::GetPlugins();
    const auto* const examples = &QzManager::GetExamples();
    const std::size_t count = kinds->size();
    const QzManager second("OtherFactory");
    EXPECT_EQ(&QzManager::GetPlugins(), kinds);
    EXPECT_EQ(&QzManager::GetExamples(), examples);
    EXPECT_EQ(kinds->size(), count);
    std::set<std::string> names;
    for (const QzKind& kind : *kinds) {
        EXPECT_TRUE(names.insert(kind.name).second) << kind.name;
    }
}

}  // namespace
}  // namespace velmorak::test
