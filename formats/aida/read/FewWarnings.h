#pragma once

#include <cstddef>
#include <string>

#include <velmorak/Run.h>

namespace velmorak::io {

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
