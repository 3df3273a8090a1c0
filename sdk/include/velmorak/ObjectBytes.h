#pragma once

#include <velmorak/Value.h>

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

/// Serialises data objects of any class, for the result cache and for other processes.
namespace velmorak {

/// Serialises an object of a class listed in DataObjects.h, including name, title, annotation and options.
/// @throws std::invalid_argument for an object of another class.
std::string bytesOf(const DataObject& object);

/// Receives consecutive pieces of a sequence of bytes.
using ByteSink = std::function<void(std::string_view)>;

/// As above, but passes the bytes on in pieces, so that they need not fit into memory together.
/// @throws std::invalid_argument for an object of another class, and whatever the sink throws.
void bytesOf(const DataObject& object, const ByteSink& sink);
/// @return the number of bytes of bytesOf(object), without producing them.
/// @throws std::invalid_argument for an object of another class.
std::uint64_t countBytesOf(const DataObject& object);

/// Reverses bytesOf.
/// @return an object of the same class, equal to the last bit.
/// @throws std::invalid_argument if the bytes are damaged.
DataObjectPtr objectFrom(const std::string& bytes);

}  // namespace velmorak
