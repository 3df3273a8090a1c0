#include "aida/Vocabulary.h"
#include "aida/read/AidaColumns.h"

#include <gtest/gtest.h>

namespace velmorak::io {
namespace {

/// "name:type[children]" for each column.
std::string shown(const std::vector<AidaColumn>& columns) {
    std::string text;
    for (const AidaColumn& column : columns) {
        text += (text.empty() ? "" : " ") + column.name;
        text += column.isNested ? "[" + shown(column.children) + "]" : ":" + std::string(nameOf(column.type));
        text += column.defaultText.empty() ? "" : "=" + column.defaultText;
    }
    return text;
}

std::string columnText(std::string_view name, std::string_view type, std::string_view booking = "") {
    return shown({columnFrom(name, type, booking)});
}

TEST(AidaColumn, carriesItsDefaultInItsName) {
    EXPECT_EQ(columnText("energy=0.0", "double"), "energy:real=0.0");
    EXPECT_EQ(columnText("tracks =", "int"), "tracks:integer");
    EXPECT_EQ(columnText("s=\"a=b\"", "string"), "s:text=a=b");
}

TEST(AidaColumn, hasTheTypeThatAnyProgramMeans) {
    for (const char* type : {"double", "float", "Double", "java.lang.Double", ""}) {
        EXPECT_EQ(columnText("x", type), "x:real") << type;
    }
    for (const char* type : {"int", "long", "short", "byte", "Integer", "unsigned int", "java.lang.Long"}) {
        EXPECT_EQ(columnText("x", type), "x:integer") << type;
    }
    for (const char* type :
         {"string", "String", "java.lang.String", "std::string", "char", "Object", "java.lang.Object"}) {
        EXPECT_EQ(columnText("x", type), "x:text") << type;
    }
    for (const char* type : {"boolean", "bool", "Boolean"}) {
        EXPECT_EQ(columnText("x", type), "x:boolean") << type;
    }
    EXPECT_TRUE(columnFrom("x", "java.lang.Object", "").isKnownType);
    EXPECT_FALSE(columnFrom("x", "colour", "").isKnownType);
}

TEST(AidaColumn, namesItsNestedColumnsInAnyOrderOfWords) {
    EXPECT_EQ(columnText("trk={double px=0.0, int n}", "ITuple"), "trk[px:real=0.0 n:integer]");
    EXPECT_EQ(columnText("(opts) trk={double px, py; int q=1}", "ITuple"), "trk[px:real py:real q:integer=1]");
    EXPECT_EQ(columnText("ITuple { float px, py; int q } trk", "ITuple"), "trk[px:real py:real q:integer]");
    EXPECT_EQ(columnText("v", "ITuple", "{double v}"), "v[v:real]");
    EXPECT_EQ(columnText("trk={ITuple (o) hits = {int x, y}, string s=\"a, b}\"}", "ITuple"),
              "trk[hits[x:integer y:integer] s:text=a, b}]");
    EXPECT_EQ(columnText("ITuple { ITuple { int x } hits; double e } trk", "ITuple"), "trk[hits[x:integer] e:real]");
}

TEST(AidaColumn, survivesAnyNonsense) {
    std::string deep = "trk=";
    for (int level = 0; level < 10'000; ++level) {
        deep += "{ITuple a=";
    }
    for (const std::string& name :
         {std::string("{"), std::string("={"), std::string("trk={int"), std::string("trk={\"="),
          std::string("ITuple {"), std::string("trk={x=\""), std::string("}{"), deep}) {
        EXPECT_TRUE(columnFrom(name, "ITuple", "").isNested);
    }
}

TEST(AidaPath, isWrittenInOneWay) {
    EXPECT_EQ(objectPath("/run1", "energy"), "/run1/energy");
    EXPECT_EQ(objectPath("/run1/", "energy"), "/run1/energy");
    EXPECT_EQ(objectPath("run1//a", "energy"), "/run1/a/energy");
    EXPECT_EQ(objectPath("", "10"), "/10");
    EXPECT_EQ(objectPath("/", "a\\/b"), "/a/b");
}

TEST(AidaElement, isKnownOrNot) {
    for (const char* name :
         {"aida", "tuple", "bin1d", "binBorder", "dataPoint", "dataPointSet", "entryITuple", "dimenstion",
          "fitConstraint", "covarianceMatrix", "parameters", "statistics", "columns", "codelet"}) {
        EXPECT_TRUE(isKnownElement(name)) << name;
    }
    EXPECT_FALSE(isKnownElement("Tuple"));
}

}  // namespace
}  // namespace velmorak::io
