#include "Replay.h"

#include "Settings.h"

#include <velmorak/RegularFile.h>

#include <nlohmann/json.hpp>

#include <cerrno>
#include <fstream>
#include <map>
#include <ostream>
#include <sstream>
#include <system_error>
#include <utility>

namespace {

namespace fs = std::filesystem;
using Json = nlohmann::ordered_json;

/// Sums of what one plug-in gave: "\"file.svg\"" or "output \"sum\"".
using Sums = std::map<std::string, std::string>;

Sums sumsOf(const Json& plugin) {
    Sums sums;
    for (const Json& result : plugin.at("results")) {
        sums["file \"" + result.at("file").get<std::string>() + "\""] = result.at("sha256").get<std::string>();
    }
    for (const Json& output : plugin.at("outputs")) {
        const Json& sum = output.contains("value") ? output.at("value") : output.at("sha256");
        sums["output \"" + output.at("name").get<std::string>() + "\""] = sum.get<std::string>();
    }
    return sums;
}

std::map<std::string, Json> pluginsOf(const Json& record) {
    std::map<std::string, Json> plugins;
    for (const Json& plugin : record.at("plugins")) {
        plugins[plugin.at("name").get<std::string>()] = plugin;
    }
    return plugins;
}

/// @throws UsageError when it cannot be read.
std::string contentOf(const fs::path& file) {
    if (const std::string sentence = velmorak::whyNotRegular(file); !sentence.empty()) {
        throw UsageError(sentence);
    }
    errno = 0;
    const std::ifstream stream(file, std::ios::binary);
    if (!stream) {
        throw UsageError("the record \"" + file.string() +
                         "\" cannot be opened: " + std::generic_category().message(errno));
    }
    std::ostringstream content;
    content << stream.rdbuf();
    return content.str();
}

bool wasDone(const Json& plugin) {
    return plugin.at("outcome") == "done" || plugin.at("outcome") == "reused";
}

Sums inputsOf(const Json& record) {
    Sums sums;
    for (const Json& input : record.at("inputs")) {
        sums[input.at("file").get<std::string>()] = input.at("sha256").get<std::string>();
    }
    return sums;
}

}  // namespace

RunRecordFile::RunRecordFile(const fs::path& recordFile) : file(fs::absolute(recordFile)) {
    const auto refuse = [&](const std::string& reason) {
        throw UsageError("\"" + recordFile.string() + "\" is no record of a run: " + reason);
    };
    try {
        record = Json::parse(contentOf(file));
        if (record.at("run") != 1) {
            refuse("it is of a version that is not known");
        }
        documentText();
        pluginsOf(record);
        inputsOf(record);
    } catch (const Json::parse_error& error) {
        refuse("it is no JSON text, or is cut off, at byte " + std::to_string(error.byte));
    } catch (const Json::exception&) {
        refuse("it lacks something that every record has");
    }
}

std::string RunRecordFile::documentText() const {
    return record.at("document").at("text").get<std::string>();
}

fs::path RunRecordFile::documentFile() const {
    const fs::path document = record.at("document").at("file").get<std::string>();
    const bool isThere = !document.empty() && fs::is_directory(document.parent_path());
    const std::string name = document.empty() ? "untitled.zedra" : document.filename().string();
    return isThere ? document : file.parent_path().parent_path() / name;
}

std::string RunRecordFile::aidaFile() const {
    return record.at("aida").get<std::string>();
}

std::vector<std::string> RunRecordFile::settings() const {
    return record.at("settings").get<std::vector<std::string>>();
}

void RunRecordFile::compareInputs(const RunRecordFile& repeated, std::ostream& stream) const {
    const Sums now = inputsOf(repeated.record);
    for (const auto& [name, sum] : inputsOf(record)) {
        if (const auto found = now.find(name); found != now.end() && found->second != sum) {
            stream << "The file " << (name.empty() ? "of -a" : "\"" + name + "\"") << " is not what it was then.\n";
        }
    }
}

bool RunRecordFile::compareResults(const RunRecordFile& repeated, std::ostream& stream) const {
    const std::map<std::string, Json> now = pluginsOf(repeated.record);
    std::size_t compared = 0;
    bool isSame = true;
    for (const auto& [name, before] : pluginsOf(record)) {
        if (!wasDone(before)) {
            continue;
        }
        const auto found = now.find(name);
        const Sums sums = found == now.end() ? Sums() : sumsOf(found->second);
        for (const auto& [result, sum] : sumsOf(before)) {
            const auto other = sums.find(result);
            ++compared;
            if (other == sums.end() || other->second != sum) {
                stream << (other == sums.end() ? "missing: " : "differs: ") << result << " of \"" << name << "\"\n";
                isSame = false;
            }
        }
    }
    if (isSame) {
        stream << "identical: " << compared << (compared == 1 ? " result\n" : " results\n");
    }
    return isSame;
}
