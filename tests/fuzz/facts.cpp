#include "QuietContext.h"
#include "Target.h"

#include "files/FileFacts.h"
#include "table/Checksum.h"

#include <velmorak/StateBytes.h>

#include <string>

// What the plan of a job knows of files: after the first letter, the content of a list of files, or of their columns.

namespace velmorak::fuzz {
namespace {

std::string sealed(const char* name, std::string_view bytes) {
    std::string text = StateWriter(name).sealed();
    text.resize(text.size() - sizeof(std::uint64_t));
    text += bytes;
    const std::uint64_t sum = checksum(text);
    return text.append(reinterpret_cast<const char*>(&sum), sizeof sum);
}

void readList(std::string_view bytes) {
    QuietContext context;
    FileList list;
    try {
        list = fileListFrom(sealed("list of files", bytes), context);
    } catch (const Failure&) {
        return;
    }
    require(list.properties.size() == list.values.size(), "each property has values");
    for (const ListedFile& file : list.files) {
        for (const ColumnPtr& values : list.values) {
            require(file.row < values->valueCount(), "a file has its properties");
        }
    }
    const std::string saved = bytesOf(list);
    require(bytesOf(fileListFrom(saved, context)) == saved, "a list that was read is the same when written again");
}

void readSurvey(std::string_view bytes) {
    FileSurvey survey;
    try {
        survey = fileSurveyFrom(sealed("columns of files", bytes), 2);
    } catch (const Failure&) {
        return;
    }
    require(survey.isSkipped.size() == 2, "it is known of each file whether it is skipped");
    const std::string saved = bytesOf(survey);
    require(bytesOf(fileSurveyFrom(saved, 2)) == saved, "columns that were read are the same when written again");
}

}  // namespace
}  // namespace velmorak::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace velmorak;
    const std::string_view bytes = fuzz::textOf(data, size);
    if (bytes.starts_with('l')) {
        fuzz::readList(bytes.substr(1));
    } else if (bytes.starts_with('c')) {
        fuzz::readSurvey(bytes.substr(1));
    }
    return 0;
}
