#include "RecordedProgram.h"

#include <unistd.h>

#include <algorithm>
#include <fstream>
#include <sstream>

namespace {

/// Calls with which the editor only reads plug-ins and kinds.
bool isQuestion(const std::string& call) {
    const std::string operation = call.substr(0, call.find('('));
    return operation.find('.') != std::string::npos || operation == "IndexOf" || operation == "FindPlugin";
}

}  // namespace

RecordedProgram::RecordedProgram(const std::string& program, const std::string& script,
                                 const std::map<std::string, std::string>& environment)
    : program(program), environment(environment) {
    std::string pattern = (std::filesystem::temp_directory_path() / "velmorak-recorded-XXXXXX").string();
    folder = mkdtemp(pattern.data());
    log = folder / "calls";
    std::ofstream(folder / "script") << script;
}

RecordedProgram::~RecordedProgram() {
    process.reset();
    std::filesystem::remove_all(folder);
}

bool RecordedProgram::start(const std::vector<std::string>& arguments) {
    std::vector<std::string> command{program};
    command.insert(command.end(), arguments.begin(), arguments.end());
    Process::Setting setting = desktop.setting(folder);
    setting.environment.insert(environment.begin(), environment.end());
    setting.environment["QZ_RECORDING_SCRIPT"] = (folder / "script").string();
    setting.environment["QZ_RECORDING_LOG"] = log.string();
    setting.environment["G_DEBUG"] = "fatal-criticals";
    process.emplace(command, setting);
    window = desktop.windowOf(*process);
    return !window.empty() && desktop.activate(window);
}

std::optional<int> RecordedProgram::quit() {
    desktop.activate(window);
    desktop.pressKeys({"ctrl+q"});
    return process->wait(20000);
}

std::vector<std::string> RecordedProgram::calls() const {
    std::vector<std::string> found;
    std::istringstream lines(contentOf(log));
    for (std::string line; std::getline(lines, line);) {
        if (!isQuestion(line)) {
            found.push_back(line);
        }
    }
    return found;
}

bool RecordedProgram::hasCalled(const std::string& call) const {
    const std::vector<std::string> found = calls();
    return std::find(found.begin(), found.end(), call) != found.end();
}
