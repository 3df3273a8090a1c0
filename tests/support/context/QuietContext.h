#pragma once

#include <velmorak/Failure.h>
#include <velmorak/Run.h>

#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace velmorak {

/// The run of a test: records warnings, and stops when the test says so.
class QuietContext : public RunContext {
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
    double maxCells() const override { return cellLimit; }

    std::vector<std::string> warnings;
    bool stopping = false;
    double cellLimit = defaultMaxCells;

private:
    std::string name = "Reader";
};

}  // namespace velmorak
