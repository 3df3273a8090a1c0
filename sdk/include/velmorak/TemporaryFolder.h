#pragma once

#include <filesystem>
#include <string_view>

namespace velmorak {

/// A new folder in the system's folder for temporary files ($TMPDIR, or /tmp). Removed with its content by the
/// destructor.
class TemporaryFolder {
public:
    /// @param purpose part of the folder's name, for whoever finds it after a crash.
    /// @throws Failure with the reason of the system if it cannot be created.
    explicit TemporaryFolder(std::string_view purpose);
    ~TemporaryFolder();
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    const std::filesystem::path& path() const { return folder; }

private:
    std::filesystem::path folder;
};

}  // namespace velmorak
