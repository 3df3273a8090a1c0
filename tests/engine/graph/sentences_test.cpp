#include "GraphFixture.h"

#include <QzSentence.h>
#include <nlohmann/json.hpp>

#include <unistd.h>
#include <cstdlib>
#include <vector>

extern "C" QzSentenceFunction QzSentence;

namespace velmorak::test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

class Sentences : public Graph {
protected:
    Sentences() {
        add("Pair", "P");
        setenv("XDG_RUNTIME_DIR", folder.path.c_str(), 1);
    }
    ~Sentences() override { unsetenv("XDG_RUNTIME_DIR"); }

    /// What velmorak-view is told outside of runs.
    std::vector<std::string> announced() const {
        std::istringstream lines(
            contentOf(folder.path / "velmorak" / ("messages-" + std::to_string(getpid()) + ".jsonl")));
        std::vector<std::string> all;
        for (std::string line; std::getline(lines, line);) {
            all.push_back(nlohmann::json::parse(line).at("text"));
        }
        return all;
    }
};

TEST_F(Sentences, ofTheLibraryAndOfTheEditorAreAnnounced) {
    const Errors errors;
    setValue("P", "a", "one");
    read("{");
    EXPECT_EQ(errors.lines(), 2);
    QzSentence("Couldn't write /nowhere/pipe.zedra");
    EXPECT_EQ(errors.lines(), 2) << "the editor has said it itself";
    EXPECT_THAT(announced(), ElementsAre(HasSubstr("\"one\" is not a number; the value stays"), HasSubstr("read.zedra"),
                                         "Couldn't write /nowhere/pipe.zedra"));
}

}  // namespace
}  // namespace velmorak::test
