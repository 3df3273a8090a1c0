#pragma once

#include "store/ResultStore.h"

#include "table/Bytes.h"

#include <optional>
#include <string>

/// What the store keeps as bytes, for this machine only.
namespace velmorak {

void addFiles(ByteWriter& writer, const std::vector<FileContent>& files);
/// @throws std::invalid_argument
std::vector<FileContent> readFiles(ByteReader& reader);

/// @return nothing when there is an object among the outputs that only its collection knows.
std::optional<std::string> bytesOf(const StoredResult& result);
/// The bytes of bytesOf in pieces. @throws std::invalid_argument where bytesOf gives nothing.
void bytesOf(const StoredResult& result, const ByteSink& sink);
/// @return how many these are, without making them; nothing where bytesOf gives nothing.
std::optional<std::uint64_t> countBytesOf(const StoredResult& result);
/// @return nothing when these are no such bytes.
std::optional<StoredResult> storedResultFrom(const std::string& bytes);

}  // namespace velmorak
