#include <velmorak/Failure.h>
#include <velmorak/RegularFile.h>

#include <system_error>

namespace velmorak {
namespace {

std::string nameOf(std::filesystem::file_type type) {
    switch (type) {
        case std::filesystem::file_type::fifo:
            return "a FIFO";
        case std::filesystem::file_type::socket:
            return "a socket";
        case std::filesystem::file_type::block:
            return "a block device";
        case std::filesystem::file_type::character:
            return "a character device";
        default:
            return "of an unknown type";
    }
}

}  // namespace

std::string whyNotRegular(const std::filesystem::path& file) {
    std::error_code error;
    const std::filesystem::file_status status = std::filesystem::status(file, error);
    if (error || !std::filesystem::exists(status) || std::filesystem::is_regular_file(status)) {
        return {};
    }
    if (std::filesystem::is_directory(status)) {
        return file.string() + " is a folder";
    }
    return file.string() + " is not a regular file (" + nameOf(status.type()) + ")";
}

void requireRegular(const std::filesystem::path& file) {
    if (const std::string sentence = whyNotRegular(file); !sentence.empty()) {
        throw Failure(sentence);
    }
}

}  // namespace velmorak
