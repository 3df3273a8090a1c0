#pragma once

#include "run/record/RunRecordFile.h"

#include <filesystem>
#include <iosfwd>

/// @throws UsageError when there is no such record.
velmorak::StoredRunRecord readRecordToRepeat(const std::filesystem::path& file);

/// @return where the document was; beside the results folder of the record when its folder is gone.
std::filesystem::path documentFileOf(const velmorak::StoredRunRecord& record, const std::filesystem::path& recordFile);

/// Prints which of the files that were read have changed since.
void compareInputs(const velmorak::StoredRunRecord& before, const velmorak::StoredRunRecord& repeated,
                   std::ostream& stream);

/// Prints which results differ, or that all are identical. @return false when some differ.
bool compareResults(const velmorak::StoredRunRecord& before, const velmorak::StoredRunRecord& repeated,
                    std::ostream& stream);
