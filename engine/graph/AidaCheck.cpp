#include "AidaCheck.h"

#include "Say.h"

#include <velmorak/Aida.h>
#include <filesystem>

namespace velmorak {

namespace {

namespace fs = std::filesystem;

/// A file is looked at when no run is going on: nothing can stop it, and nothing is written.
class LookContext : public RunContext {
public:
    bool isStopping() const override { return false; }
    const std::string& pluginName() const override { return name; }
    fs::path inputFile(const std::string& text) const override { return text; }
    fs::path commandLineAida() const override { return {}; }
    void writeResult(const std::string& fileName, const std::function<void(const fs::path&)>& /*writer*/) override {
        throw Failure(fileName + " is not written: no run is going on.");
    }
    std::unique_ptr<ResultFile> beginResult(const std::string& fileName) override {
        throw Failure(fileName + " is not written: no run is going on.");
    }
    void warn(const std::string& sentence) override { say(sentence); }

private:
    std::string name;
};

}  // namespace

std::string absolutePath(const std::string& file) {
    std::error_code error;
    const fs::path path = file.empty() ? fs::path() : fs::absolute(file, error).lexically_normal();
    return error ? file : path.string();
}

std::string whyNotAida(const std::string& file) {
    if (file.empty())
        return "no name is given";
    try {
        LookContext context;
        listAida(file, context);
        return {};
    } catch (const std::exception& error) {
        return withoutFullStop(error.what());
    }
}

}  // namespace velmorak
