#pragma once

#include "store/ResultStore.h"

#include "table/ByteReader.h"
#include "table/ByteWriter.h"

#include <optional>
#include <string>

/// Serialisation of stored results, in the byte order of this machine.
namespace velmorak {

/// @throws std::invalid_argument for an object of a class that only its collection knows.
void addValue(ByteWriter& writer, const Value& value);
/// @throws std::invalid_argument
Value readValue(ByteReader& reader);

void addFiles(ByteWriter& writer, const std::vector<FileContent>& files);
/// @throws std::invalid_argument
std::vector<FileContent> readFiles(ByteReader& reader);

/// @return empty if an output is an object of a class that only its collection knows.
std::optional<std::string> bytesOf(const StoredResult& result);
/// Writes the same bytes in pieces. @throws std::invalid_argument where the other bytesOf returns nothing.
void bytesOf(const StoredResult& result, const ByteSink& sink);
/// @return the number of these bytes, without making them; empty where bytesOf returns nothing.
std::optional<std::uint64_t> countBytesOf(const StoredResult& result);
/// @return empty if the bytes are not those of a result.
std::optional<StoredResult> storedResultFrom(const std::string& bytes);

}  // namespace velmorak
