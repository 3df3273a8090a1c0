#pragma once

#include "QuietContext.h"

#include <velmorak/TemporaryFolder.h>

#include <gtest/gtest.h>
#include <filesystem>
#include <fstream>
#include <string>
#include <utility>
#include <vector>

namespace velmorak {

/// The run of a document in a folder: relative names are those of its files.
class FolderContext : public QuietContext {
public:
    explicit FolderContext(std::filesystem::path folder) : folder(std::move(folder)) {}

    std::filesystem::path inputFile(const std::string& text) const override {
        inputs.push_back(text);
        return locate(text);
    }
    std::filesystem::path locate(const std::string& text) const override { return folder / text; }
    std::vector<std::string> namesIn(const std::string& from, const std::string& pattern) const override {
        listings.push_back(from + ":" + pattern);
        return QuietContext::namesIn(from, pattern);
    }
    void skipFile(const std::filesystem::path& file, const std::string& reason) override {
        skipped.emplace_back(file.filename().string(), reason);
    }
    bool isPreview() const override { return preview; }

    mutable std::vector<std::string> inputs;    ///< Files that were recorded.
    mutable std::vector<std::string> listings;  ///< Folders and patterns that were recorded.
    std::vector<std::pair<std::string, std::string>> skipped;
    bool preview = false;

private:
    std::filesystem::path folder;
};

class FilesFixture : public testing::Test {
protected:
    void write(const std::string& name, const std::string& text) const {
        std::filesystem::create_directories((folder.path() / name).parent_path());
        std::ofstream(folder.path() / name, std::ios::binary) << text;
    }

    TemporaryFolder folder{"files-test"};
    FolderContext context{folder.path()};
};

}  // namespace velmorak
