#pragma once

#include <velmorak/Run.h>

#include <filesystem>
#include <string>

namespace velmorak {

/// A folder of its own below the system's folder for temporary files; gone with the object.
class ScratchFolder {
public:
    /// @throws Failure if it cannot be made.
    ScratchFolder();
    ~ScratchFolder();
    ScratchFolder(const ScratchFolder&) = delete;
    ScratchFolder& operator=(const ScratchFolder&) = delete;

    const std::filesystem::path& path() const { return folder; }

private:
    std::filesystem::path folder;
};

/// Runs gnuplot on a script in its folder, without a shell and without the user's own start file.
/// @param script path of the script, seen from the folder; must not begin with "-".
/// @throws Failure if gnuplot is not installed or ends with an error, with what it said; Stopped.
void runGnuplot(const std::filesystem::path& folder, const std::string& script, const RunContext& context);

}  // namespace velmorak
