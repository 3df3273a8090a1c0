#pragma once

#include "ScanTable.h"

#include <chrono>
#include <filesystem>
#include <string>

/// A page of HTML about a scan, without any file from elsewhere: the overview, the table, and links to the results of
/// each run.
/// @param document path; may be empty.
std::string scanPage(const ScanTable& table, const std::string& document);

/// The files scan.csv, scan.svg and scan.html about a scan, which are there from its begin on, so that nothing of an
/// earlier scan is taken for its result.
class ScanFiles {
public:
    /// Writes the files. @param table outlives this.
    ScanFiles(const ScanTable& table, std::string document, std::filesystem::path folder);

    /// Writes them anew if the last time is a second ago.
    void update();
    /// Writes them anew, and prints their place or why they cannot be written. @return false in that case.
    bool end();

private:
    void write();

    const ScanTable& table;
    std::string document;
    std::filesystem::path folder;
    std::string complaint;
    std::chrono::steady_clock::time_point written;
};
