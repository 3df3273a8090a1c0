#include "WrittenFile.h"

#include <algorithm>

namespace velmorak {

std::string asFileName(const std::string& pluginName) {
    std::string name = pluginName;
    std::replace_if(
        name.begin(), name.end(), [](char c) { return c == '/' || static_cast<unsigned char>(c) < 0x20; }, '_');
    if (name.empty() || name.front() == '.') {
        name.insert(0, "_");
    }
    return name;
}

InputSpec writtenFileInput(const std::string& ending, const std::string& remark) {
    return {.name = "file",
            .description = "Name of the file in the results folder" + remark +
                           ". Empty: the name of this plug-in with " + ending + ".",
            .type = ValueType::Text};
}

std::string writtenFileName(const Arguments& arguments, const RunContext& context, const std::string& ending) {
    const std::string& file = arguments.text("file");
    return file.empty() ? asFileName(context.pluginName()) + ending : file;
}

}  // namespace velmorak
