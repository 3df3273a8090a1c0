#include <gmock/gmock.h>

#include <cmath>
#include <cstdio>

#include "support.h"

namespace velmorak {
namespace {

/// Files that other programs wrote. They are no part of the tree; where they are missing, a line says so.
class OtherPrograms : public AidaFiles {
protected:
    bool areHere() const {
        const bool isThere = std::filesystem::is_directory(AIDA_FILES_OF_OTHERS);
        if (!isThere) {
            std::puts("the files of other programs are not here: nothing to compare");
        }
        return isThere;
    }
    static std::filesystem::path other(const std::string& name) {
        return std::filesystem::path(AIDA_FILES_OF_OTHERS) / name;
    }
    std::size_t rowsIn(const std::filesystem::path& file, const std::string& object) {
        const Rows rows = readRows(file, object, run);
        EXPECT_EQ(rows.failure, "");
        return rows.count();
    }
    /// Rows of all tuples or all clouds of a file.
    std::size_t allRows(const std::filesystem::path& file, std::string_view element) {
        std::size_t rows = 0;
        for (const AidaEntry& entry : listAida(file, run)) {
            if (std::string_view(entry.element).substr(0, element.size()) == element) {
                rows += rowsIn(file, entry.path);
            }
        }
        return rows;
    }
};

TEST_F(OtherPrograms, writeTuplesThatAreReadWhole) {
    if (!areHere()) {
        return;
    }
    EXPECT_EQ(rowsIn(other("tuple.xml.gz"), ""), 501U);
    EXPECT_EQ(rowsIn(other("shorttup.xml"), "/100"), 14U);
    const Rows rows = readRows(other("shorttup.xml"), "", run);
    EXPECT_EQ(rows.columns[3].reals()[1], 6.57688951);
}

TEST_F(OtherPrograms, writeCloudsThatAreReadWhole) {
    if (!areHere()) {
        return;
    }
    EXPECT_EQ(allRows(other("clouds.xml.gz"), "cloud"), 410U);
}

TEST_F(OtherPrograms, writeEveryKindOfTuple) {
    if (!areHere()) {
        return;
    }
    const auto file = other("AIDATestFile.ascii.aida");
    EXPECT_EQ(listAida(file, run).size(), 23U);
    EXPECT_EQ(allRows(file, "tuple"), 60U);
    const Rows tracks = readRows(file, "/Tuples/Structure Tuple", run);
    EXPECT_TRUE(tracks.schema.find("tracks.px"));
    EXPECT_FALSE(tracks.schema.find("tracks.hits"));
    const Rows strings = readRows(file, "String Tuple", run);
    EXPECT_EQ(strings.columns[0].texts()[1], "b");
    EXPECT_EQ(readRows(file, "Funny String Tuple", run).columns[0].texts()[0], "<HTML>&#913;");
}

TEST_F(OtherPrograms, writeGzipFilesThatAreDamaged) {
    if (!areHere()) {
        return;
    }
    for (const char* name : {"to0.aida", "to1.aida"}) {
        run.warnings.clear();
        const std::string failure = failureOf([&] { listAida(other(name), run); });
        EXPECT_TRUE(failure != "no failure" || !run.warnings.empty()) << name;
    }
}

}  // namespace
}  // namespace velmorak
