#include "WrittenRows.h"

#include <velmorak/Failure.h>

namespace velmorak {

void WrittenRows::merge(AccumulatorState& other) {
    auto& next = static_cast<WrittenRows&>(other);
    if (text.size() + next.text.size() > maxBytesKept) {
        handOver();
        next.handOver();
        hasWritten = true;
    } else {
        text += next.text;
    }
}

void WrittenRows::save(StateWriter& writer) const {
    if (hasWritten) {
        throw Failure("the state of \"" + writer.kind() +
                      "\" cannot be saved, because rows are in its file already; save it for fewer rows");
    }
    writer.version(1);
    writer.text(text);
}

void WrittenRows::load(StateReader& reader) {
    reader.version(1);
    text = reader.text();
}

void WrittenRows::handOver() {
    file.append(text);
    hasWritten = hasWritten || !text.empty();
    text.clear();
}

}  // namespace velmorak
