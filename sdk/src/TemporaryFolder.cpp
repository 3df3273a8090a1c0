#include <velmorak/Failure.h>
#include <velmorak/TemporaryFolder.h>

#include <cerrno>
#include <cstdlib>
#include <string>
#include <system_error>

namespace velmorak {

TemporaryFolder::TemporaryFolder(std::string_view purpose) {
    std::error_code error;
    const std::filesystem::path parent = std::filesystem::temp_directory_path(error);
    std::string name = (parent / "velmorak-").string() + std::string(purpose) + "-XXXXXX";
    if (!error && !mkdtemp(name.data())) {
        error.assign(errno, std::generic_category());
    }
    if (error) {
        throw Failure("cannot create a temporary folder in \"" + parent.string() + "\": " + error.message() +
                      "; set TMPDIR to a folder that can be written");
    }
    folder = name;
}

TemporaryFolder::~TemporaryFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(folder, ignored);
}

}  // namespace velmorak
