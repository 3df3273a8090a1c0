#include "files/FileContext.h"

#include <velmorak/Text.h>

namespace velmorak {

FileWarnings::~FileWarnings() {
    if (count > maxShown) {
        const std::size_t more = count - maxShown;
        context.warn(std::to_string(more) + (more == 1 ? " more warning" : " more warnings") + " about its files");
    }
}

void FileWarnings::add(const std::string& sentence) {
    if (count++ < maxShown) {
        context.warn(sentence);
    }
}

void FileContext::warn(const std::string& sentence) {
    if (!warnings) {
        return;
    }
    const bool isNamed = sentence.find(name) != std::string::npos;
    warnings->add(isNamed ? sentence : velmorak::quoted(name) + ": " + sentence);
}

}  // namespace velmorak
