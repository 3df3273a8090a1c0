#pragma once

#include <sys/mman.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <string>
#include <string_view>

namespace velmorak::fuzz {

/// A file in memory that holds the bytes of one input, for readers that open files by name.
class InputFile {
public:
    explicit InputFile(std::string_view bytes) : descriptor(memfd_create("input", MFD_CLOEXEC)) {
        for (std::size_t done = 0; done < bytes.size();) {
            const ssize_t count = write(descriptor, bytes.data() + done, bytes.size() - done);
            if (count <= 0) {
                std::abort();
            }
            done += static_cast<std::size_t>(count);
        }
    }
    ~InputFile() { close(descriptor); }
    InputFile(const InputFile&) = delete;
    InputFile& operator=(const InputFile&) = delete;

    std::filesystem::path path() const { return "/proc/self/fd/" + std::to_string(descriptor); }

private:
    int descriptor;
};

}  // namespace velmorak::fuzz
