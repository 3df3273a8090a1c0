#pragma once

#include <velmorak/FunctionObject.h>
#include <velmorak/Histogram.h>
#include <velmorak/HistogramList.h>
#include <velmorak/Points.h>
#include <velmorak/Profile.h>

#include <variant>

/// The closed list of data object classes, and a visitor over them.
namespace velmorak {

/// A data object by its concrete class. DataObject stands for classes that only a test or a later version has.
using ConcreteObject =
    std::variant<const Histogram1D*, const Histogram2D*, const Histogram3D*, const Profile1D*, const Profile2D*,
                 const Points*, const FunctionObject*, const HistogramList*, const DataObject*>;

/// @return a pointer to the object itself, never null.
ConcreteObject concrete(const DataObject& object);

/// Joins callables, usually lambdas, into one that is overloaded.
template <typename... Callables>
struct overloaded : Callables... {
    using Callables::operator()...;
};
template <typename... Callables>
overloaded(Callables...) -> overloaded<Callables...>;

/// Calls the visitor with the object as its concrete class:
///     const std::size_t cells = visit(object, overloaded{
///         [](const Histogram1D& histogram) { return histogram.bins(); },
///         [](const Points& points) { return points.size(); },
///         [](const DataObject&) { return std::size_t{0}; },
///     });
/// The visitor must accept every class of ConcreteObject, and all its overloads return the same type. An overload for
/// DataObject takes all classes that have none of their own.
template <typename Visitor>
decltype(auto) visit(const DataObject& object, const Visitor& visitor) {
    return std::visit([&](const auto* it) -> decltype(auto) { return visitor(*it); }, concrete(object));
}

}  // namespace velmorak
