#include "run/record/WholeFile.h"

#include "run/results/ResultsPlace.h"
#include "store/AtomicFile.h"

#include <velmorak/Failure.h>
#include <velmorak/RegularFile.h>

#include <cerrno>
#include <fstream>
#include <sstream>
#include <system_error>

namespace velmorak {

std::string contentOf(const std::filesystem::path& file, const std::string& title) {
    if (const std::string sentence = whyNotRegular(file); !sentence.empty()) {
        throw Failure(sentence);
    }
    errno = 0;
    const std::ifstream stream(file, std::ios::binary);
    if (!stream) {
        throw Failure(title + " cannot be opened: " + std::generic_category().message(errno));
    }
    std::ostringstream content;
    content << stream.rdbuf();
    return content.str();
}

void replaceFile(const std::filesystem::path& file, std::string_view text) {
    AtomicFile replaced(file, std::string(temporaryMark));
    replaced.write(text);
    replaced.commit();
}

}  // namespace velmorak
