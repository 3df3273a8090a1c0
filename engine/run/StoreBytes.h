#pragma once

#include "ResultStore.h"

#include "../data/Bytes.h"

#include <optional>
#include <string>

/// What the store keeps as bytes, for this machine only.
namespace velmorak {

void addFiles(ByteWriter& writer, const std::vector<FileContent>& files);
/// @throws std::invalid_argument
std::vector<FileContent> readFiles(ByteReader& reader);

/// About as many as bytesOf gives, without making them.
std::uint64_t roughBytesOf(const StoredResult& result);
/// @return nothing when there is an object among the outputs that only its collection knows.
std::optional<std::string> bytesOf(const StoredResult& result);
/// @return nothing when these are no such bytes.
std::optional<StoredResult> storedResultFrom(const std::string& bytes);

}  // namespace velmorak
