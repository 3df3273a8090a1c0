#pragma once

#include "Runs.h"

#include <chrono>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

/// An event worth a notification.
struct NewsItem {
    std::string title;
    std::string sentence;
};

/// Follows the runs for notifications: a failure, a run of over ten seconds that ends or dies, a sentence that belongs
/// to no run.
/// Threads: one at a time.
class News {
public:
    /// What happened before this is no news. @param runs outlives this.
    explicit News(Runs& runs);

    /// @return what has happened since the last call.
    std::vector<NewsItem> take();

private:
    struct Followed {
        std::uint64_t read = 0;  ///< Bytes.
        std::string document;
        std::string failure;  ///< Of the first plug-in that failed.
        std::chrono::steady_clock::time_point begin = std::chrono::steady_clock::now();
        bool isRun = false;  ///< Else it holds sentences that belong to no run.
        bool hasEnded = false;
    };

    void follow(const std::string& id, bool isAlive, std::vector<NewsItem>& items);
    static std::optional<NewsItem> itemOf(const std::string& line, Followed& run);
    static std::optional<NewsItem> endOf(Followed& run, const std::string& outcome, double seconds);

    Runs& runs;
    std::map<std::string, Followed> followed;  ///< By id.
};
