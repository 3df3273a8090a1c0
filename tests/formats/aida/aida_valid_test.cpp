#include <gmock/gmock.h>

#include <array>
#include <cmath>
#include <cstdio>

#include <velmorak/FunctionObject.h>
#include <velmorak/Histogram.h>
#include <velmorak/Points.h>
#include <velmorak/Profile.h>
#include "support.h"

/// Written files are valid by the document type definition; another program checks that.
namespace velmorak {
namespace {

using ::testing::HasSubstr;
using ::testing::Not;

const double nan = std::nan("");
const double infinity = HUGE_VAL;

class AidaValid : public AidaFiles {
protected:
    /// The messages of the checker; empty for a valid file.
    static std::string complaints(const std::filesystem::path& file) {
        const std::string command = std::string(XMLLINT) + " --nonet --noout --dtdvalid '" + AIDA_FILES +
                                    "/aida.dtd' '" + file.string() + "' 2>&1";
        std::FILE* pipe = popen(command.c_str(), "r");
        std::string text;
        std::array<char, 4096> part{};
        while (const std::size_t count = std::fread(part.data(), 1, part.size(), pipe)) {
            text.append(part.data(), count);
        }
        return pclose(pipe) == 0 ? "" : "not valid: " + text;
    }

    template <typename Work>
    std::filesystem::path written(const std::string& name, Work&& work) const {
        const auto file = folder / name;
        AidaFileWriter writer(file);
        work(writer);
        writer.close();
        return file;
    }

    template <typename Object>
    static Object named(Object object, const std::string& name) {
        object.name = name;
        object.title = "caf\u00e9 <\"&'\n\t\x01>";
        object.options = "a=\"1\" b";
        object.annotation = {{"key", "<&\">", true}, {"", "", false}};
        return object;
    }
};

TEST_F(AidaValid, everyObjectIs) {
    const Axis x(3, -1.0, 1.0);
    const Axis y(std::vector<double>{0.0, 0.5, 10.0});
    const auto file = written("objects.aida", [&](AidaFileWriter& writer) {
        Histogram1D one(y);
        Histogram2D two(Grid<2>({x, y}));
        Histogram3D three(Grid<3>({x, y, x}));
        Profile1D profile(Grid<1>({x}));
        Profile2D wide(Grid<2>({x, y}));
        for (const bool isFilled : {false, true}) {
            for (const double value : {-7.0, 0.25, 0.75, 99.0, infinity, -infinity, nan}) {
                if (isFilled) {
                    one.fill(value, -0.5);
                    two.fill({value, 0.1}, value);
                    three.fill({0.0, value, value});
                    profile.fill({value}, value, 2.0);
                    wide.fill({value, 0.1}, 1.0);
                }
            }
            writer.write(named(one, "h1"), "/");
            writer.write(named(two, "h2"), "deep/folder/");
            writer.write(named(three, "h3"), "/");
            writer.write(named(profile, "p1"), "/");
            writer.write(named(wide, "p2"), "/");
        }
        writer.write(named(Points(3, {{1, nan, 0.5}, {infinity, 1, 2}, {}}), "points"), "/");
        writer.write(named(Points(1, {}), "none"), "/");
        FunctionObject function;
        writer.write(named(function, "bare"), "/");
        function.codelet = "codelet:a<b:catalog";
        function.arguments = {{"x0", {{}, {0, 1}}}, {"x1", {}}};
        function.parameters = {{"a\"", nan}};
        writer.write(named(function, "function"), "/");
    });
    EXPECT_EQ(complaints(file), "");
    EXPECT_THAT(contentOf(file), HasSubstr("options=\"a=&quot;1&quot; b\""));
    EXPECT_EQ(readAidaObjects(file, run).front().object->options, "a=\"1\" b");
}

TEST_F(AidaValid, everyTableIs) {
    const auto columnOf = [](auto values, std::vector<std::uint64_t> offsets) {
        return std::make_shared<const Column>(Column{std::move(values), std::move(offsets)});
    };
    const Schema flat(
        {{"x", ColumnType::Real}, {"n<", ColumnType::Integer}, {"b", ColumnType::Boolean}, {"t", ColumnType::Text}});
    Chunk chunk;
    chunk.rows = 2;
    chunk.columns = {columnOf(Column::Reals{nan, -infinity}, {}), columnOf(Column::Integers{1, -2}, {}),
                     columnOf(Column::Booleans{0, 1}, {}), columnOf(Column::Texts{"", "<&\"\x02\n"}, {})};
    const auto plain = written("flat.aida", [&](AidaFileWriter& writer) {
        writer.beginTable("t", "", "/", flat);
        writer.writeRows(chunk);
        writer.endTable();
        writer.beginTable("empty", "no rows", "/", flat);
        writer.endTable();
    });
    EXPECT_EQ(complaints(plain), "");
    EXPECT_THAT(contentOf(plain), HasSubstr("version=\"3.2.1\""));
    const auto lists = written("lists.aida", [&](AidaFileWriter& writer) {
        writer.beginTable("t", "", "/", Schema({{"x", ColumnType::Real, true}}));
        Chunk rows;
        rows.rows = 2;
        rows.columns = {columnOf(Column::Reals{1, 2}, {0, 2, 2})};
        writer.writeRows(rows);
        writer.endTable();
    });
    EXPECT_EQ(complaints(lists), "");
    EXPECT_THAT(contentOf(lists), HasSubstr("version=\"3.3\""));
}

TEST_F(AidaValid, isNotEveryFile) {
    for (const char* good : {"all.aida", "tuple_nested.aida", "cloud3d.aida", "function.aida"}) {
        EXPECT_EQ(complaints(ownFile(good)), "") << good;
    }
    for (const char* bad : {"trap_missing_attrs.aida", "trap_rivet_dimension.aida", "trap_geant4_style.xml"}) {
        EXPECT_THAT(complaints(ownFile(bad)), HasSubstr("validity error")) << bad;
    }
    EXPECT_THAT(complaints(fileWith("<aida version='3.3'/>")), Not(""));
}

}  // namespace
}  // namespace velmorak
