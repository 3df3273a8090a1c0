#include "TextOutput.h"

#include <velmorak/Failure.h>

#include <utility>

namespace velmorak {

TextOutput::TextOutput(std::string name, std::string first, RunContext& runContext)
    : name(std::move(name)), first(std::move(first)), context(&runContext) {}

void TextOutput::append(const std::string& text) {
    if (text.empty()) {
        return;
    }
    begin();
    write(text);
}

void TextOutput::complete() {
    begin();
    out.close();
    if (!out) {
        throw Failure("\"" + name + "\" cannot be written");
    }
    file->keep();
}

void TextOutput::begin() {
    if (file) {
        return;
    }
    file = context->beginResult(name);
    out.open(file->path(), std::ios::binary);
    write(first);
    first.clear();
}

void TextOutput::write(const std::string& text) {
    if (!out.write(text.data(), static_cast<std::streamsize>(text.size()))) {
        throw Failure("\"" + name + "\" cannot be written");
    }
}

}  // namespace velmorak
