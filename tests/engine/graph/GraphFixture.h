#pragma once

#include <QzManager.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <velmorak/TemporaryFolder.h>

#include <filesystem>
#include <iostream>
#include <sstream>
#include <string>

namespace velmorak::test {

/// Captures standard error while it exists.
class Errors {
public:
    Errors() : before(std::cerr.rdbuf(heard.rdbuf())) {}
    ~Errors() { std::cerr.rdbuf(before); }
    Errors(const Errors&) = delete;
    Errors& operator=(const Errors&) = delete;

    std::string text() const { return heard.str(); }
    /// Number of lines.
    long lines() const;

private:
    std::ostringstream heard;
    std::streambuf* before;
};

/// A folder that is removed with its test.
class Folder {
    TemporaryFolder folder{"test"};

public:
    const std::filesystem::path& path = folder.path();
    /// Writes a file, with the folders that it needs. @return its path.
    std::string write(const std::string& name, const std::string& content) const;
};

std::string contentOf(const std::filesystem::path& file);

/// A manager with the tests' collections, and words for what a user does with it.
class Graph : public testing::Test {
protected:
    QzManager manager{"QzAnalysisFactory"};

    static std::uint16_t kindNumber(const std::string& kind);
    QzBase& add(const std::string& kind, const std::string& name);
    QzBase& node(const std::string& name) { return *manager.FindPlugin(name); }
    QzBase::Input& input(const std::string& plugin, const std::string& name);
    QzBase::Output& output(const std::string& plugin, const std::string& name);
    void setValue(const std::string& plugin, const std::string& inputName, const std::string& value);
    /// wire("Reader", "table", "Filter", "table").
    bool wire(const std::string& sender, const std::string& from, const std::string& receiver, const std::string& to);
    /// "A.sum" or empty.
    std::string sourceOf(const std::string& plugin, const std::string& inputName);
    std::vector<std::string> names() const;
    void read(const std::string& document);

    Folder folder;
};

/// Every binding is known to both of its ends, and to no other.
void expectInStep(const QzManager& manager);

}  // namespace velmorak::test
