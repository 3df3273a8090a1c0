#pragma once

#include <iostream>
#include <locale>
#include <optional>
#include <sstream>
#include <string>

/// The output of every benchmark program, which scripts/bench gathers into one table: a line for each comparison on
/// standard output, "row" and seven fields, with tabs between. Anything else that a program writes is shown as it is.
namespace velmorak::bench {

struct Limit {
    enum class Sense { AtLeast, AtMost };
    Sense sense = Sense::AtLeast;
    double ratio = 0.0;
};

/// One piece of work, done by us and by a peer in the same run.
struct Row {
    std::string work;  ///< What was done, and on how much: "plain tuple rows, 250,000 x 8".
    std::string peer;  ///< Who the peer is; "a limit" where ours is compared with a figure that is asked for.
    std::string unit;  ///< Of the two medians: "ms", "MB/s", "MB".
    double ours = 0.0;
    double others = 0.0;
    double ratio = 0.0;  ///< Higher is better where the limit is "at least", lower where it is "at most".
    std::optional<Limit> limit = {};
};

inline void print(const Row& row) {
    std::ostringstream line;
    line.imbue(std::locale::classic());
    line << "row\t" << row.work << '\t' << row.peer << '\t' << row.unit << '\t' << row.ours << '\t' << row.others
         << '\t' << row.ratio << '\t';
    if (row.limit) {
        line << (row.limit->sense == Limit::Sense::AtLeast ? ">= " : "<= ") << row.limit->ratio;
    }
    std::cout << line.str() << std::endl;
}

/// Times, of which less is better: the ratio is how many times faster we are.
inline void printFaster(const std::string& work, const std::string& peer, double oursMs, double peerMs,
                        double minRatio) {
    print({work, peer, "ms", oursMs, peerMs, peerMs / oursMs, Limit{Limit::Sense::AtLeast, minRatio}});
}

/// Times of which ours may be so many times the peer's.
inline void printNotSlower(const std::string& work, const std::string& peer, double oursMs, double peerMs,
                           double maxRatio) {
    print({work, peer, "ms", oursMs, peerMs, oursMs / peerMs, Limit{Limit::Sense::AtMost, maxRatio}});
}

}  // namespace velmorak::bench
