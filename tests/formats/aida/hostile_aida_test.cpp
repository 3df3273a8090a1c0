#include <gmock/gmock.h>

#include "PlainSums.h"

#include <archive.h>
#include <sys/stat.h>

#include <cmath>
#include <fstream>

#include "aida/write/AidaObjectWriter.h"
#include "support.h"

#include <velmorak/CompressedFile.h>
#include <velmorak/Points.h>
#include <velmorak/Profile.h>

namespace velmorak {
namespace {

using ::testing::EndsWith;
using ::testing::HasSubstr;

/// Files that ask for more than any file that means well, or are none.
using HostileAida = AidaFiles;

/// Counts how often it is asked whether the run is to end, and says yes after a number of times.
class AskedRun : public QuietContext {
public:
    explicit AskedRun(std::size_t maxTimes = ~std::size_t{0}) : most(maxTimes) {}
    bool isStopping() const override { return ++asked > most; }

    mutable std::size_t asked = 0;

private:
    std::size_t most;
};

std::string repeated(const std::string& text, std::size_t times) {
    std::string all;
    all.reserve(text.size() * times);
    for (std::size_t time = 0; time < times; ++time) {
        all += text;
    }
    return all;
}

std::string zipOf(std::size_t files, const std::string& last) {
    std::string bytes(files * 300 + 4096, '\0');
    std::size_t used = 0;
    archive* target = archive_write_new();
    archive_write_set_format_zip(target);
    archive_write_set_bytes_in_last_block(target, 1);
    archive_write_open_memory(target, bytes.data(), bytes.size(), &used);
    for (std::size_t file = 0; file <= files; ++file) {
        const std::string content = file < files ? "not this" : last;
        addFile(target, "file" + std::to_string(file), content);
    }
    archive_write_free(target);
    bytes.resize(used);
    return bytes;
}

const std::string oneTuple =
    "<tuple name='t'><columns><column name='x'/></columns><rows><row><entry value=\"1\"/></row></rows></tuple>";

TEST_F(HostileAida, thatIsNoRegularFileIsRefusedByEveryReader) {
    const std::filesystem::path fifo = folder / "pipe.aida";
    ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
    for (const auto& each : std::vector<std::pair<std::filesystem::path, std::string>>{
             {fifo, "is not a regular file (a FIFO)"},
             {"/dev/zero", "is not a regular file (a character device)"},
             {folder, "is a folder"}}) {
        const std::filesystem::path& file = each.first;
        const std::string& kind = each.second;
        EXPECT_THAT(failureOf([&] { listAida(file, run); }), EndsWith(kind));
        EXPECT_THAT(failureOf([&] { readAidaObjects(file, run); }), EndsWith(kind));
        EXPECT_THAT(failureOf([&] { openAidaTable(file, "/t", run); }), EndsWith(kind));
        EXPECT_THAT(failureOf([&] { CompressedFile packed(file); }), EndsWith(kind));
    }
}

TEST_F(HostileAida, withALongCommentIsNotParsedAgainAndAgain) {
    const std::string comment = "<!--" + std::string(16U << 20U, ' ') + "-->";
    for (const std::string& objects : {comment + oneTuple, oneTuple.substr(0, oneTuple.find("<row>")) + comment +
                                                               oneTuple.substr(oneTuple.find("<row>"))}) {
        const auto file = fileWith("<aida>" + objects + "</aida>");
        AskedRun asked;
        EXPECT_EQ(readRows(file, "/t", asked).count(), 1U);
        EXPECT_LT(asked.asked, 40U) << "once for each piece that the parser gets";
    }
}

TEST_F(HostileAida, hasALimitForItsDepth) {
    const auto file = aidaWith(repeated("<a>", 3000));
    const std::string sentence = "elements are nested deeper than 1000";
    EXPECT_THAT(failureOf([&] { listAida(file, run); }), HasSubstr(sentence));
    EXPECT_THAT(failureOf([&] { readAidaObjects(file, run); }), HasSubstr(sentence));
    EXPECT_THAT(failureOf([&] { openAidaTable(file, "/t", run); }), HasSubstr("line 3, byte"));
}

TEST_F(HostileAida, hasLimitsForItsTagsAndNames) {
    const std::string long65(65U << 20U, 'a');
    EXPECT_THAT(failureOf([&] { listAida(fileWith("<aida><tuple name='" + long65), run); }),
                HasSubstr("a tag is longer than 64 MB"));
    EXPECT_THAT(failureOf([&] { listAida(fileWith("<aida><" + std::string(2000, 'a') + "/></aida>"), run); }),
                HasSubstr("the name of an element is longer than 1000 bytes"));
}

TEST_F(HostileAida, hasALimitForDifferentNames) {
    std::string elements;
    std::string attributes;
    std::string entities;
    for (int number = 0; number < 10'100; ++number) {
        elements += "<e" + std::to_string(number) + "/>";
        attributes += " a" + std::to_string(number) + "='1'";
        entities += "<!ENTITY e" + std::to_string(number) + " '1'>";
    }
    const std::string sentence = "there are more than 10000 different names of elements or attributes";
    EXPECT_THAT(failureOf([&] { listAida(aidaWith(elements), run); }), HasSubstr(sentence));
    EXPECT_THAT(failureOf([&] { listAida(aidaWith("<item" + attributes + "/>"), run); }), HasSubstr(sentence));
    EXPECT_THAT(failureOf([&] { listAida(fileWith("<!DOCTYPE aida [" + entities + "]><aida/>"), run); }),
                HasSubstr("more than 10000 entities are declared"));
}

TEST_F(HostileAida, hasALimitForACodelet) {
    const std::string points = "<dataPointSet name='p' dimension='1'/>";
    const auto file =
        aidaWith("<function name='f'><codelet>" + std::string(2U << 20U, 'x') + "</codelet></function>" + points);
    const auto objects = readAidaObjects(file, run);
    ASSERT_EQ(objects.size(), 2U);
    EXPECT_EQ(objects[0].object, nullptr);
    EXPECT_NE(objects[1].object, nullptr);
    ASSERT_EQ(run.warnings.size(), 1U);
    EXPECT_THAT(run.warnings[0], HasSubstr("its codelet is longer than 1 MB"));
}

TEST_F(HostileAida, isNotMadeWhereItIsNotAskedFor) {
    const std::string bad = "<axis direction='x' min='1' max='0' numberOfBins='5'/><data1d/></histogram1d>";
    const std::string good = "<axis direction='x' min='0' max='1' numberOfBins='5'/><data1d/></histogram1d>";
    const auto file = aidaWith("<histogram1d name='h' path='/a'>" + good + "<histogram1d name='h' path='/b'>" + bad +
                               "<dataPointSet name='h' path='/c'/>");
    EXPECT_NE(readAidaObject(file, "/a/h", ValueType::Histogram, run), nullptr);
    EXPECT_THAT(failureOf([&] { readAidaObject(file, "h", ValueType::Histogram, run); }),
                HasSubstr("several matching objects"));
    EXPECT_THAT(failureOf([&] { readAidaObject(file, "", ValueType::Histogram, run); }),
                HasSubstr("several matching objects"));
    EXPECT_EQ(run.warnings, std::vector<std::string>());
    const auto withRoot = aidaWith("<histogram1d name='h' path='/a'>" + good + "<histogram1d name='h'>" + good);
    EXPECT_NE(readAidaObject(withRoot, "h", ValueType::Histogram, run), nullptr);
}

TEST_F(HostileAida, saysHowLargeAnObjectWillBe) {
    const auto file = aidaWith(
        "<histogram1d name='h'><axis direction='x' min='0' max='1' numberOfBins='3300000'/>"
        "<data1d><bin1d binNum='7' entries='3'/></data1d></histogram1d>");
    const auto objects = readAidaObjects(file, run);
    ASSERT_NE(objects.at(0).object, nullptr);
    ASSERT_FALSE(run.warnings.empty());
    EXPECT_THAT(run.warnings[0], EndsWith("/h has 3300002 cells, which take 0.3 GB of memory"));
}

TEST_F(HostileAida, givesFewWarnings) {
    const auto file = fileWith(zipOf(100, "<aida>" + oneTuple + "</aida>"));
    EXPECT_EQ(listAida(file, run).size(), 1U);
    ASSERT_EQ(run.warnings.size(), 21U);
    EXPECT_THAT(run.warnings[20], EndsWith(": 80 more warnings are left out"));
    run.warnings.clear();
    std::string unknown;
    for (int element = 0; element < 50; ++element) {
        unknown += "<u" + std::to_string(element) + "/>";
    }
    readAidaObjects(aidaWith(unknown), run);
    EXPECT_EQ(run.warnings.size(), 21U);
}

TEST_F(HostileAida, canBeStoppedAmongTheFilesOfAnArchive) {
    const auto file = fileWith(zipOf(100, "<aida>" + oneTuple + "</aida>"));
    AskedRun asked(50);
    EXPECT_THROW(listAida(file, asked), Stopped);
}

TEST_F(HostileAida, canBeStoppedAmongTheColumnsOfATuple) {
    const auto file = aidaWith("<tuple name='t'><columns>" + repeated("<column name='a'/>", 300'000));
    AskedRun counted;
    EXPECT_THROW(listAida(file, counted), Failure);
    ASSERT_GT(counted.asked, 20U);
    AskedRun asked(counted.asked / 2);
    EXPECT_THROW(listAida(file, asked), Stopped);
    EXPECT_EQ(asked.asked, counted.asked / 2 + 1);
}

TEST_F(HostileAida, mayHaveVeryManyColumnsOfOneName) {
    const auto file = aidaWith("<tuple name='t'><columns>" + repeated("<column name='a'/>", 300'000) +
                               "<column name='b'/></columns><rows><row/></rows></tuple>");
    const Rows rows = readRows(file, "/t", run);
    EXPECT_EQ(rows.count(), 1U);
    EXPECT_EQ(rows.schema.find("a;300000"), 299'999U);
    EXPECT_EQ(rows.schema.find("b"), 300'000U);
    EXPECT_LT(run.warnings.size(), 30U);
}

TEST_F(HostileAida, hasALimitForItsColumns) {
    const std::string booking = "trk={double a" + repeated(",a", 1U << 20U) + "}";
    const auto file =
        aidaWith("<tuple name='t'><columns><column type='ITuple' name='" + booking + "'/></columns></tuple>");
    EXPECT_THAT(failureOf([&] { listAida(file, run); }), HasSubstr("more than 1048576 columns"));
}

TEST_F(HostileAida, hasALimitForTheNestedRowsOfOneRow) {
    const std::string booking = "trk={double a" + repeated(",a", 100'000) + "}";
    const auto file = aidaWith("<tuple name='t'><columns><column type='ITuple' name='" + booking +
                               "'/></columns><rows><row><entryITuple><row/></entryITuple></row><row><entryITuple>" +
                               repeated("<row/>", 200) + "</entryITuple></row></rows></tuple>");
    const Rows rows = readRows(file, "/t", run);
    EXPECT_EQ(rows.count(), 1U);
    EXPECT_THAT(rows.failure, HasSubstr("there are more than 8388608 values in the nested rows of one row"));
}

TEST_F(HostileAida, isWarnedOfWhereItsCheckSumIsWrong) {
    const std::string text = "<aida>" + oneTuple + std::string(300'000, ' ') + oneTuple + "</aida>";
    std::string bytes = gzipped(text);
    bytes[bytes.size() - 8] = static_cast<char>(bytes[bytes.size() - 8] ^ 1);
    const Rows rows = readRows(fileWith(bytes), "/t", run);
    EXPECT_EQ(rows.count(), 1U);
    EXPECT_EQ(rows.failure, "");
    ASSERT_EQ(run.warnings.size(), 1U);
    EXPECT_THAT(run.warnings[0], HasSubstr("the gzip data are damaged (incorrect data check) at byte"));
    EXPECT_THAT(run.warnings[0], EndsWith("; the rows may be wrong"));
    run.warnings.clear();
    EXPECT_EQ(readRows(fileWith(gzipped(text)), "/t", run).count(), 1U);
    EXPECT_EQ(run.warnings, std::vector<std::string>());
}

TEST_F(HostileAida, isRefusedForAnUndefinedEntity) {
    const std::string rows =
        "<tuple name='t'><columns><column name='x'/></columns><rows>\n<row><entry value=\"1\"/></row>\n";
    const std::string end = "</rows></tuple>";
    const auto inRow = aidaWith(rows + "<row><entry\n  value=\"1&foo;2\"/></row>" + end);
    const Rows read = readRows(inRow, "/t", run);
    EXPECT_EQ(read.count(), 1U);
    EXPECT_THAT(read.failure, HasSubstr("line 6, column 11: the entity &foo; is not defined"));
    const auto inHead = aidaWith("<histogram1d name='\u00b5&foo;'/>");
    EXPECT_THAT(failureOf([&] { readAidaObjects(inHead, run); }),
                HasSubstr("line 3, column 21: the entity &foo; is not defined"));
    const auto inText = aidaWith("<function name='f'><codelet>a&bar;b</codelet></function>");
    EXPECT_THAT(failureOf([&] { readAidaObjects(inText, run); }), HasSubstr("the entity &bar; is not defined"));
    const auto declared = fileWith("<!DOCTYPE aida [<!ENTITY foo '5'>]>\n<aida>" + rows +
                                   "<row><entry value=\"1&foo;2&#48;&amp;\"/></row>" + end + "</aida>");
    EXPECT_THAT(readRows(declared, "/t", run).failure, HasSubstr("\"1520&\" in column \"x\" is not a valid real"));
}

TEST_F(HostileAida, keepsAnEmptyTitleAndAMissingOne) {
    const std::string points = " dimension='1'/>";
    const auto objects =
        readAidaObjects(aidaWith("<dataPointSet name='a' title=''" + points + "<dataPointSet name='b'" + points), run);
    EXPECT_EQ(objects.at(0).object->title, "");
    EXPECT_EQ(objects.at(1).object->title, "b");
    AidaFileWriter writer(folder / "written.aida");
    writer.write(*objects[0].object, "/");
    writer.close();
    EXPECT_EQ(readAidaObjects(folder / "written.aida", run).at(0).object->title, "");
}

TEST_F(HostileAida, hasLongListsInSeveralItems) {
    io::AnnotationText annotation((Points(1, {})));
    std::string list = "first";
    for (int part = 0; part < 100; ++part) {
        list += "; " + std::string(200'000, 'x');
    }
    annotation.addList("Sums", list);
    const auto second = annotation.items.rfind("<item key=\"Sums\" value=\"x");
    ASSERT_NE(second, std::string::npos);
    EXPECT_LT(annotation.items.find("<item key=\"Sums\" value=\"first"), second);
    EXPECT_NEAR(static_cast<double>(annotation.items.size()), static_cast<double>(list.size()), 200.0);
    const auto file = aidaWith(
        "<histogram1d name='h'><annotation><item key='ExactSums' value='1 1 0.1 0.3 0.05 0.025'/>"
        "<item key='ExactSums' value='2 1 0.2 0.7 0.3 0.45'/></annotation>"
        "<axis min='0' max='2' numberOfBins='2'/><data1d><bin1d binNum='0' entries='1' height='0.1'/>"
        "<bin1d binNum='1' entries='1' height='0.2'/></data1d></histogram1d>");
    const auto read = readAidaObject(file, "/h", ValueType::Histogram, run);
    const auto& cells = std::dynamic_pointer_cast<const Histogram1D>(read)->cells();
    EXPECT_EQ(plain(cells[1]), (PlainSums{1, 0.1, 0.3, 0.05, 0.025}));
    EXPECT_EQ(plain(cells[2]), (PlainSums{1, 0.2, 0.7, 0.3, 0.45}));
}

std::uint64_t residentBytes() {
    std::ifstream status("/proc/self/statm");
    std::uint64_t pages = 0;
    status >> pages >> pages;
    return pages * 4096;
}

TEST_F(HostileAida, takesNoMemoryForBinsThatItOnlyPromises) {
    std::string elements;
    for (int i = 0; i < 6; ++i) {
        const std::string head = " name='o" + std::to_string(i) + "'><axis min='0' max='1' numberOfBins='16000000'/>";
        elements += "<histogram1d" + head + "<data1d/></histogram1d><profile1d" + head +
                    "<data1d><bin1d binNum='9' entries='1' height='2'/></data1d></profile1d>";
    }
    const auto file = aidaWith(elements);
    const std::uint64_t before = residentBytes();
    const auto objects = readAidaObjects(file, run);
    ASSERT_EQ(objects.size(), 12U);
    EXPECT_LT(residentBytes() - before, std::uint64_t{100} << 20U);
    const auto& profile = dynamic_cast<const Profile1D&>(*objects.at(1).object);
    EXPECT_EQ(profile.height(10), 2.0);
    EXPECT_TRUE(std::isnan(profile.height(11)));
}

}  // namespace
}  // namespace velmorak
