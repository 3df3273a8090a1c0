#include "graph/Log.h"

#include "graph/document/Json.h"
#include "run/announce/RuntimeFolder.h"
#include "run/messages/LongLine.h"
#include "run/messages/Visible.h"

#include <iostream>

namespace velmorak {

void printMessage(const std::string& sentence) {
    const std::string line = withoutLongLines(visibleMessage(sentence)) + '\n';
    std::cerr.write(line.data(), static_cast<std::streamsize>(line.size()));
    std::cerr.flush();
    announceMessage(line.substr(0, line.size() - 1));
}

std::string quote(std::string_view text) {
    return '"' + visible(shortened(std::string(text))) + '"';
}

std::string withoutFullStop(std::string sentence) {
    while (!sentence.empty() && (sentence.back() == '.' || sentence.back() == '\n')) {
        sentence.pop_back();
    }
    return validUtf8(sentence);
}

}  // namespace velmorak
