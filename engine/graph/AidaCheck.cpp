#include "AidaCheck.h"

#include "LookContext.h"
#include "Say.h"

#include <velmorak/Aida.h>
#include <velmorak/RegularFile.h>
#include <filesystem>
#include <limits>

namespace velmorak {

namespace {

namespace fs = std::filesystem;

/// Says what is odd in the file: it was just named by the user.
class CheckContext : public LookContext {
public:
    explicit CheckContext(const Pipeline& beside) : LookContext(beside, std::numeric_limits<std::uint64_t>::max()) {}
    void warn(const std::string& sentence) override { say(sentence); }
};

}  // namespace

std::string absolutePath(const std::string& file) {
    std::error_code error;
    const fs::path path = file.empty() ? fs::path() : fs::absolute(file, error).lexically_normal();
    return error ? file : path.string();
}

std::string whyNotAida(const std::string& file) {
    if (file.empty())
        return "no name is given";
    try {
        requireRegular(file);
        const Pipeline beside;
        CheckContext context(beside);
        listAida(file, context);
        return {};
    } catch (const std::exception& error) {
        return withoutFullStop(error.what());
    }
}

}  // namespace velmorak
