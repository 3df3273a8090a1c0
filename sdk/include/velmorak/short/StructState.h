#pragma once

#include <velmorak/Kind.h>
#include <velmorak/StateBytes.h>
#include <velmorak/short/RowArguments.h>
#include <velmorak/short/Values.h>

#include <cstddef>
#include <memory>
#include <string>
#include <tuple>
#include <type_traits>
#include <utility>
#include <vector>

namespace velmorak {

namespace shortkinds {

template <typename State>
concept SavesItself = requires(const State& state, State& loaded, StateWriter& writer, StateReader& reader) {
    state.save(writer);
    loaded.load(reader);
};
/// fields() returns std::tie of its members.
template <typename State>
concept HasFields = requires(State& state) {
    state.fields();
};

template <typename Field>
void saveField(const Field& field, StateWriter& writer) {
    if constexpr (std::is_same_v<Field, std::string>) {
        writer.text(field);
    } else if constexpr (std::is_arithmetic_v<Field>) {
        writer.number(field);
    } else {
        writer.list(field);
    }
}

template <typename Field>
void loadField(Field& field, StateReader& reader) {
    if constexpr (std::is_same_v<Field, std::string>) {
        field = reader.text();
    } else if constexpr (std::is_arithmetic_v<Field>) {
        field = reader.number<Field>();
    } else {
        field = reader.list<Field>();
    }
}

template <typename State>
using Parameters = RowArguments<typename Signature<decltype(&State::fill)>::Arguments>;

/// An author's state as one of the run.
template <typename State>
class StructState : public AccumulatorState {
public:
    StructState(const Parameters<State>& parameters, State initial)
        : parameters(parameters), content(std::move(initial)) {}

    void fill(const Chunk& chunk) override {
        State state = std::move(content);  // A local variable, which the compiler can keep in registers.
        parameters.forEachRow(chunk, [&](std::size_t /*row*/, const auto&... values) { state.fill(values...); });
        content = std::move(state);
    }
    void merge(AccumulatorState& other) override { content.merge(dynamic_cast<StructState&>(other).content); }
    void save(StateWriter& writer) const override {
        if constexpr (SavesItself<State>) {
            content.save(writer);
        } else if constexpr (HasFields<State>) {
            State copy = content;
            writer.version(1);
            std::apply([&](const auto&... field) { (saveField(field, writer), ...); }, copy.fields());
        } else {
            AccumulatorState::save(writer);
        }
    }
    void load(StateReader& reader) override {
        if constexpr (SavesItself<State>) {
            content.load(reader);
        } else if constexpr (HasFields<State>) {
            reader.version(1);
            std::apply([&](auto&... field) { (loadField(field, reader), ...); }, content.fields());
        } else {
            AccumulatorState::load(reader);
        }
    }
    auto finish() { return content.finish(); }

private:
    const Parameters<State>& parameters;
    State content;
};

template <typename State>
using ResultOf = std::remove_cvref_t<decltype(std::declval<State&>().finish())>;

template <typename State>
class StructAccumulation : public Accumulation {
public:
    StructAccumulation(const std::vector<InputDescription>& inputs, std::vector<OutputDescription> outputs,
                       State initial, const velmorak::Arguments& arguments, const Schema& schema)
        : parameters(inputs, arguments, schema), outputs(std::move(outputs)), initial(std::move(initial)) {}

    std::unique_ptr<AccumulatorState> newState() const override {
        return std::make_unique<StructState<State>>(parameters, initial);
    }
    void finish(AccumulatorState& state, Results& results) override {
        Outputs<ResultOf<State>>::set(outputs, dynamic_cast<StructState<State>&>(state).finish(), results);
    }

private:
    const Parameters<State> parameters;
    const std::vector<OutputDescription> outputs;
    const State initial;
};

}  // namespace shortkinds

}  // namespace velmorak
