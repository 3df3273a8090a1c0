#include "InputFile.h"
#include "QuietContext.h"
#include "Target.h"

#include "hepmc/EventTable.h"

// Events of a generator, in any of the formats.

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace velmorak;
    const fuzz::InputFile file(fuzz::textOf(data, size));
    fuzz::QuietContext context;
    try {
        const std::unique_ptr<TableReader> reader = openEvents(file.path(), context);
        for (Chunk chunk; reader->next(chunk); chunk = {}) {
            fuzz::require(chunk.columns.size() == reader->schema().size(), "a chunk has the columns of its schema");
            for (std::size_t i = 5; i < chunk.columns.size(); ++i) {
                fuzz::require(chunk.columns[i]->offsets == chunk.columns[5]->offsets, "the lists are equally long");
            }
        }
    } catch (const Failure&) {
    } catch (const Stopped&) {
    }
    return 0;
}
