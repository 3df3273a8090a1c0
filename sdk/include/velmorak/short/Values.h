#pragma once

#include <velmorak/DataObjects.h>
#include <velmorak/Kind.h>
#include <velmorak/short/Describe.h>
#include <velmorak/short/Signature.h>

#include <memory>
#include <string>
#include <tuple>
#include <type_traits>
#include <utility>
#include <vector>

/// Values that an author's function returns, and the outputs that take them.
namespace velmorak::shortkinds {

template <typename T>
struct Pointee {
    using Type = T;
};
template <typename T>
struct Pointee<std::shared_ptr<T>> {
    using Type = std::remove_const_t<T>;
};

/// The type of the wire for an object class.
template <typename Object>
constexpr ValueType objectType() {
    if constexpr (std::is_same_v<Object, Histogram1D> || std::is_same_v<Object, Histogram2D> ||
                  std::is_same_v<Object, Histogram3D>) {
        return ValueType::Histogram;
    } else if constexpr (std::is_same_v<Object, Profile1D> || std::is_same_v<Object, Profile2D>) {
        return ValueType::Profile;
    } else if constexpr (std::is_same_v<Object, Points>) {
        return ValueType::Points;
    } else if constexpr (std::is_same_v<Object, FunctionObject>) {
        return ValueType::Function;
    } else if constexpr (std::is_same_v<Object, HistogramList>) {
        return ValueType::Histograms;
    } else {
        return ValueType::Any;
    }
}

template <typename T>
constexpr ValueType outputType() {
    using Bare = typename Pointee<T>::Type;
    static_assert(std::is_arithmetic_v<T> || std::is_same_v<T, NumberWithError> || std::is_same_v<T, std::string> ||
                      std::is_base_of_v<DataObject, Bare>,
                  "an output takes a number, a NumberWithError, a std::string, or an object of DataObjects.h");
    if constexpr (std::is_arithmetic_v<T> || std::is_same_v<T, NumberWithError>) {
        return ValueType::Number;
    } else if constexpr (std::is_same_v<T, std::string>) {
        return ValueType::Text;
    } else {
        return objectType<Bare>();
    }
}

template <typename T>
Value asValue(T&& value) {
    using Bare = std::remove_cvref_t<T>;
    if constexpr (std::is_arithmetic_v<Bare>) {
        return static_cast<double>(value);
    } else if constexpr (std::is_base_of_v<DataObject, Bare>) {
        return DataObjectPtr(std::make_shared<Bare>(std::forward<T>(value)));
    } else if constexpr (std::is_base_of_v<DataObject, typename Pointee<Bare>::Type>) {
        return DataObjectPtr(std::forward<T>(value));
    } else {
        return std::forward<T>(value);
    }
}

/// The outputs of a function that returns R.
template <typename R>
struct Outputs {
    using Types = typename Values<R>::Types;
    static constexpr std::size_t count = std::tuple_size_v<Types>;

    static std::vector<OutputSpec> specs(const std::vector<OutputDescription>& about) {
        std::vector<OutputSpec> specs;
        forEachPosition<count>([&](auto position) {
            specs.push_back({.name = about[position].name,
                             .description = about[position].description,
                             .type = outputType<std::tuple_element_t<position, Types>>()});
        });
        return specs;
    }
    static void set(const std::vector<OutputDescription>& about, R&& result, Results& results) {
        Types values = Values<R>::tie(std::move(result));
        forEachPosition<count>(
            [&](auto position) { results.set(about[position].name, asValue(std::move(std::get<position>(values)))); });
    }
};

}  // namespace velmorak::shortkinds
