#include "AidaFile.h"

#include "shared/FileInputs.h"

namespace velmorak {

std::vector<InputSpec> aidaInputs(const std::string& objects, const std::string& example) {
    return {
        {.name = "file",
         .description =
             "AIDA file, plain or compressed; the format is recognised by content. A relative path is searched "
             "for beside the document, then in the current folder. Empty: the file given with -a on the "
             "command line.",
         .type = ValueType::Text},
        {.name = "object",
         .description =
             "Path of the " + objects + " in the file, for example " + example + ". Empty: the only one in the file.",
         .type = ValueType::Text},
    };
}

FileList aidaFilesOf(const Arguments& arguments, RunContext& context) {
    if (!arguments.text("file").empty()) {
        return filesOf(arguments, context);
    }
    const std::filesystem::path file = aidaFileOf(arguments, context);
    FileList list;
    list.files.push_back({file.string(), file});
    return list;
}

std::filesystem::path aidaFileOf(const Arguments& arguments, const RunContext& context) {
    const std::string& file = arguments.text("file");
    if (!file.empty()) {
        return context.inputFile(file);
    }
    std::filesystem::path fromCommandLine = context.commandLineAida();
    if (fromCommandLine.empty()) {
        throw Failure("file", "no file is given: enter one here, or use -a on the command line");
    }
    return fromCommandLine;
}

}  // namespace velmorak
