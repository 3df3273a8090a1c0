#pragma once

#include "Desktop.h"
#include "Process.h"

#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <vector>

/// The program on a desktop of its own, over the recording library. One program at a time.
class RecordedProgram {
public:
    /// @param environment added to what the program gets anyway.
    RecordedProgram(const std::string& program, const std::string& script,
                    const std::map<std::string, std::string>& environment = {});
    ~RecordedProgram();
    RecordedProgram(const RecordedProgram&) = delete;
    RecordedProgram& operator=(const RecordedProgram&) = delete;

    /// Starts it and waits until its window is there. @return false when none came.
    bool start(const std::vector<std::string>& arguments);

    /// Chooses Quit by its key. @return the exit status, nothing when the program goes on.
    std::optional<int> quit();

    /// The calls so far that change something or belong to the start and the end.
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
