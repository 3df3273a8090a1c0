#pragma once

#include <velmorak/Kind.h>
#include <velmorak/short/Describe.h>

#include <string>
#include <type_traits>
#include <utility>

namespace velmorak {

/// Parameter of a short kind that has one value for all rows: an input for a number or a text, not an expression of
/// columns. Converts to the value.
template <typename T>
class Constant {
public:
    Constant() = default;
    explicit Constant(T value) : content(std::move(value)) {}
    operator const T&() const { return content; }
    const T& value() const { return content; }

private:
    T content{};
};

namespace shortkinds {

/// @return the number or text of an input as the type that the author's function takes.
template <typename T>
T constantOf(const velmorak::Arguments& arguments, const std::string& input) {
    if constexpr (std::is_same_v<T, std::string>) {
        return arguments.text(input);
    } else if constexpr (std::is_floating_point_v<T>) {
        return static_cast<T>(arguments.number(input));
    } else {
        static_assert(std::is_integral_v<T>, "a constant is a floating-point number, an integer or a std::string");
        return static_cast<T>(arguments.integer(input));
    }
}

template <typename T>
InputSpec constantInput(const InputDescription& about) {
    constexpr bool isText = std::is_same_v<T, std::string>;
    InputSpec input{.name = about.name, .description = about.description, .value = about.value};
    input.type = !isText ? ValueType::Number : about.choices.empty() ? ValueType::Text : ValueType::Choice;
    input.choices = about.choices;
    if constexpr (!isText) {
        input.value = about.value.empty() ? "0" : about.value;
        input.minimum = about.minimum;
        input.maximum = about.maximum;
        input.isInteger = std::is_integral_v<T>;
    }
    return input;
}

}  // namespace shortkinds

}  // namespace velmorak
