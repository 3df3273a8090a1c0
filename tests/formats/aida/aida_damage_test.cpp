#include <gmock/gmock.h>

#include <random>

#include "support.h"

namespace velmorak {
namespace {

using ::testing::HasSubstr;

using DamagedAida = AidaFiles;

std::string tupleOf(std::size_t rows) {
    std::string text = "<?xml version=\"1.0\"?>\n<aida>\n<tuple name='t'><columns><column name='x'/></columns><rows>\n";
    for (std::size_t row = 0; row < rows; ++row) {
        text += "<row><entry value=\"" + textOf(static_cast<double>(row * row)) + "\"/></row>\n";
    }
    return text + "</rows></tuple>\n</aida>\n";
}

TEST_F(DamagedAida, givesTheRowsBeforeTheDamageThenFailsWithThePlace) {
    const std::string text = tupleOf(1000);
    const Rows rows = readRows(fileWith(text.substr(0, text.find("<entry value=\"1600\"") + 9)), "/t", run);
    EXPECT_EQ(rows.count(), 40U);
    EXPECT_EQ(rows.columns[0].reals().back(), 39.0 * 39.0);
    EXPECT_THAT(rows.failure, HasSubstr("line 44"));
    EXPECT_THAT(rows.failure, HasSubstr("after 40 complete rows"));
}

TEST_F(DamagedAida, givesTheRowsBeforeGzipDataEndTooEarly) {
    const std::string packed = gzipped(tupleOf(20'000));
    const Rows rows = readRows(fileWith(packed.substr(0, packed.size() / 2)), "/t", run);
    EXPECT_GT(rows.count(), 1000U);
    EXPECT_THAT(rows.failure,
                HasSubstr("gzip data end too early at byte " + textOf(static_cast<double>(packed.size() / 2))));
}

TEST_F(DamagedAida, givesTheRowsBeforeAWrongByteInGzipData) {
    std::string packed = gzipped(tupleOf(20'000));
    for (std::size_t place = packed.size() / 2; place < packed.size() / 2 + 40; ++place) {
        packed[place] = '\xFF';
    }
    const Rows rows = readRows(fileWith(packed), "/t", run);
    EXPECT_GT(rows.count(), 1000U);
    EXPECT_NE(rows.failure, "");
}

TEST_F(DamagedAida, isReportedForTheTruncatedFile) {
    EXPECT_NE(failureOf([&] {
                  const Rows rows = readRows(ownFile("truncated.gz.aida"), "/data/events", run);
                  if (!rows.failure.empty()) {
                      throw Failure(rows.failure);
                  }
              }),
              "no failure");
    EXPECT_FALSE(listAida(ownFile("truncated.gz.aida"), run).empty());
    ASSERT_EQ(run.warnings.size(), 1U);
    EXPECT_THAT(run.warnings[0], HasSubstr("gzip data end too early"));
}

TEST_F(DamagedAida, namesTheRowAndColumnOfAValueThatIsNone) {
    std::string text = tupleOf(10);
    text.replace(text.find("\"16\""), 4, "\"1,6\"");
    const Rows rows = readRows(fileWith(text), "", run);
    EXPECT_EQ(rows.count(), 4U);
    EXPECT_THAT(rows.failure, HasSubstr("\"1,6\" in column \"x\" is not a valid real (after 4 complete rows)"));
    EXPECT_THAT(rows.failure, HasSubstr("line 8"));
}

TEST_F(DamagedAida, saysWhatAFileIsThatIsNotRead) {
    const auto failureFor = [&](const std::filesystem::path& file) {
        return failureOf([&] { openAidaTable(file, "", run); });
    };
    EXPECT_THAT(failureFor(fileWith("plain text")), HasSubstr("is not XML: first bytes 70 6C 61 69 6E 20 74 65"));
    EXPECT_THAT(failureFor(fileWith("")), HasSubstr("is empty"));
    EXPECT_THAT(failureFor(fileWith("<html></html>")), HasSubstr("it begins with <html>"));
    EXPECT_THAT(failureFor(folder / "missing.aida"), HasSubstr("missing.aida cannot be opened"));
    EXPECT_THAT(failureFor(folder), HasSubstr("is a folder"));
    EXPECT_THAT(failureFor(fileWith("<aida></aida>")), HasSubstr("contains no tuple or cloud; it contains nothing"));
}

TEST_F(DamagedAida, cannotGrowWithoutBound) {
    std::string text = "<!DOCTYPE aida [<!ENTITY a0 \"aaaaaaaaaaaaaaaaaaaa\">";
    for (int level = 1; level < 12; ++level) {
        std::string tenTimes;
        for (int i = 0; i < 10; ++i) {
            tenTimes += "&a" + textOf(level - 1) + ";";
        }
        text += "<!ENTITY a" + textOf(level) + " \"" + tenTimes + "\">";
    }
    text += "]><aida><tuple name='&a11;'/></aida>";
    EXPECT_THAT(failureOf([&] { openAidaTable(fileWith(text), "", run); }), HasSubstr("amplification"));
}

TEST_F(DamagedAida, ofAnyKindEndsInASentenceOrInRows) {
    std::mt19937 random(5);
    std::size_t failures = 0;
    for (const char* name :
         {"all.aida", "tuple_nested.aida", "trap_pi_style_nested.aida", "all.gz.aida", "cloud2d.aida"}) {
        const std::string whole = contentOf(ownFile(name));
        for (int round = 0; round < 120; ++round) {
            const auto file = fileWith(damaged(whole, random));
            const std::string failure = failureOf([&] {
                for (const AidaEntry& entry : listAida(file, run)) {
                    readRows(file, entry.path, run);
                }
            });
            failures += failure == "no failure" ? 0U : 1U;
        }
    }
    EXPECT_GT(failures, 50U);
}

}  // namespace
}  // namespace velmorak
