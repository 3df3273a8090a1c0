#include "KindHarness.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdio>
#include <map>
#include <set>
#include <sstream>

namespace {

using namespace velmorak;
using test::shippedGroups;
using test::textIn;

namespace fs = std::filesystem;

/// Output of the program that describes kinds.
std::string described(const std::string& form, const std::string& group) {
    const std::string command = "'" VELMORAK_TEST_DESCRIBE "' " + form + " '" +
                                (test::collectionFolder(group) / (group + ".so")).string() + "'";
    std::string text;
    FILE* pipe = popen(command.c_str(), "r");
    std::array<char, 4096> buffer{};
    while (const std::size_t count = fread(buffer.data(), 1, buffer.size(), pipe)) {
        text.append(buffer.data(), count);
    }
    EXPECT_EQ(pclose(pipe), 0) << command;
    return text;
}

std::vector<std::string> kindNames() {
    std::vector<std::string> names;
    for (const auto& group : shippedGroups()) {
        for (const auto& kind : group.kinds) {
            names.push_back(kind->name());
        }
    }
    return names;
}

TEST(Catalogue, offersTheKindsByGroup) {
    using Names = std::vector<std::string>;
    const std::map<std::string, Names> wanted = {
        {"Arithmetic", {"Number", "Text", "Adder", "Subtractor", "Multiplier", "Divider", "Function", "Measurement"}},
        {"Data",
         {"AidaTable", "AidaHistogram", "AidaProfile", "AidaPoints", "AidaFunction", "CsvTable", "Geant4Histogram",
          "HepMcTable", "RandomTable", "RootTable", "RootHistogram", "RootProfile", "RootPoints", "RootValue",
          "YodaObjects", "Table"}},
        {"Fit", {"Fit"}},
        {"Formats",
         {"ArrowTable", "FitsTable", "Hdf5Table", "NumpyTable", "NumpyWriter", "ParquetTable", "ParquetWriter",
          "SqliteTable"}},
        {"Histogram",
         {"Histogram1D", "Histogram2D", "Histogram3D", "Profile1D", "Profile2D", "CategoryHistogram",
          "GroupedHistogram", "PickHistogram", "Rebin", "Scale", "Smooth", "Combine", "Project", "Cumulative",
          "Compare", "Statistics", "QuantileEdges"}},
        {"Output", {"Plot", "AidaWriter", "CsvWriter", "RootWriter", "Print", "Report", "YodaWriter"}},
        {"Table",
         {"Formula", "Filter", "Select", "Range", "Concat", "CutFlow", "Explode", "GroupBy", "Join", "Sort", "Unique",
          "Sample", "Tail", "Rename", "Window", "Resample", "PowerSpectrum"}},
    };
    std::map<std::string, Names> found;
    for (const auto& group : shippedGroups()) {
        for (const auto& kind : group.kinds) {
            found[group.name].push_back(kind->name());
        }
    }
    EXPECT_EQ(found, wanted);
}

TEST(Catalogue, everySummaryFileSaysWhatItsKindsSay) {
    for (const auto& group : shippedGroups()) {
        const fs::path source = fs::path(VELMORAK_TEST_SOURCE) / "collections" / group.name / "plugin_summary.txt";
        EXPECT_EQ(textIn(source), described("summary", group.name)) << group.name;
        EXPECT_EQ(textIn(source), textIn(test::collectionFolder(group.name) / "plugin_summary.txt"));
    }
}

TEST(Catalogue, everyLineOfASummaryFileCanBeReadByTheEditor) {
    for (const auto& group : shippedGroups()) {
        std::istringstream lines(textIn(test::collectionFolder(group.name) / "plugin_summary.txt"));
        for (std::string line; std::getline(lines, line);) {
            EXPECT_LT(line.size(), 512U) << line;
            const bool isHeading = line.starts_with("---- ") || line.starts_with("==== ");
            const bool looksLikeOne = line.find("----") != std::string::npos || line.find("====") != std::string::npos;
            EXPECT_EQ(isHeading, looksLikeOne) << line;
        }
    }
}

TEST(Catalogue, thePageOfACollectionSaysWhatItsKindsSay) {
    const fs::path docs = fs::path(VELMORAK_TEST_SOURCE) / "docs";
    for (const auto& group : shippedGroups()) {
        EXPECT_EQ(textIn(docs / "kinds" / (group.name + ".md")),
                  described("page '" VELMORAK_TEST_SOURCE "/examples'", group.name));
        EXPECT_NE(textIn(docs / "kinds.md").find("(kinds/" + group.name + ".md)"), std::string::npos) << group.name;
    }
}

TEST(Catalogue, thePicturesOfAPageAreThere) {
    const fs::path pages = fs::path(VELMORAK_TEST_SOURCE) / "docs" / "kinds";
    for (const auto& group : shippedGroups()) {
        std::istringstream lines(textIn(pages / (group.name + ".md")));
        for (std::string line; std::getline(lines, line);) {
            const std::size_t picture = line.find("](../examples/");
            if (picture != std::string::npos) {
                EXPECT_TRUE(fs::exists(pages / line.substr(picture + 2, line.size() - picture - 3))) << line;
            }
        }
    }
}

void expectSentence(const std::string& text, const std::string& where) {
    EXPECT_GT(text.size(), 10U) << where;
    EXPECT_TRUE(text.ends_with('.')) << where << ": " << text;
    EXPECT_EQ(text.find('\n'), std::string::npos) << where;
    EXPECT_EQ(text.find('|'), std::string::npos) << where;
}

TEST(Catalogue, everyKindInputAndOutputIsDescribed) {
    for (const auto& group : shippedGroups()) {
        for (const auto& kind : group.kinds) {
            expectSentence(kind->summary(), kind->name());
            const Ports ports =
                kind->ports({{"count", "2"}, {"objects", "2"}, {"expression", "a + cut"}, {"condition", "a > cut"}});
            for (const InputSpec& input : ports.inputs) {
                expectSentence(input.description, kind->name() + "." + input.name);
            }
            for (const OutputSpec& output : ports.outputs) {
                expectSentence(output.description, kind->name() + "." + output.name);
            }
        }
    }
}

TEST(Catalogue, namesAreSingleWordsAndUnique) {
    const std::vector<std::string> names = kindNames();
    EXPECT_EQ(std::set<std::string>(names.begin(), names.end()).size(), names.size());
    for (const auto& group : shippedGroups()) {
        for (const auto& kind : group.kinds) {
            std::set<std::string> inputs;
            for (const InputSpec& input : kind->ports({}).inputs) {
                EXPECT_EQ(input.name.find(' '), std::string::npos);
                EXPECT_TRUE(inputs.insert(input.name).second) << kind->name() << "." << input.name;
            }
        }
    }
}

TEST(Catalogue, theValueThatAKindBeginsWithIsOneThatItTakes) {
    for (const auto& group : shippedGroups()) {
        for (const auto& kind : group.kinds) {
            for (const InputSpec& input : kind->ports({}).inputs) {
                EXPECT_EQ(kind->refusal(input.name, input.value), "") << kind->name() << "." << input.name;
                double number = 0.0;
                if (input.type == ValueType::Number) {
                    EXPECT_TRUE(readNumber(input.value, number)) << kind->name() << "." << input.name;
                    EXPECT_TRUE(number >= input.minimum && number <= input.maximum);
                }
                if (input.type == ValueType::Choice) {
                    EXPECT_EQ(std::count(input.choices.begin(), input.choices.end(), input.value), 1);
                }
            }
        }
    }
}

}  // namespace
