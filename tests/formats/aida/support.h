#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include <velmorak/Aida.h>
#include <velmorak/Failure.h>
#include <velmorak/Run.h>

namespace velmorak {

/// A run that does nothing but remember what it is told.
class QuietRun : public RunContext {
public:
    bool isStopping() const override { return stopping; }
    const std::string& pluginName() const override { return name; }
    std::filesystem::path inputFile(const std::string& text) const override { return text; }
    std::filesystem::path commandLineAida() const override { return {}; }
    void writeResult(const std::string& fileName,
                     const std::function<void(const std::filesystem::path&)>& writer) override {
        writer(fileName);
    }
    std::unique_ptr<ResultFile> beginResult(const std::string& fileName) override { throw Failure(fileName); }
    void warn(const std::string& sentence) override { warnings.push_back(sentence); }

    std::vector<std::string> warnings;
    bool stopping = false;

private:
    std::string name = "Reader";
};

/// A folder of its own for each test, gone afterwards.
class AidaFiles : public ::testing::Test {
protected:
    AidaFiles();
    ~AidaFiles() override;

    std::filesystem::path fileWith(std::string_view bytes) const;
    /// The text between <aida> and </aida>.
    std::filesystem::path aidaWith(std::string_view objects) const;

    std::filesystem::path folder;
    QuietRun run;
};

/// All rows of a table: the columns joined, and the length of each chunk.
struct Rows {
    Schema schema;
    std::vector<Column> columns;
    std::vector<std::size_t> chunks;
    std::string failure;  ///< With which the table ended, if it did.

    std::size_t count() const;
};
Rows readRows(const std::filesystem::path& file, const std::string& object, RunContext& run);

std::filesystem::path ownFile(const std::string& name);
std::string contentOf(const std::filesystem::path& file);
std::string gzipped(std::string_view bytes);
/// What the work failed with; a text that says so when it did not.
std::string failureOf(const std::function<void()>& work);

}  // namespace velmorak
