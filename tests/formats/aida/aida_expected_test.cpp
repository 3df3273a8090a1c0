#include <gmock/gmock.h>

#include <cstdio>
#include <cstring>
#include <fstream>
#include <map>
#include <sstream>

#include "support.h"

#include <velmorak/FunctionObject.h>
#include <velmorak/Points.h>
#include <velmorak/Profile.h>

namespace velmorak {
namespace {

/// "2 cloud1d", "5 points", ... of a line, by element name.
using Counts = std::map<std::string, std::size_t>;

struct Expected {
    std::string file;
    std::string container;
    Counts counts;
};

void addCounts(const std::string& cell, char separator, Counts& counts) {
    std::istringstream parts(cell);
    for (std::string part; std::getline(parts, part, separator);) {
        std::istringstream words(part);
        std::size_t count = 0;
        std::string what;
        if (words >> count && std::getline(words >> std::ws, what)) {
            what.erase(what.find_last_not_of(' ') + 1);
            counts[what] += count;
        }
    }
}

std::vector<Expected> expectedFiles(const std::filesystem::path& table) {
    std::vector<Expected> files;
    std::ifstream lines(table);
    for (std::string line; std::getline(lines, line);) {
        std::istringstream cells(line);
        std::string cell;
        std::vector<std::string> all;
        while (std::getline(cells, cell, '|')) {
            all.push_back(cell);
        }
        if (all.size() < 5 || all[1].find('/') == std::string::npos) {
            continue;
        }
        Expected file{all[1].substr(1, all[1].size() - 2), all[2].substr(1, all[2].size() - 2), {}};
        addCounts(all[3], ',', file.counts);
        addCounts(all[4], ';', file.counts);
        files.push_back(std::move(file));
    }
    return files;
}

class ExpectedContents : public AidaFiles {
protected:
    static std::filesystem::path shared(const std::string& name) {
        return std::filesystem::path(AIDA_SHARED_FILES) / name;
    }
    static bool isHere() {
        const bool isThere = std::filesystem::exists(shared("expected.md"));
        if (!isThere) {
            std::puts("the files of other programs are not here: nothing to compare");
        }
        return isThere;
    }
    Counts countsOf(const std::filesystem::path& file) {
        Counts counts;
        const auto entries = listAida(file, run);
        for (const AidaEntry& entry : entries) {
            ++counts[entry.element];
            if (entry.schema.size() == 0 || entry.element == "histogram1d") {
                continue;
            }
            const bool isTuple = entry.element == "tuple";
            if (failureOf([&] { openAidaTable(file, entry.path, run); }) == "no failure") {
                counts[isTuple ? "tuple rows" : "cloud entries"] += readRows(file, entry.path, run).count();
            }
        }
        const auto objects = readAidaObjects(file, run);
        EXPECT_EQ(objects.size(), entries.size());
        for (const AidaObject& object : objects) {
            counts["bins written"] += object.bins;
            if (const auto* points = dynamic_cast<const Points*>(object.object.get())) {
                counts["points"] += points->size();
            }
        }
        std::erase_if(counts, [](const auto& count) { return count.second == 0; });
        return counts;
    }
};

TEST_F(ExpectedContents, areFoundInEveryFile) {
    if (!isHere()) {
        return;
    }
    const auto files = expectedFiles(shared("expected.md"));
    EXPECT_GT(files.size(), 40U);
    for (const Expected& expected : files) {
        const bool isCounted = !expected.counts.empty() || expected.container == "plain";
        if (!isCounted) {
            continue;
        }
        EXPECT_EQ(countsOf(shared(expected.file)), expected.counts) << expected.file;
    }
    EXPECT_EQ(countsOf(shared("own/all.zip")), countsOf(shared("own/all.aida")));
    EXPECT_EQ(countsOf(shared("own/store_layout.zip")),
              (Counts{{"histogram1d", 1}, {"tuple", 1}, {"tuple rows", 2}, {"bins written", 4}}));
    EXPECT_EQ(countsOf(shared("others/AIDATestFile.wbxml.aida")), countsOf(shared("others/AIDATestFile.ascii.aida")));
}

TEST_F(ExpectedContents, areKeptAsFarAsADamagedFileIsWhole) {
    if (!isHere()) {
        return;
    }
    for (const char* name : {"own/truncated.gz.aida", "others/to0.aida", "others/to1.aida"}) {
        run.warnings.clear();
        const std::string failure = failureOf([&] { readAidaObjects(shared(name), run); });
        const std::string told = failure == "no failure" ? run.warnings.at(run.warnings.size() - 1) : failure;
        EXPECT_THAT(told, ::testing::HasSubstr("byte")) << name;
    }
}

/// A text that differs wherever two objects do.
std::string dump(const DataObject& object) {
    std::string text = object.name + "|" + object.title;
    for (const AnnotationItem& item : object.annotation) {
        text += "|" + item.key + "=" + item.value + (item.isSticky ? "!" : "");
    }
    const auto add = [&](double number) { text += " " + textOf(number); };
    if (const auto* function = dynamic_cast<const FunctionObject*>(&object)) {
        text += function->codelet;
        for (const auto& parameter : function->parameters) {
            text += " " + parameter.name;
            add(parameter.value);
        }
        for (const auto& argument : function->arguments) {
            for (const auto& range : argument.ranges) {
                add(range.low);
                add(range.high);
            }
        }
    }
    return text;
}

std::string bytesOf(const DataObject& object) {
    if (const auto* histogram = dynamic_cast<const Histogram1D*>(&object)) {
        return histogram->toBytes();
    }
    if (const auto* histogram = dynamic_cast<const Histogram2D*>(&object)) {
        return histogram->toBytes();
    }
    if (const auto* histogram = dynamic_cast<const Histogram3D*>(&object)) {
        return histogram->toBytes();
    }
    if (const auto* profile = dynamic_cast<const Profile1D*>(&object)) {
        return profile->toBytes();
    }
    if (const auto* profile = dynamic_cast<const Profile2D*>(&object)) {
        return profile->toBytes();
    }
    if (const auto* points = dynamic_cast<const Points*>(&object)) {
        return points->toBytes();
    }
    return dump(object);
}

void expectSameValues(const Column& a, const Column& b, const std::string& where) {
    EXPECT_EQ(a.offsets, b.offsets) << where;
    ASSERT_EQ(a.values.index(), b.values.index()) << where;
    if (a.type() == ColumnType::Integer) {
        // The binary form holds every number of a tuple as a double.
        for (std::size_t i = 0; i < std::min(a.integers().size(), b.integers().size()); ++i) {
            EXPECT_EQ(static_cast<double>(a.integers()[i]), static_cast<double>(b.integers()[i])) << where;
        }
        EXPECT_EQ(a.integers().size(), b.integers().size()) << where;
        return;
    }
    if (a.type() != ColumnType::Real) {
        EXPECT_EQ(a.values, b.values) << where;
        return;
    }
    ASSERT_EQ(a.reals().size(), b.reals().size()) << where;
    EXPECT_EQ(std::memcmp(a.reals().data(), b.reals().data(), a.reals().size() * sizeof(double)), 0) << where;
}

TEST_F(ExpectedContents, areTheSameInTheBinaryTwinValueByValue) {
    if (!isHere()) {
        return;
    }
    const auto text = shared("others/AIDATestFile.ascii.aida");
    const auto binary = shared("others/AIDATestFile.wbxml.aida");
    const auto ofText = readAidaObjects(text, run);
    const auto ofBinary = readAidaObjects(binary, run);
    ASSERT_EQ(ofText.size(), ofBinary.size());
    for (std::size_t i = 0; i < ofText.size(); ++i) {
        EXPECT_EQ(ofText[i].path, ofBinary[i].path);
        ASSERT_EQ(ofText[i].object == nullptr, ofBinary[i].object == nullptr) << ofText[i].path;
        if (ofText[i].object) {
            EXPECT_EQ(dump(*ofText[i].object), dump(*ofBinary[i].object));
            EXPECT_TRUE(bytesOf(*ofText[i].object) == bytesOf(*ofBinary[i].object)) << ofText[i].path;
        }
    }
    for (const AidaEntry& entry : listAida(text, run)) {
        if (failureOf([&] { openAidaTable(text, entry.path, run); }) != "no failure") {
            continue;
        }
        const Rows a = readRows(text, entry.path, run);
        const Rows b = readRows(binary, entry.path, run);
        EXPECT_EQ(a.schema, b.schema);
        for (std::size_t column = 0; column < a.columns.size(); ++column) {
            expectSameValues(a.columns[column], b.columns[column], entry.path);
        }
    }
}

}  // namespace
}  // namespace velmorak
