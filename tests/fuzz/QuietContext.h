#pragma once

#include <atomic>
#include <functional>
#include <memory>
#include <string>

#include <velmorak/Failure.h>
#include <velmorak/Run.h>

namespace velmorak::fuzz {

/// A run without a user: it writes no results, drops warnings, and stops after a number of polls, so that an input of a
/// few bytes cannot take minutes.
class QuietContext : public RunContext {
public:
    explicit QuietContext(long maxPolls = 1'000'000) : pollsLeft(maxPolls) {}

    bool isStopping() const override { return --pollsLeft < 0; }
    const std::string& pluginName() const override { return name; }
    std::filesystem::path inputFile(const std::string& text) const override { return text; }
    std::filesystem::path commandLineAida() const override { return {}; }
    void writeResult(const std::string&, const std::function<void(const std::filesystem::path&)>&) override {
        throw Failure("there are no results here");
    }
    std::unique_ptr<ResultFile> beginResult(const std::string&) override { throw Failure("there are no results here"); }
    void warn(const std::string&) override {}

private:
    mutable std::atomic<long> pollsLeft;
    std::string name = "fuzz";
};

}  // namespace velmorak::fuzz
