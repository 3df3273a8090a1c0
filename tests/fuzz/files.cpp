#include "InputFile.h"
#include "QuietContext.h"
#include "Target.h"

#include "files/FileList.h"

#include <velmorak/FolderNames.h>

#include <algorithm>

// A list of files. The first byte chooses whether the rest is what a user enters, the content of a list, or a table of
// file properties. Folders have made-up names, so that no pattern looks into the file system.

namespace velmorak::fuzz {
namespace {

/// The run of a document beside the input file, which it finds as "list.txt" and "samples.csv".
class ListContext : public QuietContext {
public:
    explicit ListContext(std::filesystem::path input) : input(std::move(input)) {}

    std::filesystem::path inputFile(const std::string& text) const override {
        require(!text.empty(), "a name is not empty");
        return locate(text);
    }
    std::filesystem::path locate(const std::string& text) const override {
        if (text == "list.txt" || text == "samples.csv") {
            return input;
        }
        std::string name = "no-" + text;
        std::replace(name.begin(), name.end(), '/', '_');
        std::replace(name.begin(), name.end(), '\0', '_');
        return input.parent_path() / name;
    }
    std::vector<std::string> namesIn(const std::string& /*folder*/, const std::string& pattern) const override {
        std::vector<std::string> names;
        for (const char* name : {"a.csv", "b", "run_1.csv", "ä"}) {
            if (matchesPattern(name, pattern)) {
                names.emplace_back(name);
            }
        }
        return names;
    }

private:
    std::filesystem::path input;
};

void check(const FileList& list) {
    require(!list.files.empty(), "a list has files");
    require(list.properties.size() == list.values.size(), "each property has values");
    for (const ListedFile& file : list.files) {
        require(!file.name.empty(), "a file has a name");
        for (const ColumnPtr& values : list.values) {
            require(file.row < values->valueCount(), "a file has its properties");
        }
    }
}

}  // namespace
}  // namespace velmorak::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace velmorak;
    if (size == 0) {
        return 0;
    }
    const std::string text(fuzz::textOf(data + 1, size - 1));
    const fuzz::InputFile file(text);
    fuzz::ListContext context(file.path());
    const unsigned choice = data[0] % 3U;
    try {
        fuzz::check(findFiles("file", choice == 0 ? text : choice == 1 ? "@list.txt" : "@samples.csv", context));
    } catch (const Failure&) {
    } catch (const Stopped&) {
    }
    return 0;
}
