#include "graph/Paths.h"

#include "graph/Log.h"
#include "graph/document/Json.h"
#include "graph/preview/BackgroundTask.h"

#include <velmorak/RegularFile.h>

#include <dlfcn.h>
#include <fcntl.h>
#include <unistd.h>
#include <cerrno>
#include <future>
#include <memory>
#include <system_error>

namespace velmorak {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t maxDocument = std::size_t{64} << 20U;
constexpr std::chrono::seconds untilMessage(1);
constexpr std::chrono::seconds untilGivenUp(4);

class OpenFile {
public:
    /// Does not wait for the writer of a pipe.
    explicit OpenFile(const fs::path& file);
    ~OpenFile() { ::close(number); }
    OpenFile(const OpenFile&) = delete;
    OpenFile& operator=(const OpenFile&) = delete;

    int get() const { return number; }

private:
    int number;
};

OpenFile::OpenFile(const fs::path& file) : number(open(file.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC)) {
    if (number < 0) {
        throw DocumentError(0, "cannot be opened: " + std::generic_category().message(errno));
    }
}

std::string contentOf(const fs::path& file, BackgroundTask& work) {
    // Opening a device may have effects.
    if (const std::string reason = whyNotRegular(file); !reason.empty()) {
        throw DocumentError(0, reason.substr(file.string().size() + 1));
    }
    const OpenFile opened(file);
    std::string text;
    std::string piece(std::size_t{1} << 16U, '\0');
    for (ssize_t got = 1; got != 0; work.advance()) {
        got = read(opened.get(), piece.data(), piece.size());
        if (got < 0 && errno != EINTR) {
            throw DocumentError(0, "cannot be read: " + std::generic_category().message(errno));
        }
        text.append(piece, 0, got < 0 ? 0 : static_cast<std::size_t>(got));
        if (text.size() > maxDocument) {
            throw DocumentError(0, "is larger than 64 MiB");
        }
    }
    return text;
}

}  // namespace

std::string readWholeFile(const fs::path& file) {
    const auto reading = std::make_shared<std::promise<std::string>>();
    std::future<std::string> content = reading->get_future();
    const auto work = BackgroundTask::begin([reading, file](BackgroundTask& self) {
        try {
            reading->set_value(contentOf(file, self));
        } catch (...) {
            reading->set_exception(std::current_exception());
        }
    });
    if (!work->wait(untilMessage)) {
        printMessage("Waiting for " + file.string() + ": its file system does not answer.");
        if (!work->wait(untilGivenUp)) {
            throw DocumentError(0, "cannot be read: its file system does not answer");
        }
    }
    return content.get();
}

fs::path libraryFile() {
    Dl_info info{};
    if (dladdr(reinterpret_cast<const void*>(&libraryFile), &info) == 0 || !info.dli_fname) {
        return {};
    }
    return resolved(info.dli_fname);
}

fs::path libraryFolder() {
    return libraryFile().parent_path();
}

fs::path resolved(const fs::path& path) {
    std::error_code error;
    fs::path result = fs::weakly_canonical(fs::absolute(path, error), error);
    return error ? path : result;
}

}  // namespace velmorak
