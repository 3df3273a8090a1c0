#pragma once

#include <velmorak/Run.h>

#include <filesystem>
#include <string>

namespace velmorak {

/// A folder for temporary files; the destructor removes it with its contents.
class TemporaryFolder {
public:
    /// @throws Failure if it cannot be created.
    TemporaryFolder();
    ~TemporaryFolder();
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    const std::filesystem::path& path() const { return folder; }

private:
    std::filesystem::path folder;
};

/// Runs gnuplot on a script in its folder, without a shell and without the user's start file.
/// @param script path of the script relative to the folder; must not begin with "-".
/// @throws Failure if gnuplot is not installed or fails, with its message; Stopped.
void runGnuplot(const std::filesystem::path& folder, const std::string& script, const RunContext& context);

}  // namespace velmorak
