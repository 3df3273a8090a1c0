#pragma once

#include <sys/types.h>

#include <filesystem>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

/// Polls until the condition holds. @return false if it did not within that time.
bool waitFor(const std::function<bool()>& condition, int timeoutMs = 60000);

std::string contentOf(const std::filesystem::path& file);

/// A child process whose output goes to files. The destructor ends it, by force if necessary.
class Process {
public:
    struct Setting {
        std::map<std::string, std::string> environment;  ///< Added to ours; an empty value removes the variable.
        std::filesystem::path folder;                    ///< Current folder of the process; empty: ours.
    };

    Process(std::vector<std::string> command, const Setting& setting);
    explicit Process(std::vector<std::string> command) : Process(std::move(command), Setting{}) {}
    ~Process();
    Process(const Process&) = delete;
    Process& operator=(const Process&) = delete;

    pid_t id() const { return child; }
    bool isRunning();
    /// @return exit status, 128 + signal if a signal ended it, nothing if it is still running after that time.
    std::optional<int> wait(int timeoutMs = 60000);
    std::string output() const { return contentOf(outputFile); }
    std::string errors() const { return contentOf(errorFile); }

private:
    pid_t child = -1;
    std::optional<int> status;
    std::filesystem::path outputFile;
    std::filesystem::path errorFile;
};

/// A new folder below the system's folder for temporary files. The destructor removes it.
class TemporaryFolder {
public:
    TemporaryFolder();
    ~TemporaryFolder();
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;
    const std::filesystem::path& path() const { return folder; }

private:
    std::filesystem::path folder;
};
