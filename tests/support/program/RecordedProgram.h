#pragma once

#include "Desktop.h"
#include "Process.h"

#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <vector>

/// The program with the recording library, on a private desktop. One program at a time.
class RecordedProgram {
public:
    /// @param environment added to the default environment.
    RecordedProgram(const std::string& program, const std::string& script,
                    const std::map<std::string, std::string>& environment = {});
    ~RecordedProgram();
    RecordedProgram(const RecordedProgram&) = delete;
    RecordedProgram& operator=(const RecordedProgram&) = delete;

    /// Starts it and waits for its window. @return false if none appeared.
    bool start(const std::vector<std::string>& arguments);

    /// Presses the key of Quit. @return the exit status, nothing if the program continues.
    std::optional<int> quit();

    /// The calls so far, except those that only read.
    std::vector<std::string> calls() const;
    bool hasCalled(const std::string& call) const;

    Desktop desktop;
    std::optional<Process> process;
    std::string window;

private:
    std::filesystem::path folder, log;
    std::string program;
    std::map<std::string, std::string> environment;
};
