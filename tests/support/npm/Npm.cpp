#include "Npm.h"

#include <array>
#include <cstdio>
#include <memory>
#include <stdexcept>

namespace velmorak::npm {

namespace {

std::string quoted(const std::string& word) {
    std::string text = "'";
    for (const char c : word) {
        text += c == '\'' ? "'\\''" : std::string(1, c);
    }
    return text + "'";
}

std::string restOf(std::FILE& stream) {
    std::string text;
    std::array<char, 65536> bytes{};
    while (const std::size_t count = std::fread(bytes.data(), 1, bytes.size(), &stream)) {
        text.append(bytes.data(), count);
    }
    return text;
}

}  // namespace

std::string missing(const std::vector<std::string>& packages) {
    const std::filesystem::path folder = VELMORAK_NPM_PACKAGES;
    if (!std::filesystem::exists(VELMORAK_NODE)) {
        return "Node is not installed (scripts/prepare test)";
    }
    for (const std::string& package : packages) {
        if (!std::filesystem::exists(folder / "node_modules" / package / "package.json") ||
            !std::filesystem::exists(folder / "load.mjs")) {
            return "the npm package " + package + " is not installed (scripts/prepare test)";
        }
    }
    return {};
}

std::string run(const std::filesystem::path& script, const std::vector<std::string>& arguments) {
    std::string command =
        "NPM_PACKAGES=" + quoted(VELMORAK_NPM_PACKAGES) + " " + quoted(VELMORAK_NODE) + " " + quoted(script.string());
    for (const std::string& argument : arguments) {
        command += " " + quoted(argument);
    }
    std::FILE* const stream = popen(command.c_str(), "r");
    if (!stream) {
        throw std::runtime_error("cannot run " + command);
    }
    std::string output = restOf(*stream);
    if (const int status = pclose(stream); status != 0) {
        throw std::runtime_error(script.string() + " failed:\n" + output);
    }
    return output;
}

}  // namespace velmorak::npm
