#pragma once

#include <array>
#include <cstddef>
#include <optional>
#include <tuple>
#include <type_traits>
#include <utility>

/// Takes functions and their results apart at compile time.
namespace velmorak::shortkinds {

template <typename>
inline constexpr bool isNever = false;

/// Result and parameters of a function, a lambda without auto parameters, or a member function.
template <typename Callable>
struct Signature : Signature<decltype(&Callable::operator())> {};
template <typename R, typename... Parameters>
struct Signature<R(Parameters...)> {
    using Result = R;
    using Arguments = std::tuple<std::remove_cvref_t<Parameters>...>;
    static constexpr std::size_t count = sizeof...(Parameters);
};
template <typename R, typename... Parameters>
struct Signature<R (*)(Parameters...)> : Signature<R(Parameters...)> {};
template <typename R, typename Class, typename... Parameters>
struct Signature<R (Class::*)(Parameters...)> : Signature<R(Parameters...)> {};
template <typename R, typename Class, typename... Parameters>
struct Signature<R (Class::*)(Parameters...) const> : Signature<R(Parameters...)> {};
template <typename R, typename Class, typename... Parameters>
struct Signature<R (Class::*)(Parameters...) noexcept> : Signature<R(Parameters...)> {};
template <typename R, typename Class, typename... Parameters>
struct Signature<R (Class::*)(Parameters...) const noexcept> : Signature<R(Parameters...)> {};

/// The values that a function returns: one, or those of an array, a pair or a tuple.
template <typename R>
struct Values {
    using Types = std::tuple<R>;
    static std::tuple<R> tie(R&& value) { return std::tuple<R>(std::move(value)); }
};
template <typename T, std::size_t count>
struct Values<std::array<T, count>> {
    template <std::size_t>
    using Same = T;
    template <std::size_t... positions>
    static std::tuple<Same<positions>...> types(std::index_sequence<positions...>);
    using Types = decltype(types(std::make_index_sequence<count>()));
    static Types tie(std::array<T, count>&& values) { return std::tuple_cat(std::move(values)); }
};
template <typename First, typename Second>
struct Values<std::pair<First, Second>> {
    using Types = std::tuple<First, Second>;
    static Types tie(std::pair<First, Second>&& values) { return Types(std::move(values)); }
};
template <typename... Each>
struct Values<std::tuple<Each...>> {
    using Types = std::tuple<Each...>;
    static Types tie(Types&& values) { return std::move(values); }
};

/// A result that may be absent: an optional around the values.
template <typename R>
struct MayBeAbsent : std::false_type {
    using Present = R;
};
template <typename R>
struct MayBeAbsent<std::optional<R>> : std::true_type {
    using Present = R;
};

template <typename R>
using ValueTypes = typename Values<typename MayBeAbsent<std::remove_cvref_t<R>>::Present>::Types;

/// Calls visit(std::integral_constant<std::size_t, i>()) for i = 0 ... count - 1.
template <std::size_t count, typename Visit>
void forEachPosition(const Visit& visit) {
    [&]<std::size_t... positions>(std::index_sequence<positions...>) {
        (visit(std::integral_constant<std::size_t, positions>()), ...);
    }
    (std::make_index_sequence<count>());
}

}  // namespace velmorak::shortkinds
