#include "graph/ValidateAidaFile.h"

#include "graph/Log.h"
#include "graph/preview/PreviewContext.h"

#include <velmorak/Aida.h>
#include <velmorak/RegularFile.h>
#include <filesystem>
#include <limits>

namespace velmorak {

namespace {

namespace fs = std::filesystem;

constexpr std::chrono::seconds patience(2);

/// Prints the warnings of the reader, because the user has just named the file.
class CheckContext : public PreviewContext {
public:
    CheckContext(const Pipeline& beside, const BackgroundTask& work);
    bool isStopping() const override { return work.isStopping(); }
    void warn(const std::string& sentence) override { printMessage(sentence); }

private:
    const BackgroundTask& work;
};

CheckContext::CheckContext(const Pipeline& beside, const BackgroundTask& work)
    : PreviewContext(beside, std::numeric_limits<std::uint64_t>::max()), work(work) {}

std::string validateAidaFile(const std::string& file, const BackgroundTask& work) {
    if (file.empty()) {
        return "no name is given";
    }
    try {
        requireRegular(file);
        const Pipeline beside;
        CheckContext context(beside, work);
        listAida(file, context);
        return {};
    } catch (const std::exception& error) {
        return work.isStopping() ? std::string() : withoutFullStop(error.what());
    }
}

}  // namespace

std::string absolutePath(const std::string& file) {
    std::error_code error;
    const fs::path path = file.empty() ? fs::path() : fs::absolute(file, error).lexically_normal();
    return error ? file : path.string();
}

bool AidaFileCheck::check(const std::string& path, const std::string& name) {
    close();
    const auto isBad = std::make_shared<std::atomic<bool>>(false);
    work = BackgroundTask::begin([path, name, isBad](BackgroundTask& self) {
        const std::string reason = validateAidaFile(path, self);
        *isBad = !reason.empty();
        if (!reason.empty()) {
            printMessage("The AIDA file " + name + " cannot be read: " + reason + ".");
        }
    });
    if (!work->wait(patience)) {
        printMessage("Still waiting for the AIDA file " + name + ", in the background.");
    }
    return !*isBad;
}

void AidaFileCheck::close() {
    if (!work) {
        return;
    }
    work->stop();
    work->wait(patience);
    work = nullptr;
}

}  // namespace velmorak
