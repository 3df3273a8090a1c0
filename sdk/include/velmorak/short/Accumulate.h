#pragma once

#include <velmorak/Collection.h>
#include <velmorak/Kind.h>
#include <velmorak/short/Describe.h>
#include <velmorak/short/StructState.h>

#include <cstddef>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace velmorak {

namespace shortkinds {

/// What an accumulating kind is made of. The inputs of fill come first, then those of the function that makes a state.
template <typename State, typename Make>
class StructKind : public Described<velmorak::Accumulator> {
public:
    using Fill = Parameters<State>;
    using Constants = typename Signature<Make>::Arguments;
    static constexpr std::size_t inputCount = Fill::count + std::tuple_size_v<Constants>;

    StructKind(KindDescription about, std::vector<InputDescription> inputs, std::vector<OutputDescription> outputs,
               Make make)
        : Described(std::move(about)), inputs(std::move(inputs)), outputs(std::move(outputs)), make(std::move(make)) {}

    Ports ports(const ValueTexts& /*values*/) const override {
        Ports ports;
        ports.inputs = {{.name = "table", .description = "Rows to work on.", .type = ValueType::Table}};
        Fill::addInputs(inputs, ports.inputs);
        forEachPosition<std::tuple_size_v<Constants>>([&](auto position) {
            using Type = std::tuple_element_t<position, Constants>;
            ports.inputs.push_back(constantInput<Type>(inputs[Fill::count + position]));
        });
        ports.outputs = Outputs<ResultOf<State>>::specs(outputs);
        return ports;
    }
    std::string refusal(const std::string& input, const std::string& value) const override {
        return Fill::refusal(inputs, input, value);
    }
    std::unique_ptr<Accumulation> prepare(const Arguments& arguments, const Schema* schema,
                                          RunContext& /*context*/) const override {
        State initial = [&]<std::size_t... i>(std::index_sequence<i...>) {
            return make(constantOf<std::tuple_element_t<i, Constants>>(arguments, inputs[Fill::count + i].name)...);
        }
        (std::make_index_sequence<std::tuple_size_v<Constants>>());
        return std::make_unique<StructAccumulation<State>>(inputs, outputs, std::move(initial), arguments, *schema);
    }

private:
    std::vector<InputDescription> inputs;
    std::vector<OutputDescription> outputs;
    Make make;
};

}  // namespace shortkinds

/// Registers a kind that reduces a table to values. A state has
///     void fill(double x, ...);          for each row; parameters as those of rowWise
///     void merge(const State& other);    adds the state of the rows that follow
///     auto finish();                     the outputs: a value, or a std::array, std::pair or std::tuple of values
/// and, so that it can be kept and sent, either save(StateWriter&) const and load(StateReader&) as an AccumulatorState,
/// or fields(), which returns std::tie of its members: numbers, texts, and vectors of numbers. It can be copied.
/// @param inputs one for each parameter of fill, then one for each parameter of make.
/// @param outputs one for each value that finish returns.
/// @param make returns an empty state, made from numbers and texts that the user enters.
template <std::size_t inputCount, std::size_t outputCount, typename Make>
void accumulate(Registry& registry, KindDescription about, const InputDescription (&inputs)[inputCount],
                const OutputDescription (&outputs)[outputCount], Make make) {
    using State = typename shortkinds::Signature<Make>::Result;
    using Kind = shortkinds::StructKind<State, Make>;
    static_assert(inputCount == Kind::inputCount, "describe one input for each parameter of fill, and of make");
    static_assert(outputCount == shortkinds::Outputs<shortkinds::ResultOf<State>>::count,
                  "describe one output for each value that finish returns");
    registry.add(std::make_unique<Kind>(std::move(about), std::vector<InputDescription>(inputs, inputs + inputCount),
                                        std::vector<OutputDescription>(outputs, outputs + outputCount),
                                        std::move(make)));
}

/// As above, for a state that needs nothing to begin with.
template <typename State, std::size_t inputCount, std::size_t outputCount>
void accumulate(Registry& registry, KindDescription about, const InputDescription (&inputs)[inputCount],
                const OutputDescription (&outputs)[outputCount]) {
    accumulate(registry, std::move(about), inputs, outputs, [] { return State(); });
}

}  // namespace velmorak
