#include "graph/ValidateAidaFile.h"

#include "graph/PreviewContext.h"
#include "graph/Log.h"

#include <velmorak/Aida.h>
#include <velmorak/RegularFile.h>
#include <filesystem>
#include <limits>

namespace velmorak {

namespace {

namespace fs = std::filesystem;

constexpr std::chrono::seconds aMoment(2);

/// Says what is odd in the file: it was just named by the user.
class CheckContext : public LookContext {
public:
    CheckContext(const Pipeline& beside, const WorkAside& aside)
        : LookContext(beside, std::numeric_limits<std::uint64_t>::max()), work(aside) {}
    bool isStopping() const override { return work.isStopping(); }
    void warn(const std::string& sentence) override { say(sentence); }

private:
    const WorkAside& work;
};

std::string whyNotAida(const std::string& file, const WorkAside& work) {
    if (file.empty())
        return "no name is given";
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

bool AidaCheck::look(const std::string& path, const std::string& name) {
    close();
    const auto isBad = std::make_shared<std::atomic<bool>>(false);
    work = WorkAside::begin([path, name, isBad](WorkAside& self) {
        const std::string reason = whyNotAida(path, self);
        *isBad = !reason.empty();
        if (!reason.empty())
            say("The AIDA file " + name + " cannot be read: " + reason + ".");
    });
    if (!work->wait(aMoment))
        say("Still waiting for the AIDA file " + name + ", in the background.");
    return !*isBad;
}

void AidaCheck::close() {
    if (!work)
        return;
    work->stop();
    work->wait(aMoment);
    work = nullptr;
}

}  // namespace velmorak
