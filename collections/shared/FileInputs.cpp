#include "shared/FileInputs.h"

#include <utility>

namespace velmorak {

namespace {

InputSpec fileInput(const std::string& formats, const std::string& lists, const std::string& ifEmpty) {
    return {.name = "file",
            .description = formats +
                           "; or several, separated by commas or line ends; a pattern, such as run_* or data/**/run_*; "
                           "a folder; " +
                           lists + " A relative path is searched for beside the document, then in the current folder." +
                           ifEmpty,
            .type = ValueType::Text};
}

/// What to do with several files.
std::vector<InputSpec> fileChainInputs() {
    return {
        {.name = "file_columns",
         .description = "Yes: adds the columns file, with the name of the file that a row comes from, and file_number, "
                        "counted from 0.",
         .type = ValueType::Choice,
         .value = "no",
         .choices = {"no", "yes"}},
        {.name = "differing_files",
         .description = "If the files have different columns: the run fails, or takes the columns that all of them "
                        "have.",
         .type = ValueType::Choice,
         .value = "fail",
         .choices = {"fail", "common columns"}},
        {.name = "damaged_files",
         .description = "A file that cannot be opened, or not be read to its end, stops the run (fail), or is left out "
                        "from there on, reported and listed in run.json (skip).",
         .type = ValueType::Choice,
         .value = "fail",
         .choices = {"fail", "skip"}},
    };
}

}  // namespace

InputSpec fileListInput(const std::string& formats, const std::string& ifEmpty) {
    return fileInput(formats,
                     "@list.txt, a text file with a file on each line; or @samples.csv, a table with a column file, "
                     "whose other columns become columns of each file's rows.",
                     ifEmpty);
}

InputSpec summedFilesInput(const std::string& formats, const std::string& ifEmpty) {
    return fileInput(formats,
                     "or @list.txt, a text file with a file on each line. The objects of several files are added in "
                     "the order of the files.",
                     ifEmpty);
}

InputSpec columnsInput() {
    return {.name = "columns",
            .description =
                "Names of the columns to read, separated by blanks or commas; a name with other characters in back "
                "quotes. Empty: all columns that can be read.",
            .type = ValueType::Text};
}

Ports fileTablePorts(std::vector<InputSpec> inputs, const std::string& rows) {
    for (InputSpec& input : fileChainInputs()) {
        inputs.push_back(std::move(input));
    }
    return {.inputs = std::move(inputs), .outputs = {{.name = "table", .description = rows, .type = ValueType::Table}}};
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

std::unique_ptr<TableReader> openFilesOf(FileList list, std::shared_ptr<const FileOpener> opener,
                                         const Arguments& arguments, RunContext& context) {
    return openFiles(std::move(list), std::move(opener),
                     {.hasFileColumns = arguments.text("file_columns") == "yes",
                      .takesCommonColumns = arguments.text("differing_files") == "common columns",
                      .skipsDamaged = arguments.text("damaged_files") == "skip"},
                     context);
}

}  // namespace velmorak
