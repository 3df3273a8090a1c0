#pragma once

#include <cstddef>
#include <string>

#include <velmorak/Run.h>

namespace velmorak::io {

/// Limit of the objects that a list of a file's objects holds.
inline constexpr std::size_t maxObjects = 1'000'000;
/// Limit for the messages that are remembered to report each only once.
inline constexpr std::size_t maxWarned = 1000;

/// Reports the first warnings about a file, and counts the others: a damaged file may cause any number.
class FewWarnings {
public:
    explicit FewWarnings(RunContext& context) : context(context) {}

    void add(const std::string& sentence);
    /// Reports how many warnings were suppressed, if any.
    void finish(const std::string& file);

private:
    RunContext& context;
    std::size_t count = 0;
};

}  // namespace velmorak::io
