#include "Target.h"

#include "table/Checksum.h"

#include <velmorak/Kind.h>
#include <velmorak/StateBytes.h>
#include "Histogram/Moments.h"
#include "Histogram/Quantiles.h"

// The saved state of an accumulator. The bytes come without mark, kind and checksum, which only damage by accident
// would fail; the first letter says what the state consists of.

namespace velmorak::fuzz {
namespace {

/// Of statistics: classes with save and load, but no state of their own.
template <typename Part>
struct StateOf : AccumulatorState {
    void fill(const Chunk&) override {}
    void merge(AccumulatorState& other) override { part.merge(static_cast<StateOf&>(other).part); }
    void save(StateWriter& writer) const override { part.save(writer); }
    void load(StateReader& reader) override { part.load(reader); }
    Part part;
};

/// Of any objects and texts.
struct Anything : AccumulatorState {
    void fill(const Chunk&) override {}
    void merge(AccumulatorState&) override {}
    void save(StateWriter& writer) const override {
        writer.version(1);
        writer.text(text);
        writer.list(numbers);
        writer.object(*object);
    }
    void load(StateReader& reader) override {
        reader.version(1);
        text = reader.text();
        numbers = reader.list<std::vector<std::int32_t>>();
        object = reader.object();
    }
    std::string text;
    std::vector<std::int32_t> numbers;
    DataObjectPtr object;
};

std::string sealed(std::string_view bytes) {
    std::string text = StateWriter("fuzz").sealed();
    text.resize(text.size() - sizeof(std::uint64_t));
    text += bytes;
    const std::uint64_t sum = checksum(text);
    return text.append(reinterpret_cast<const char*>(&sum), sizeof sum);
}

template <typename State>
void read(std::string_view bytes) {
    State state;
    try {
        loadState(state, sealed(bytes), "fuzz");
    } catch (const Failure&) {
        return;
    }
    const std::string saved = savedState(state, "fuzz");
    State again;
    loadState(again, saved, "fuzz");
    require(savedState(again, "fuzz") == saved, "a state that was loaded is the same when saved and loaded again");
    state.merge(again);
}

}  // namespace
}  // namespace velmorak::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace velmorak;
    const std::string_view bytes = fuzz::textOf(data, size);
    if (bytes.starts_with('m')) {
        fuzz::read<fuzz::StateOf<Moments>>(bytes.substr(1));
    } else if (bytes.starts_with('q')) {
        fuzz::read<fuzz::StateOf<Quantiles>>(bytes.substr(1));
    } else if (bytes.starts_with('a')) {
        fuzz::read<fuzz::Anything>(bytes.substr(1));
    }
    return 0;
}
