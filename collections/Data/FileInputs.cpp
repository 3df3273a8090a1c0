#include "FileInputs.h"

#include <utility>

namespace velmorak {

InputSpec fileListInput(const std::string& formats, const std::string& ifEmpty) {
    return {.name = "file",
            .description = formats +
                           "; or several, separated by commas or line ends; a pattern, such as run_*.csv or "
                           "data/**/*.csv; a folder; @list.txt with a file on each line; or @samples.csv, a table with "
                           "a column file, whose other columns become columns of each file's rows. A relative path is "
                           "searched for beside the document, then in the current folder." +
                           ifEmpty,
            .type = ValueType::Text};
}

std::vector<InputSpec> fileChainInputs() {
    return {
        {.name = "file columns",
         .description = "Yes: adds the columns file, with the name of the file that a row comes from, and file_number, "
                        "counted from 0.",
         .type = ValueType::Choice,
         .value = "no",
         .choices = {"no", "yes"}},
        {.name = "differing files",
         .description = "If the files have different columns: the run fails, or takes the columns that all of them "
                        "have.",
         .type = ValueType::Choice,
         .value = "fail",
         .choices = {"fail", "common columns"}},
        {.name = "damaged files",
         .description = "A file that cannot be opened, or not be read to its end, stops the run (fail), or is left out "
                        "from there on, reported and listed in run.json (skip).",
         .type = ValueType::Choice,
         .value = "fail",
         .choices = {"fail", "skip"}},
    };
}

FileList filesOf(const Arguments& arguments, RunContext& context) {
    return findFiles("file", arguments.text("file"), context);
}

std::vector<std::filesystem::path> pathsOf(const FileList& list) {
    std::vector<std::filesystem::path> paths;
    paths.reserve(list.files.size());
    for (const ListedFile& file : list.files) {
        paths.push_back(file.path);
    }
    return paths;
}

std::unique_ptr<TableReader> openFilesOf(FileList list, OpenFile open, const Arguments& arguments,
                                         RunContext& context) {
    return openFiles(std::move(list), std::move(open),
                     {.hasFileColumns = arguments.text("file columns") == "yes",
                      .takesCommonColumns = arguments.text("differing files") == "common columns",
                      .skipsDamaged = arguments.text("damaged files") == "skip"},
                     context);
}

}  // namespace velmorak
