#pragma once

#include "QuietContext.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <functional>
#include <memory>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include <velmorak/Aida.h>
#include <velmorak/TemporaryFolder.h>

struct archive;

namespace velmorak {

/// Gives each test a temporary folder.
class AidaFiles : public ::testing::Test {
protected:
    std::filesystem::path fileWith(std::string_view bytes) const;
    /// The text between <aida> and </aida>.
    std::filesystem::path aidaWith(std::string_view objects) const;

    TemporaryFolder ownFolder{"io"};
    const std::filesystem::path& folder = ownFolder.path();
    QuietContext run;
};

/// @return the bytes with a few random changes, and sometimes without their end.
std::string damaged(std::string bytes, std::mt19937& random);

/// Adds a file to an archive that is being written.
void addFile(::archive* target, const std::string& name, const std::string& content);

/// All rows of a table: the columns joined, and the length of each chunk.
struct Rows {
    Schema schema;
    std::vector<Column> columns;
    std::vector<std::size_t> chunks;
    std::string failure;  ///< Message of the failure that ended the table, if any.

    std::size_t count() const;
};
Rows readRows(const std::filesystem::path& file, const std::string& object, RunContext& run);

std::filesystem::path ownFile(const std::string& name);
std::string contentOf(const std::filesystem::path& file);
std::string gzipped(std::string_view bytes);
/// @return the message that the work failed with, or a text that says that it did not fail.
std::string failureOf(const std::function<void()>& work);

}  // namespace velmorak
