#include "TextOutput.h"

#include <velmorak/Failure.h>
#include <velmorak/SystemReason.h>

#include <utility>

namespace velmorak {

TextOutput::TextOutput(std::string name, std::string first, RunContext& context)
    : name(std::move(name)), first(std::move(first)), context(&context) {}

void TextOutput::append(const std::string& text) {
    if (text.empty()) {
        return;
    }
    begin();
    write(text);
}

void TextOutput::complete() {
    begin();
    errno = 0;
    out.close();
    if (!out) {
        fail();
    }
    file->keep();
}

void TextOutput::begin() {
    if (file) {
        return;
    }
    file = context->beginResult(name);
    errno = 0;
    out.open(file->path(), std::ios::binary);
    write(first);
    first.clear();
}

void TextOutput::write(const std::string& text) {
    errno = out ? 0 : errno;
    if (!out.write(text.data(), static_cast<std::streamsize>(text.size()))) {
        fail();
    }
}

void TextOutput::fail() const {
    const int error = errno;
    throw Failure("\"" + finalPath(file->path(), name) + "\" cannot be written" + systemReason(error));
}

}  // namespace velmorak
