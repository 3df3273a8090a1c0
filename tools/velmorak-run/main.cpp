#include "RunCommand.h"
#include "StandardOutput.h"
#include "StopOnSignal.h"

#include "run/messages/NodeError.h"
#include "run/messages/Visible.h"

#include <malloc.h>

#include <cstdlib>
#include <exception>
#include <iostream>
#include <optional>

namespace {

/// Keeps freed memory for the next chunks, which need as much, instead of fetching it from the system page by page
/// again. The C library does so itself once a block of the largest size has been freed, but chunks are smaller.
void keepFreedMemory() {
    constexpr int maxBlock = 32 << 20;
    constexpr int keptBytes = 64 << 20;
    mallopt(M_MMAP_THRESHOLD, maxBlock);
    mallopt(M_TRIM_THRESHOLD, keptBytes);
}

}  // namespace

int main(int argc, char** argv) {
    StopOnSignal::holdSignals();
    keepFreedMemory();
    setenv("VELMORAK_JOURNAL", "0", 1);  // Nobody edits here.
    try {
        ExitStatus status = AllDone;
        const std::optional<Options> options = parseOptions(argc, argv, status);
        if (!options) {
            return status;
        }
        StopOnSignal signals(options->timeoutSeconds);
        StandardOutput output;
        status = execute(*options, signals, output.stream());
        if (!output.isComplete()) {
            std::cerr << "velmorak-run: standard output cannot be written\n";
            status = status == AllDone || status == FilesSkipped ? NotUsable : status;
        }
        return status;
    } catch (const std::exception&) {
        std::cerr << "velmorak-run: " << velmorak::visible(velmorak::errorOf(std::current_exception()).sentence)
                  << '\n';
        return NotUsable;
    }
}
