#pragma once

#include <velmorak/Collection.h>
#include <velmorak/Kind.h>
#include <velmorak/short/RowArguments.h>
#include <velmorak/short/Values.h>

#include <cstddef>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace velmorak {

namespace shortkinds {

/// One parameter of a function of values: a number or a text that is entered or wired.
template <typename T>
struct ValueArgument {
    static_assert(std::is_arithmetic_v<T> || std::is_same_v<T, std::string> || std::is_base_of_v<DataObject, T>,
                  "a parameter is a number, a NumberWithError, a std::string, a reference to an object of "
                  "DataObjects.h, or a shared or plain pointer to a const one, which may be null");
    static InputSpec input(const InputDescription& about) {
        if constexpr (std::is_base_of_v<DataObject, T>) {
            return {.name = about.name, .description = about.description, .type = objectType<T>()};
        } else {
            return constantInput<T>(about);
        }
    }
    static decltype(auto) get(const velmorak::Arguments& arguments, const std::string& input) {
        if constexpr (std::is_base_of_v<DataObject, T>) {
            const T* const object = objectIn<T>(arguments, input);
            if (!object) {
                throw Failure(input, "nothing is wired");
            }
            return *object;
        } else {
            return constantOf<T>(arguments, input);
        }
    }

    /// @return null if nothing is wired.
    template <typename Object>
    static const Object* objectIn(const velmorak::Arguments& arguments, const std::string& input) {
        const auto* const any = std::get_if<DataObjectPtr>(&arguments.value(input));
        const auto* const object = any ? dynamic_cast<const Object*>(any->get()) : nullptr;
        if (any && !object) {
            throw Failure(input, "an object of another class is wired; see the description of the input");
        }
        return object;
    }
};

template <>
struct ValueArgument<NumberWithError> {
    static InputSpec input(const InputDescription& about) { return constantInput<double>(about); }
    static NumberWithError get(const velmorak::Arguments& arguments, const std::string& input) {
        return arguments.numberWithError(input);
    }
};

/// An object that may be missing.
template <typename Object>
struct ValueArgument<const Object*> {
    static InputSpec input(const InputDescription& about) {
        InputSpec input = ValueArgument<Object>::input(about);
        input.isOptional = true;
        return input;
    }
    static const Object* get(const velmorak::Arguments& arguments, const std::string& input) {
        return ValueArgument<Object>::template objectIn<Object>(arguments, input);
    }
};

template <typename Object>
struct ValueArgument<std::shared_ptr<const Object>> {
    static InputSpec input(const InputDescription& about) { return ValueArgument<const Object*>::input(about); }
    static std::shared_ptr<const Object> get(const velmorak::Arguments& arguments, const std::string& input) {
        if (!ValueArgument<const Object*>::get(arguments, input)) {
            return nullptr;
        }
        return std::dynamic_pointer_cast<const Object>(std::get<DataObjectPtr>(arguments.value(input)));
    }
};

template <typename Callable>
class ValueFunctionKind : public Described<velmorak::Function> {
public:
    using Parameters = typename Signature<Callable>::Arguments;
    using Result = std::remove_cvref_t<typename Signature<Callable>::Result>;
    static constexpr std::size_t count = std::tuple_size_v<Parameters>;

    ValueFunctionKind(KindDescription about, std::vector<InputDescription> inputs,
                      std::vector<OutputDescription> outputs, Callable function)
        : Described(std::move(about)),
          inputs(std::move(inputs)),
          outputs(std::move(outputs)),
          function(std::move(function)) {}

    Ports ports(const ValueTexts& /*values*/) const override {
        Ports ports;
        forEachPosition<count>([&](auto position) {
            ports.inputs.push_back(ValueArgument<std::tuple_element_t<position, Parameters>>::input(inputs[position]));
        });
        ports.outputs = Outputs<Result>::specs(outputs);
        return ports;
    }
    void evaluate(const Arguments& arguments, Results& results, RunContext& /*context*/) const override {
        Result result = [&]<std::size_t... i>(std::index_sequence<i...>) {
            return function(ValueArgument<std::tuple_element_t<i, Parameters>>::get(arguments, inputs[i].name)...);
        }
        (std::make_index_sequence<count>());
        Outputs<Result>::set(outputs, std::move(result), results);
    }

private:
    std::vector<InputDescription> inputs;
    std::vector<OutputDescription> outputs;
    Callable function;
};

}  // namespace shortkinds

/// Registers a kind that computes values from values.
/// @param inputs one for each parameter of the function: a number, a NumberWithError, a std::string, or an object. A
///               reference to an object fails if nothing is wired; a pointer is null then.
/// @param outputs one for each value that the function returns: a number, a NumberWithError, a std::string, an
///                object or a shared pointer to one; or a std::array, std::pair or std::tuple of them.
template <std::size_t inputCount, std::size_t outputCount, typename Callable>
void fromValues(Registry& registry, KindDescription about, const InputDescription (&inputs)[inputCount],
                const OutputDescription (&outputs)[outputCount], Callable function) {
    using Kind = shortkinds::ValueFunctionKind<Callable>;
    static_assert(inputCount == Kind::count, "describe one input for each parameter of the function");
    static_assert(outputCount == shortkinds::Outputs<typename Kind::Result>::count,
                  "describe one output for each value that the function returns");
    registry.add(std::make_unique<Kind>(std::move(about), std::vector<InputDescription>(inputs, inputs + inputCount),
                                        std::vector<OutputDescription>(outputs, outputs + outputCount),
                                        std::move(function)));
}

}  // namespace velmorak
