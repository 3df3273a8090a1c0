#pragma once

#include <cerrno>
#include <filesystem>
#include <string>
#include <system_error>

namespace velmorak {

/// @return why a call of the system failed, as ": No space left on device".
/// @param error errno after the call; a stream that failed without setting it has an error of input or output.
inline std::string systemReason(int error) {
    return ": " + std::generic_category().message(error != 0 ? error : EIO);
}

/// @return the path that a result file will have, for messages while it has a temporary name.
inline std::string finalPath(const std::filesystem::path& temporary, const std::string& name) {
    return (temporary.parent_path() / std::filesystem::path(name).filename()).string();
}

}  // namespace velmorak
