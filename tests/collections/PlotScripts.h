#pragma once

#include "KindHarness.h"

#include <velmorak/FunctionObject.h>
#include <velmorak/Histogram.h>

#include <memory>
#include <string>
#include <vector>

/// Objects for a Plot, and the files that one named "bench" leaves.
namespace velmorak::test {

/// @return the script of the picture.
inline std::string script(const KindHarness& bench) {
    return textIn(bench.folder() / "bench.gp");
}

inline bool hasText(const std::string& text, const std::string& part) {
    return text.find(part) != std::string::npos;
}

/// How often a part is in a text.
inline int countOf(const std::string& text, const std::string& part) {
    int count = 0;
    for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + part.size())) {
        ++count;
    }
    return count;
}

/// Numbers of a line of the data file that begins with a text.
inline std::string lineOf(const KindHarness& bench, const std::string& begin) {
    const std::string text = "\n" + textIn(bench.folder() / "bench.dat");
    const std::size_t at = text.find("\n" + begin);
    return at == std::string::npos ? "" : text.substr(at + 1, text.find('\n', at + 1) - at - 1);
}

/// A histogram with bins of width 1 and so many fills in each.
inline DataObjectPtr counts(const std::vector<double>& heights, const std::string& title = "Counts", double low = 0.0) {
    auto histogram =
        std::make_shared<Histogram1D>(Axis(heights.size(), low, low + static_cast<double>(heights.size())));
    for (std::size_t i = 0; i < heights.size(); ++i) {
        for (int entry = 0; entry < static_cast<int>(heights[i]); ++entry) {
            histogram->fill(low + static_cast<double>(i) + 0.5);
        }
    }
    histogram->title = title;
    histogram->setAxisTitle("x [cm]");
    return histogram;
}

/// A straight line that was fitted within a range.
inline DataObjectPtr fitted(double low, double high) {
    auto function = std::make_shared<FunctionObject>();
    function->title = "Line";
    function->codelet = "codelet:line:verbatim:jel : 1 : a+b*x[0] : a,b : null";
    function->arguments = {{.name = "x", .ranges = {{.low = low, .high = high}}}};
    function->parameters = {{.name = "a", .value = 2.0}, {.name = "b", .value = 0.5}};
    function->annotation = {{.key = "chi2", .value = "3.5"}, {.key = "ndf", .value = "4"}};
    return function;
}

/// A picture in PNG only, which is enough for the script.
inline KindHarness& quick(KindHarness& bench) {
    return bench.set("formats", "png");
}

}  // namespace velmorak::test
