#pragma once

#include <cstddef>
#include <string>

#include <velmorak/Run.h>

namespace velmorak::io {

/// Passes on the first warnings about a file, and counts the others: a file may give reason for any number.
class FewWarnings {
public:
    explicit FewWarnings(RunContext& runContext) : context(runContext) {}

    void add(const std::string& sentence);
    /// Says how many were left out, where there are such.
    void finish(const std::string& file);

private:
    RunContext& context;
    std::size_t count = 0;
};

}  // namespace velmorak::io
