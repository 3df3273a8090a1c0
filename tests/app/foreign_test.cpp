#include "RecordedProgram.h"

#include <QzVersion.h>
#include <gmock/gmock.h>

#include <set>
#include <sstream>

using ::testing::ElementsAre;

namespace {

constexpr const char* script = R"(
kind Source Foreign
  out value
kind Sink Foreign
  in value 0
document foreign.zedra
  plugin Source From 50 200
  plugin Sink To 300 200
  bind To value From value
run blocks
)";

/// The symbols of the library's two classes that the program imports.
std::set<std::string> importsOf(const std::string& program) {
    Process process({"nm", "--dynamic", "--demangle", "--undefined-only", program});
    process.wait();
    std::set<std::string> names;
    std::istringstream lines(process.output());
    for (std::string line; std::getline(lines, line);) {
        const std::size_t start = line.find("Qz");
        // A sanitizer that checks the types of objects imports their type information.
        if (start != std::string::npos && line.find("typeinfo") == std::string::npos) {
            names.insert(line.substr(start, line.find('(') - start));
        }
    }
    return names;
}

}  // namespace

TEST(ForeignLibrary, takesThePlaceOfOursByItsFolderAlone) {
    RecordedProgram program(VELMORAK_PROGRAM, script, {{"LD_LIBRARY_PATH", VELMORAK_FOREIGN}});
    ASSERT_TRUE(program.start({"-a", "data.aida", "-run", "foreign.zedra"}));
    ASSERT_TRUE(waitFor([&] { return program.hasCalled("Run() [worker]"); }));
    EXPECT_EQ(program.quit(), 0);
    EXPECT_THAT(program.calls(), ElementsAre("QzManager(QzAnalysisFactory)", "loadAIDA(data.aida)",
                                             "SetFontSize(9, 11)", "GetListOfPlugins(0)", "GetPlugins()",
                                             "GetPlugins()", "GetExamples()", "ReadDocument(foreign.zedra)",
                                             "Run() [worker]", "Stop()", "Run has ended() [worker]", "~QzManager()"));
}

TEST(ForeignLibrary, needsToOfferOnlyTheNonVirtualMembersByName) {
    EXPECT_THAT(
        importsOf(VELMORAK_PROGRAM),
        ElementsAre("QzManager::GetExamples", "QzManager::GetListOfPlugins", "QzManager::GetPlugins",
                    "QzManager::QzManager", "QzManager::SetFontSize", "QzManager::loadAIDA", "QzManager::~QzManager"));
}

TEST(ForeignLibrary, ofAnotherVersionIsRefusedBeforeItIsCalled) {
    const TemporaryFolder folder;
    const std::string log = (folder.path() / "calls").string();
    Process program({VELMORAK_PROGRAM},
                    {.environment = {{"LD_LIBRARY_PATH", VELMORAK_FOREIGN_OTHER}, {"QZ_RECORDING_LOG", log}},
                     .folder = folder.path()});
    EXPECT_EQ(program.wait(), 1);
    EXPECT_EQ(program.errors(), "velmorak: this program needs version " + std::to_string(qzVersion) +
                                    " of the analysis library's interface, and QzManager.so offers version " +
                                    std::to_string(qzVersion + 1) +
                                    "; install the two from one build, or see LD_LIBRARY_PATH.\n");
    EXPECT_EQ(contentOf(log), "");
}

TEST(ForeignLibrary, ofNoVersionIsTakenAtItsWord) {
    Process recorded({"nm", "--dynamic", "--defined-only", VELMORAK_FOREIGN "/QzManager.so"});
    recorded.wait();
    EXPECT_EQ(recorded.output().find(qzVersionName), std::string::npos) << "the tests above run without a version";
    Process ours({"nm", "--dynamic", "--defined-only", VELMORAK_SHIPPED});
    ours.wait();
    EXPECT_NE(ours.output().find(qzVersionName), std::string::npos);
}
