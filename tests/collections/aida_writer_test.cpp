#include "KindHarness.h"

#include <gtest/gtest.h>

#include <velmorak/Aida.h>

#include <cmath>
#include <limits>

namespace {

using namespace velmorak;
using test::KindHarness;
using test::tableOf;

namespace fs = std::filesystem;

std::shared_ptr<Histogram1D> filled(const std::string& name) {
    auto histogram = std::make_shared<Histogram1D>(Axis(4, 0, 4));
    histogram->fill(1.1, 0.3);
    histogram->name = name;
    histogram->title = "A <title> & more";
    return histogram;
}

std::vector<std::string> pathsIn(const fs::path& file, KindHarness& bench) {
    std::vector<std::string> paths;
    for (const AidaEntry& entry : listAida(file, bench)) {
        paths.push_back(entry.element + " " + entry.path);
    }
    return paths;
}

TEST(AidaWriterKind, writesHistogramsUnderTheirNames) {
    KindHarness bench("AidaWriter", "out");
    bench.set("objects", "2").set("folder", "/run1");
    bench.wire("object", DataObjectPtr(filled("a"))).wire("object2", DataObjectPtr(filled("b"))).run();
    EXPECT_EQ(pathsIn(bench.folder() / "out.aida", bench),
              (std::vector<std::string>{"histogram1d /run1/a", "histogram1d /run1/b"}));
}

TEST(AidaWriterKind, aNameThatIsTakenGetsANumber) {
    KindHarness bench("AidaWriter", "out");
    bench.set("objects", "2");
    bench.wire("object", DataObjectPtr(filled("a"))).wire("object2", DataObjectPtr(filled("a"))).run();
    EXPECT_EQ(pathsIn(bench.folder() / "out.aida", bench),
              (std::vector<std::string>{"histogram1d /a", "histogram1d /a_2"}));
}

TEST(AidaWriterKind, aTableReadsBackToTheLastBit) {
    const std::vector<double> x = {0.1, -0.0, 1e-310, std::numeric_limits<double>::infinity(), 1.0 / 3.0};
    KindHarness writer("AidaWriter", "out");
    writer.set("file", "table.aida").wire("object", tableOf({{"x", x}}, 2)).run();
    KindHarness reader("AidaTable");
    reader.set("file", (writer.folder() / "table.aida").string()).run();
    EXPECT_EQ(reader.table().column("x"), x);
    EXPECT_TRUE(std::signbit(reader.table().column("x")[1]));
}

TEST(AidaWriterKind, objectsKeepTheirOrderAroundATable) {
    KindHarness bench("AidaWriter", "out");
    bench.set("objects", "3").wire("object2", tableOf({{"x", {1, 2, 3}}}, 2));
    bench.wire("object", DataObjectPtr(filled("a"))).wire("object3", DataObjectPtr(filled("b"))).run();
    EXPECT_EQ(pathsIn(bench.folder() / "out.aida", bench),
              (std::vector<std::string>{"histogram1d /a", "tuple /source", "histogram1d /b"}));
}

TEST(AidaWriterKind, aTableWithoutRowsIsWrittenToo) {
    KindHarness bench("AidaWriter", "out");
    bench.wire("object", tableOf({{"x", {}}}, 2)).run();
    EXPECT_EQ(pathsIn(bench.folder() / "out.aida", bench), (std::vector<std::string>{"tuple /source"}));
}

TEST(AidaWriterKind, twoTablesAreAFailure) {
    KindHarness bench("AidaWriter", "out");
    bench.set("objects", "2").wire("object", tableOf({{"x", {1}}}, 2)).wire("object2", tableOf({{"x", {1}}}, 2));
    EXPECT_TRUE(bench.failure().starts_with("object2: ")) << bench.failure();
    EXPECT_TRUE(fs::is_empty(bench.folder()));
}

TEST(AidaWriterKind, aNumberOrTextHasNoPlace) {
    KindHarness bench("AidaWriter", "out");
    EXPECT_TRUE(bench.failure().starts_with("object: ")) << bench.failure();
    bench.wire("object", 3.0);
    EXPECT_TRUE(bench.failure().starts_with("object: ")) << bench.failure();
    EXPECT_TRUE(fs::is_empty(bench.folder()));
}

TEST(AidaWriterKind, refusesAFolderThatDoesNotBeginAtTheRoot) {
    const Kind& writer = test::shippedKind("AidaWriter");
    EXPECT_EQ(writer.refusal("folder", "/run1/muons"), "");
    EXPECT_NE(writer.refusal("folder", "run1"), "");
    EXPECT_NE(writer.refusal("folder", ""), "");
    KindHarness bench("AidaWriter", "out");
    bench.wire("folder", std::string("run1")).wire("object", DataObjectPtr(filled("a")));
    EXPECT_TRUE(bench.failure().starts_with("folder: ")) << bench.failure();
}

TEST(AidaTableKind, saysThatThereIsNoFile) {
    KindHarness bench("AidaTable");
    EXPECT_TRUE(bench.failure().starts_with("file: ")) << bench.failure();
}

TEST(AidaTableKind, namesTheFileThatIsMissing) {
    KindHarness bench("AidaTable");
    bench.set("file", "/no/such/file.aida");
    EXPECT_NE(bench.failure().find("/no/such/file.aida"), std::string::npos) << bench.failure();
}

TEST(AidaTableKind, readsTheObjectThatIsNamed) {
    KindHarness writer("AidaWriter", "out");
    writer.set("folder", "/deep/er").wire("object", tableOf({{"x", {4, 5}}}, 2)).run();
    KindHarness reader("AidaTable");
    reader.set("file", (writer.folder() / "out.aida").string()).set("object", "/deep/er/source").run();
    EXPECT_EQ(reader.table().column("x"), (std::vector<double>{4, 5}));
    EXPECT_NE(reader.set("object", "/deep/other").failure().find("/deep/er/source"), std::string::npos);
}

}  // namespace
