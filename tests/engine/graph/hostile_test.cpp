#include "GraphFixture.h"

#include "graph/ManagerExtensions.h"

#include <sys/stat.h>
#include <random>

namespace velmorak::test {
namespace {

class HostileDocuments : public Graph {
protected:
    std::mt19937 random{20260214};

    std::size_t below(std::size_t limit) { return random() % limit; }

    /// Changes, removes, doubles or inserts a few bytes.
    std::string mutate(std::string text) {
        static constexpr std::string_view pieces[] = {"{",
                                                      "}",
                                                      "[",
                                                      "]",
                                                      ",",
                                                      ":",
                                                      "\"",
                                                      "null",
                                                      "1e308",
                                                      "-0",
                                                      "\\u0000",
                                                      "\"name\"",
                                                      "\"from\": [\"First\", \"sum\"]",
                                                      "true",
                                                      "\n",
                                                      "\xFF"};
        for (std::size_t count = 1 + below(4); count > 0; --count) {
            const std::size_t at = below(text.size());
            const std::size_t length = below(20);
            switch (below(4)) {
                case 0:
                    text[at] = static_cast<char>(random());
                    break;
                case 1:
                    text.erase(at, length);
                    break;
                case 2:
                    text.insert(at, text.substr(below(text.size()), length));
                    break;
                default:
                    text.insert(at, pieces[below(std::size(pieces))]);
            }
            if (text.empty()) {
                text = "{";
            }
        }
        return text;
    }
};

TEST_F(HostileDocuments, noMutationOfADocumentDoesHarm) {
    const Errors errors;
    int readable = 0;
    for (const char* file : {TEST_DATA "/pipeline.zedra", TEST_DATA "/foreign.zedra"}) {
        for (int i = 0; i < 2000; ++i) {
            QzManager fresh("QzAnalysisFactory");
            fresh.ReadDocument(folder.write("mutated.zedra", mutate(contentOf(file))));
            expectInStep(fresh);
            if (!lastReadError(fresh).empty()) {
                ASSERT_TRUE(fresh.plugins.empty());
                continue;
            }
            ++readable;
            const std::string text = fresh.DocumentText();
            QzManager again("QzAnalysisFactory");
            again.ReadDocument(folder.write("again.zedra", text));
            ASSERT_EQ(lastReadError(again), "") << text;
            ASSERT_EQ(again.DocumentText(), text);
        }
    }
    EXPECT_GT(readable, 100);
}

TEST_F(HostileDocuments, aNumberInTheFirstFieldIsKeptUnchanged) {
    const std::string document =
        "{\n  \"zedra\": 1,\n  \"plugins\": [],\n  \"a\": [1.50,-0 ,1e5\n],\n  \"b\": 12345678901234567890123\n}\n";
    read(document);
    EXPECT_EQ(manager.DocumentText(), document);
}

TEST_F(HostileDocuments, anUnknownNumberOfAnySizeIsKeptByteForByte) {
    const std::string document =
        "{\n  \"zedra\": 1,\n  \"plugins\": [],\n  \"a\": [1e309, -1.5E+99999],\n  \"b\": " + std::string(400, '9') +
        "\n}\n";
    read(document);
    EXPECT_EQ(manager.DocumentText(), document);
}

TEST_F(HostileDocuments, aTinyCoordinateIsZero) {
    read(R"({"zedra": 1, "plugins": [{"name": "A", "kind": "Pair", "position": [1e-400, -1e-999]}]})");
    float x = 1;
    float y = 1;
    node("A").GetPosition(x, y);
    EXPECT_EQ(x, 0);
    EXPECT_EQ(y, 0);
}

TEST_F(HostileDocuments, morePortsThanAnybodyNeedsAreRefused) {
    std::string outputs;
    for (int i = 0; i <= 1'000'000; ++i) {
        outputs += "{\"name\": \"" + std::to_string(i) + "\"},";
    }
    outputs.back() = ']';
    const Errors errors;
    read("{\"zedra\": 1, \"plugins\": [{\"name\": \"A\", \"kind\": \"B\", \"outputs\": [" + outputs + "}]}");
    EXPECT_THAT(errors.text(), testing::HasSubstr("the document has more than 1000000 inputs and outputs.\n"));
    EXPECT_THAT(manager.plugins, testing::IsEmpty());
}

TEST_F(HostileDocuments, manyPluginsAndBindingsAreReadInTime) {
    std::string plugins;
    for (int i = 0; i < 2000; ++i) {
        plugins += (i == 0 ? "" : ",") + ("{\"name\": \"N" + std::to_string(i) +
                                          "\", \"kind\": \"Pair\", \"inputs\": [{\"name\": \"a\", \"from\": [\"N0\", "
                                          "\"sum\"]}]}");
    }
    read("{\"zedra\": 1, \"plugins\": [" + plugins + "]}");
    EXPECT_EQ(manager.plugins.size(), 2000U);
    EXPECT_EQ(output("N0", "sum").consumers.size(), 2000U);
    expectInStep(manager);
}

TEST_F(HostileDocuments, aFileOfAnySizeIsRefusedUnread) {
    const Errors errors;
    const std::string file = folder.write("large.zedra", "{");
    std::filesystem::resize_file(file, std::uintmax_t{1} << 34U);
    manager.ReadDocument(file);
    EXPECT_EQ(errors.text(), file + ": is larger than 64 MiB.\n");
}

TEST_F(HostileDocuments, noNameForgesALineOrReachesTheTerminal) {
    const Errors errors;
    read(R"({"zedra": 1, "plugins": [{"name": "A\nDone.\u001b[2J", "kind": "No\rKind\u009b", "inputs": []},
        {"name": ")" +
         std::string(1000000, 'n') + R"(", "kind": "Pair", "inputs": [{"name": "a", "from": ["B", "c"]}]}]})");
    EXPECT_EQ(errors.lines(), 2);
    EXPECT_THAT(errors.text(), testing::HasSubstr("A\\nDone.\\x1B[2J is kept as it is: no collection offers its kind "
                                                  "\"No\\rKind\\u009B\"."));
    EXPECT_LT(errors.text().size(), 1000U);
}

TEST_F(HostileDocuments, aMessageOfAMegabyteKeepsItsEnds) {
    const Errors errors;
    const std::string name(1000000, 'n');
    read(R"({"zedra": 1, "plugins": [{"name": "A", "kind": "Pair", "inputs": [{"name": ")" + name +
         R"(", "from": ["B", "c"]}]}]})");
    EXPECT_THAT(errors.text(), testing::HasSubstr("A (Pair), input nnn"));
    EXPECT_THAT(errors.text(), testing::EndsWith("because there is no such input.\n"));
    EXPECT_LT(errors.text().size(), 5000U);
}

TEST_F(HostileDocuments, aPipeAsTheAidaFileIsRefusedWithoutWaitingForIt) {
    const Errors errors;
    const std::string fifo = folder.path / "data.fifo";
    ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
    EXPECT_FALSE(manager.loadAIDA(fifo));
    EXPECT_EQ(errors.text(),
              "The AIDA file " + fifo + " cannot be read: " + fifo + " is not a regular file (a FIFO).\n");
}

}  // namespace
}  // namespace velmorak::test
