#include "csv/CsvRepairs.h"

#include <algorithm>
#include <utility>

namespace velmorak {

void CsvRepairs::note(std::uint64_t line) const {
    if (line != noLine) {
        const MutexLock lock(mutex);
        firstLine = std::min(firstLine, line);
    }
}

void CsvRepairs::report() const {
    const MutexLock lock(mutex);
    if (firstLine != noLine) {
        context.warn("\"" + fileName + "\": bytes that are not UTF-8, the first on line " +
                     std::to_string(std::exchange(firstLine, noLine)) + ", are read as ISO-8859-1");
    }
}

}  // namespace velmorak
