#pragma once

#include <velmorak/Histogram.h>
#include <velmorak/RunRecord.h>

#include <cstdlib>
#include <memory>
#include <string>

/// What reports are made of.
namespace velmorak::test {

inline DataObjectPtr peak(const std::string& title) {
    auto histogram = std::make_shared<Histogram1D>(Axis(10, 0, 10));
    for (const double x : {3.5, 4.5, 4.5, 5.5}) {
        histogram->fill(x);
    }
    histogram->title = title;
    histogram->setAxisTitle("mass [GeV]");
    return histogram;
}

/// Of a run in which a plug-in failed, with the report "bench".
inline RunRecord record() {
    RunRecord made;
    made.document = "analysis.zedra";
    made.documentSha256 = std::string(64, 'd');
    made.program = "9.8.7";
    made.plugins = {{.name = "Events",
                     .kind = "RandomTable",
                     .version = 3,
                     .inputs = {{.name = "seed", .value = "4711", .plugin = "", .output = "", .isSeed = true}},
                     .outputs = {"table"},
                     .x = 0,
                     .y = 100,
                     .state = RecordedState::Done},
                    {.name = "Lost",
                     .kind = "CsvTable",
                     .version = 1,
                     .inputs = {{.name = "file", .value = "lost.csv", .plugin = "", .output = ""}},
                     .outputs = {"table"},
                     .x = 0,
                     .y = 0,
                     .state = RecordedState::Failed,
                     .sentence = "\"lost.csv\" cannot be opened"},
                    {.name = "bench",
                     .kind = "Report",
                     .version = 1,
                     .inputs = {{.name = "object", .value = "", .plugin = "Events", .output = "table"}},
                     .x = 200,
                     .y = 50,
                     .state = RecordedState::Done}};
    made.files = {{.name = "events.csv", .sha256 = std::string(64, 'e'), .bytes = 12345}};
    return made;
}

/// Sets the date of reports while it lives.
class FixedDate {
public:
    FixedDate() { setenv("SOURCE_DATE_EPOCH", "1732291800", 1); }
    ~FixedDate() { unsetenv("SOURCE_DATE_EPOCH"); }
    FixedDate(const FixedDate&) = delete;
    FixedDate& operator=(const FixedDate&) = delete;
};

}  // namespace velmorak::test
