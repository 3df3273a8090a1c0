#include "AidaFile.h"

namespace velmorak {

std::vector<InputSpec> aidaInputs(const std::string& objects, const std::string& example) {
    return {
        {.name = "file",
         .description = "AIDA file, plain or packed in any way that is told by its content. A relative name is looked "
                        "for beside the document, then in the current folder. Empty: the file given with -a on the "
                        "command line.",
         .type = ValueType::Text},
        {.name = "object",
         .description = "Path of the " + objects + " in the file, for example " + example +
                        ". Empty: the only one that the file holds.",
         .type = ValueType::Text},
    };
}

std::filesystem::path aidaFileOf(const Arguments& arguments, const RunContext& context) {
    const std::string& file = arguments.text("file");
    if (!file.empty()) {
        return context.inputFile(file);
    }
    std::filesystem::path fromCommandLine = context.commandLineAida();
    if (fromCommandLine.empty()) {
        throw Failure("file", "there is no file to read: name one here, or give one with -a on the command line");
    }
    return fromCommandLine;
}

}  // namespace velmorak
