#include "Process.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <stdexcept>

namespace {

std::filesystem::path temporaryFile() {
    std::string name = (std::filesystem::temp_directory_path() / "velmorak-process-XXXXXX").string();
    const int descriptor = mkstemp(name.data());
    if (descriptor < 0) {
        throw std::runtime_error("no temporary file");
    }
    close(descriptor);
    return name;
}

void redirect(const std::filesystem::path& file, int descriptor) {
    const int opened = open(file.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
    dup2(opened, descriptor);
    close(opened);
}

[[noreturn]] void become(std::vector<std::string> command, const Process::Setting& setting) {
    for (const auto& [name, value] : setting.environment) {
        if (value.empty()) {
            unsetenv(name.c_str());
        } else {
            setenv(name.c_str(), value.c_str(), 1);
        }
    }
    if (!setting.folder.empty() && chdir(setting.folder.c_str()) != 0) {
        _exit(126);
    }
    std::vector<char*> arguments;
    for (std::string& argument : command) {
        arguments.push_back(argument.data());
    }
    arguments.push_back(nullptr);
    execvp(arguments.front(), arguments.data());
    _exit(127);
}

}  // namespace

bool waitFor(const std::function<bool()>& condition, int timeoutMs) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(timeoutMs);
    while (!condition()) {
        if (std::chrono::steady_clock::now() > end) {
            return false;
        }
        poll(nullptr, 0, 20);
    }
    return true;
}

std::string contentOf(const std::filesystem::path& file) {
    std::ifstream stream(file, std::ios::binary);
    std::ostringstream text;
    text << stream.rdbuf();
    return text.str();
}

Process::Process(std::vector<std::string> command, const Setting& setting)
    : outputFile(temporaryFile()), errorFile(temporaryFile()) {
    child = fork();
    if (child == 0) {
        redirect(outputFile, STDOUT_FILENO);
        redirect(errorFile, STDERR_FILENO);
        become(std::move(command), setting);
    }
    if (child < 0) {
        throw std::runtime_error("no new process");
    }
}

Process::~Process() {
    if (isRunning()) {
        kill(child, SIGTERM);
        if (!wait(3000)) {
            kill(child, SIGKILL);
            wait(3000);
        }
    }
    std::filesystem::remove(outputFile);
    std::filesystem::remove(errorFile);
}

bool Process::isRunning() {
    if (!status) {
        int raw = 0;
        if (waitpid(child, &raw, WNOHANG) == child) {
            status = WIFEXITED(raw) ? WEXITSTATUS(raw) : 128 + WTERMSIG(raw);
        }
    }
    return !status;
}

std::optional<int> Process::wait(int timeoutMs) {
    waitFor([this] { return !isRunning(); }, timeoutMs);
    return status;
}

TemporaryFolder::TemporaryFolder() {
    std::string name = (std::filesystem::temp_directory_path() / "velmorak-folder-XXXXXX").string();
    if (!mkdtemp(name.data())) {
        throw std::runtime_error("no temporary folder");
    }
    folder = name;
}

TemporaryFolder::~TemporaryFolder() {
    std::filesystem::remove_all(folder);
}
