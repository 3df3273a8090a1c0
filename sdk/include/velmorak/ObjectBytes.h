#pragma once

#include <velmorak/Value.h>

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

/// Objects of any class as bytes: what a result store keeps, and what crosses a process border.
namespace velmorak {

/// Everything of the object, with name, title, annotation and options: a Histogram1D, Histogram2D, Histogram3D,
/// Profile1D, Profile2D, Points or FunctionObject.
/// @throws std::invalid_argument for an object of another class.
std::string bytesOf(const DataObject& object);

/// Takes bytes piece by piece, in order.
using ByteSink = std::function<void(std::string_view)>;

/// Gives the bytes of bytesOf in pieces, so that they need not lie in memory together.
/// @throws std::invalid_argument for an object of another class; and what the sink throws.
void bytesOf(const DataObject& object, const ByteSink& sink);
/// @return how many bytes bytesOf gives, without making them.
/// @throws std::invalid_argument for an object of another class.
std::uint64_t countBytesOf(const DataObject& object);

/// @return an object of the class that bytesOf was given, equal to it to the last bit.
/// @throws std::invalid_argument if the bytes are damaged.
DataObjectPtr objectFrom(const std::string& bytes);

}  // namespace velmorak
