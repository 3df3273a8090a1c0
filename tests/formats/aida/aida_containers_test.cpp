#include <gmock/gmock.h>

#include <archive.h>
#include <zlib.h>

#include <random>

#include "support.h"

namespace velmorak {
namespace {

using ::testing::HasSubstr;

/// Bytes of an archive with files, or of one bzip2 stream.
std::string packed(const std::vector<std::pair<std::string, std::string>>& files, bool isZip) {
    std::string bytes(1 << 20, '\0');
    std::size_t used = 0;
    archive* target = archive_write_new();
    if (isZip) {
        archive_write_set_format_zip(target);
    } else {
        archive_write_set_format_raw(target);
        archive_write_add_filter_bzip2(target);
    }
    archive_write_set_bytes_in_last_block(target, 1);
    archive_write_open_memory(target, bytes.data(), bytes.size(), &used);
    for (const auto& [name, content] : files) {
        addFile(target, name, content);
    }
    archive_write_free(target);
    bytes.resize(used);
    return bytes;
}

std::string tuple(const std::string& name, std::size_t rows) {
    std::string text = "<aida><tuple name='" + name + "' path='/t'><columns><column name='x'/></columns><rows>";
    for (std::size_t row = 0; row < rows; ++row) {
        text += "<row><entry value=\"" + textOf(static_cast<double>(row * row)) + "\"/></row>\n";
    }
    return text + "</rows></tuple></aida>";
}

/// The binary form of <aida><tuple name='n'>..<row><entry value='2.5'/></row>.. with one real column.
std::string binaryTuple() {
    const auto textValue = [](const std::string& text) {
        return "\xC3" + std::string(1, static_cast<char>(text.size() + 4)) + std::string("\x08\x00", 2) +
               std::string(1, static_cast<char>(text.size())) + text + std::string(1, '\0');
    };
    std::string bytes("\x03\x00\x00\x6A\x00", 5);
    bytes += "\x45";                                                                    // aida
    bytes += "\xD4\x13" + textValue("n") + "\x01";                                      // tuple name="n"
    bytes += "\x55\x96\x13" + textValue("x") + "\x01\x01";                              // columns, column name="x"
    bytes += "\x57\x58";                                                                // rows, row
    bytes += "\x99\x0C\xC3\x09\x03" + std::string("\x40\x04\0\0\0\0\0\0", 8) + "\x01";  // entry value=2.5
    return bytes + "\x01\x01\x01\x01";
}

std::vector<std::string> pathsIn(const std::filesystem::path& file, RunContext& run) {
    std::vector<std::string> paths;
    for (const AidaEntry& entry : listAida(file, run)) {
        paths.push_back(entry.path);
    }
    return paths;
}

using AidaContainers = AidaFiles;

TEST_F(AidaContainers, areFoundByTheirContent) {
    const auto plain = pathsIn(ownFile("all.aida"), run);
    EXPECT_EQ(plain.size(), 14U);
    for (const char* name :
         {"all.gz.aida", "multimember.gz.aida", "all.bz2.aida", "all.zlib.aida", "all.rawdeflate.aida", "all.zip"}) {
        const auto file = fileWith(contentOf(ownFile(name)));
        EXPECT_EQ(pathsIn(file, run), plain) << name;
        const Rows rows = readRows(file, "/data/events", run);
        EXPECT_EQ(rows.columns[1].reals()[0], 13.5) << name;
        EXPECT_EQ(rows.failure, "") << name;
    }
    EXPECT_TRUE(run.warnings.empty());
}

TEST_F(AidaContainers, withAFileForEachObjectGiveThePathsOfTheirFolders) {
    EXPECT_EQ(pathsIn(ownFile("store_layout.zip"), run), (std::vector<std::string>{"/run1/energy", "/data/events"}));
    EXPECT_EQ(readRows(ownFile("store_layout.zip"), "", run).count(), 2U);
    const auto file = fileWith(packed({{"a/b/one.ITuple", tuple("one", 3)}, {"two.aida", tuple("two", 4)}}, true));
    EXPECT_EQ(pathsIn(file, run), (std::vector<std::string>{"/a/b/one", "/t/two"}));
    EXPECT_EQ(readRows(file, "/t/two", run).count(), 4U);
    EXPECT_EQ(readRows(file, "one", run).count(), 3U);
}

TEST_F(AidaContainers, leaveOutWhatIsNoXmlAndWhatIsDamaged) {
    const auto file = fileWith(packed({{"README", "not this"},
                                       {"a.aida", tuple("a", 2)},
                                       {"b.aida", "<aida><tuple"},
                                       {"c.aida", tuple("c", 5)},
                                       {"picture.png", "\x89PNG"}},
                                      true));
    EXPECT_EQ(pathsIn(file, run), (std::vector<std::string>{"/t/a", "/t/c"}));
    ASSERT_EQ(run.warnings.size(), 3U);
    EXPECT_THAT(run.warnings[0], HasSubstr("README is not XML"));
    EXPECT_THAT(run.warnings[1], HasSubstr("picture.png is not XML"));
    EXPECT_THAT(run.warnings[2], HasSubstr("b.aida, line 1, byte"));
    EXPECT_EQ(readRows(file, "/t/c", run).count(), 5U);
    EXPECT_THAT(failureOf([&] {
                    listAida(fileWith(packed({{"README", "no"}}, true)), run);
                }),
                HasSubstr("contains no XML"));
}

TEST_F(AidaContainers, mayHoldTheBinaryForm) {
    const std::string binary = binaryTuple();
    for (const std::string& bytes : {binary, gzipped(binary), packed({{"n.aida", binary}}, true)}) {
        const Rows rows = readRows(fileWith(bytes), "", run);
        ASSERT_EQ(rows.count(), 1U);
        EXPECT_EQ(rows.columns[0].reals()[0], 2.5);
    }
    const Rows cut = readRows(fileWith(binary.substr(0, binary.size() - 3)), "/n", run);
    EXPECT_EQ(cut.count(), 1U);
    EXPECT_THAT(cut.failure, HasSubstr("it ends too early"));
}

TEST_F(AidaContainers, keepWhatIsCompleteBeforeTheirDamage) {
    const std::string text = tuple("x", 60'000);
    for (const bool isZip : {true, false}) {
        const std::string whole = packed({{"x.aida", text}}, isZip);
        const Rows rows = readRows(fileWith(whole.substr(0, whole.size() * 2 / 3)), "/t/x", run);
        EXPECT_GT(rows.count(), 1000U);
        EXPECT_THAT(rows.failure, HasSubstr(isZip ? "the zip data are damaged" : "the bzip2 data are damaged"));
        EXPECT_THAT(rows.failure, HasSubstr("at byte"));
    }
}

TEST_F(AidaContainers, damagedInAnyWayEndInASentenceOrInRows) {
    std::mt19937 random(11);
    const std::string binary = binaryTuple();
    std::vector<std::string> wholes{binary, gzipped(binary)};
    for (const char* name : {"all.aida", "all.gz.aida", "multimember.gz.aida", "all.bz2.aida", "all.zlib.aida",
                             "all.rawdeflate.aida", "all.zip", "store_layout.zip"}) {
        wholes.push_back(contentOf(ownFile(name)));
    }
    std::size_t failures = 0;
    for (const std::string& whole : wholes) {
        for (int round = 0; round < 60; ++round) {
            const auto file = fileWith(damaged(whole, random));
            const std::string failure = failureOf([&] {
                for (const AidaEntry& entry : listAida(file, run)) {
                    if (entry.schema.size() != 0) {
                        readRows(file, entry.path, run);
                    }
                }
                readAidaObjects(file, run);
            });
            failures += failure == "no failure" ? 0U : 1U;
        }
    }
    EXPECT_GT(failures, 100U);
}

TEST_F(AidaContainers, tellOfADamagedFileBeforeTheOneThatIsRead) {
    const std::string bad = tuple("a", 1).substr(0, 60);
    const auto file = fileWith(packed({{"a.aida", bad}, {"b.aida", tuple("b", 3)}}, true));
    for (const char* object : {"/t/b", "b"}) {
        run.warnings.clear();
        EXPECT_EQ(readRows(file, object, run).count(), 3U);
        ASSERT_EQ(run.warnings.size(), 1U) << object;
        EXPECT_THAT(run.warnings[0], HasSubstr("a.aida"));
    }
    run.warnings.clear();
    EXPECT_THAT(failureOf([&] { openAidaTable(file, "/t/gone", run); }), HasSubstr("contains no object /t/gone"));
    EXPECT_EQ(run.warnings.size(), 1U) << "it may have been in there";
}

}  // namespace
}  // namespace velmorak
