#include <velmorak/Kind.h>
#include <velmorak/StateBytes.h>

namespace velmorak {

Failure::Failure(std::string input, const std::string& sentence, Cause cause)
    : std::runtime_error(sentence), inputName(std::move(input)), ownCause(cause) {}

std::string Kind::refusal(const std::string& /*input*/, const std::string& /*value*/) const {
    return {};
}

std::vector<std::filesystem::path> Source::files(const Arguments& /*arguments*/, RunContext& /*context*/) const {
    return {};
}

void AccumulatorState::save(StateWriter& writer) const {
    throw Failure("the state of \"" + writer.kind() + "\" cannot be saved, because its accumulator has no save");
}

void AccumulatorState::load(StateReader& reader) {
    throw Failure("the state of \"" + reader.kind() + "\" cannot be loaded, because its accumulator has no load");
}

HistogramPtr Arguments::histogram(const std::string& input) const {
    const Value& arrived = value(input);
    if (std::holds_alternative<std::monostate>(arrived)) {
        throw Failure(input, isWired(input) ? "expected a histogram, but a table is wired" : "nothing is wired");
    }
    const auto* object = std::get_if<DataObjectPtr>(&arrived);
    HistogramPtr histogram = object ? std::dynamic_pointer_cast<const Histogram1D>(*object) : nullptr;
    if (!histogram) {
        throw Failure(input, "expected a one-dimensional histogram");
    }
    return histogram;
}

}  // namespace velmorak
