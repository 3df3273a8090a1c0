#include <velmorak/Dates.h>

#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <utility>
#include <vector>

namespace velmorak {
namespace {

TEST(Date, readsTheFormsOfIso8601) {
    const std::vector<std::pair<std::string, double>> dates = {{"1970-01-01", 0.0},
                                                               {"1969-12-31 23:59:59", -1.0},
                                                               {"2000-03-01T00:00", 951868800.0},
                                                               {"2000-03-01T02:00+02:00", 951868800.0},
                                                               {"2000-02-29T22:30-0130", 951868800.0},
                                                               {"2000-02-29t24:00z", 951868800.0},
                                                               {"2016-12-31T23:59:60Z", 1483228800.0},
                                                               {"1970-01-01T00:00:00,5", 0.5}};
    for (const auto& [text, seconds] : dates) {
        double read = 0.25;
        EXPECT_TRUE(readDate(text, read)) << text;
        EXPECT_EQ(read, seconds) << text;
    }
    for (const std::string wrong :
         {"", "2000", "2000-13-01", "2000-1-1", "2001-02-29", "2000-01-01T", "2000-01-01T25:00", "2000-01-01T12:60",
          "2000-01-01T12:00:61", "2000-01-01T12:00+", "2000-01-01x", "2000-01-01T24:00:01", "2000-01-01T12:00Zx"}) {
        double read = 0.25;
        EXPECT_FALSE(readDate(wrong, read)) << wrong;
        EXPECT_EQ(read, 0.25) << wrong;
    }
}

TEST(Date, isWrittenInAFormThatIsReadBack) {
    EXPECT_EQ(dateText(0.0), "1970-01-01T00:00:00Z");
    EXPECT_EQ(dateText(1709209815.25), "2024-02-29T12:30:15.25Z");
    EXPECT_EQ(dateText(-0.5), "1969-12-31T23:59:59.5Z");
    EXPECT_EQ(dateText(86399.9999999), "1970-01-02T00:00:00Z");
    EXPECT_EQ(dateText(std::nan("")), "NaN");
    EXPECT_EQ(dateText(1e300), "1e+300") << "no date has more than four digits in its year";
    for (const double seconds : {1.0e9, 1.7e9 + 0.125, -1.0e10, 253402300799.0}) {
        double read = 0.0;
        EXPECT_TRUE(readDate(dateText(seconds), read)) << dateText(seconds);
        EXPECT_EQ(read, seconds);
    }
}

}  // namespace
}  // namespace velmorak
