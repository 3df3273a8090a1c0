#pragma once

#include "csv/CsvLayout.h"

#include <velmorak/Mutex.h>
#include <velmorak/Run.h>

#include <cstdint>
#include <string>

namespace velmorak {

/// The texts of a file that are not UTF-8. They would be invalid in every file that they are written to, so that they
/// are converted, which is reported once.
/// Threads: note may be called by several threads at once.
class CsvRepairs {
public:
    /// @param context outlives this.
    CsvRepairs(std::string fileName, RunContext& context) : fileName(std::move(fileName)), context(context) {}

    /// @param line of a text; noLine for none.
    void note(std::uint64_t line) const;
    /// Reports the first line of those noted since the last report.
    void report() const;

private:
    std::string fileName;
    RunContext& context;
    mutable Mutex mutex;
    mutable std::uint64_t firstLine VELMORAK_GUARDED_BY(mutex) = noLine;
};

}  // namespace velmorak
