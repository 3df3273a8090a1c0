#pragma once

#include <nlohmann/json.hpp>

#include <filesystem>
#include <iosfwd>
#include <string>
#include <vector>

/// What a run left in its results folder of what it was.
class RunRecordFile {
public:
    /// @throws UsageError when there is no such record.
    explicit RunRecordFile(const std::filesystem::path& recordFile);

    std::string documentText() const;
    /// Where the document stood; where the record lies suggests it when that folder is no more.
    std::filesystem::path documentFile() const;
    std::string aidaFile() const;
    std::vector<std::string> settings() const;

    /// Says which files that were read are not what they were.
    void compareInputs(const RunRecordFile& repeated, std::ostream& stream) const;
    /// Says which results are not the same, or that all are.
    /// @return false when some are not.
    bool compareResults(const RunRecordFile& repeated, std::ostream& stream) const;

private:
    std::filesystem::path file;
    nlohmann::ordered_json record;
};
