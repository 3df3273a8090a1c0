#include "TemporaryFolder.h"

#include "Settings.h"

#include <cerrno>
#include <cstdlib>
#include <string>
#include <system_error>

TemporaryFolder::TemporaryFolder() {
    const std::filesystem::path parent = std::filesystem::temp_directory_path();
    std::string name = (parent / "velmorak-again-XXXXXX").string();
    if (!mkdtemp(name.data())) {
        throw UsageError("no folder can be created in \"" + parent.string() +
                         "\": " + std::generic_category().message(errno) + "; set TMPDIR or give --results");
    }
    folder = name;
}

TemporaryFolder::~TemporaryFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(folder, ignored);
}
