#pragma once

#include <velmorak/HistogramList.h>

#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace velmorak::test {

/// A list of histograms with three bins of x [cm], whose heights are numbers of entries, by run.
inline std::shared_ptr<HistogramList> runs(const std::map<int, std::vector<int>>& heights,
                                           const std::string& title = "Runs") {
    std::vector<HistogramList::Group> groups;
    for (const auto& [run, entries] : heights) {
        auto histogram = std::make_shared<Histogram1D>(Axis(3, 0.0, 3.0));
        for (std::size_t bin = 0; bin < entries.size(); ++bin) {
            for (int entry = 0; entry < entries[bin]; ++entry) {
                histogram->fill(static_cast<double>(bin) + 0.5);
            }
        }
        const std::string key = std::to_string(run);
        histogram->name = "Spectrum_" + key;
        histogram->title = title + ", run = " + key;
        histogram->setAxisTitle("x [cm]");
        groups.push_back({.key = key, .label = "run = " + key, .histogram = std::move(histogram)});
    }
    auto list = std::make_shared<HistogramList>("run", std::move(groups));
    list->name = "Spectrum";
    list->title = title;
    return list;
}

}  // namespace velmorak::test
