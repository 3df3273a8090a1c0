#include <gmock/gmock.h>

#include <bit>
#include <random>

#include "support.h"

namespace velmorak {
namespace {

using AidaRoundTrip = AidaFiles;

class RandomTables {
public:
    explicit RandomTables(std::uint64_t seed) : random(seed) {}

    Schema schema() {
        Schema made;
        const std::size_t columns = 1 + random() % 6;
        for (std::size_t i = 0; i < columns; ++i) {
            made.add({"c" + textOf(static_cast<double>(i)) + (random() % 3 == 0 ? ".é{'\"" : ""),
                      static_cast<ColumnType>(random() % 4), random() % 3 == 0});
        }
        return made;
    }

    Chunk chunk(const Schema& schema, std::size_t rows) {
        Chunk made;
        made.rows = rows;
        for (const ColumnInfo& info : schema.columns()) {
            made.columns.push_back(column(info, rows));
        }
        return made;
    }

private:
    ColumnPtr column(const ColumnInfo& info, std::size_t rows) {
        auto made = std::make_shared<Column>();
        std::size_t values = rows;
        if (info.isList) {
            made->offsets.push_back(0);
            for (std::size_t row = 0; row < rows; ++row) {
                made->offsets.push_back(made->offsets.back() + random() % 4);
            }
            values = made->offsets.back();
        }
        if (info.type == ColumnType::Real) {
            made->values = filled<Column::Reals>(values, [&] { return real(); });
        } else if (info.type == ColumnType::Integer) {
            made->values = filled<Column::Integers>(values, [&] { return static_cast<std::int64_t>(random()); });
        } else if (info.type == ColumnType::Boolean) {
            made->values = filled<Column::Booleans>(values, [&] { return static_cast<std::uint8_t>(random() % 2); });
        } else {
            made->values = filled<Column::Texts>(values, [&] { return text(); });
        }
        return made;
    }

    template <typename Values, typename Make>
    Values filled(std::size_t count, const Make& make) {
        Values values;
        for (std::size_t i = 0; i < count; ++i) {
            values.push_back(make());
        }
        return values;
    }

    double real() {
        constexpr std::array special{0.0, -0.0, 5e-324, -1.7976931348623157e308, 0.1};
        if (random() % 4 == 0) {
            return special[random() % special.size()];
        }
        const auto number = std::bit_cast<double>(random());
        return number != number ? std::numeric_limits<double>::quiet_NaN() : number;
    }

    std::string text() {
        constexpr std::array parts{
            "a", "<", ">", "&", "\"", "'", "\n", "\t", "\r", " ", "é", "€", "\xF0\x9F\x94\xAC", "]]>", "&#9;"};
        std::string made;
        for (std::size_t i = random() % 6; i > 0; --i) {
            made += parts[random() % parts.size()];
        }
        return made;
    }

    std::mt19937_64 random;
};

void expectEqual(const Column& read, const Column& written) {
    EXPECT_EQ(read.offsets, written.offsets);
    ASSERT_EQ(read.type(), written.type());
    if (read.type() != ColumnType::Real) {
        EXPECT_EQ(read.values, written.values);
        return;
    }
    ASSERT_EQ(read.reals().size(), written.reals().size());
    for (std::size_t i = 0; i < read.reals().size(); ++i) {
        EXPECT_EQ(std::bit_cast<std::uint64_t>(read.reals()[i]), std::bit_cast<std::uint64_t>(written.reals()[i]));
    }
}

TEST_F(AidaRoundTrip, keepsEveryBitOfATable) {
    RandomTables tables(31);
    for (int round = 0; round < 60; ++round) {
        const Schema schema = tables.schema();
        const Chunk chunk = tables.chunk(schema, static_cast<std::size_t>(round) * 3);
        const auto file = folder / "table.aida";
        AidaFileWriter writer(file);
        writer.beginTable("t/1", "a\ntitle", "/x//y/", schema);
        writer.writeRows(chunk);
        writer.endTable();
        writer.close();
        const Rows rows = readRows(file, "/x/y/t/1", run);
        EXPECT_EQ(rows.failure, "");
        EXPECT_EQ(rows.schema, schema);
        ASSERT_EQ(rows.count(), chunk.rows);
        for (std::size_t column = 0; column < schema.size() && chunk.rows > 0; ++column) {
            expectEqual(rows.columns[column], *chunk.columns[column]);
        }
    }
    EXPECT_THAT(run.warnings, ::testing::IsEmpty());
}

TEST_F(AidaRoundTrip, replacesWhatXmlCannotHold) {
    const Schema schema({{"s", ColumnType::Text}});
    Chunk chunk;
    chunk.rows = 1;
    chunk.columns = {std::make_shared<Column>(Column{Column::Texts{std::string("a\x01\0b\xEF\xBF\xBF\xE9", 8)}, {}})};
    AidaFileWriter writer(folder / "odd.aida");
    writer.beginTable("t", "", "/", schema);
    writer.writeRows(chunk);
    writer.endTable();
    writer.close();
    EXPECT_EQ(readRows(folder / "odd.aida", "", run).columns[0].texts()[0], "a\uFFFD\uFFFDb\uFFFDé");
}

}  // namespace
}  // namespace velmorak
