#include "kinds.h"

#include "files/ChosenColumns.h"
#include "shared/FormatOfFile.h"

#include <algorithm>
#include <string_view>

namespace velmorak {
namespace {

/// UTF-16 begins with a mark and has zero bytes everywhere.
bool isUtf16(std::string_view bytes) {
    return bytes.starts_with("\xff\xfe") || bytes.starts_with("\xfe\xff");
}

/// A byte that no text has.
bool isBinary(char byte) {
    const auto code = static_cast<unsigned char>(byte);
    return code < 0x20 && byte != '\t' && byte != '\n' && byte != '\r' && byte != '\f' && byte != '\v';
}

/// Text with one row on each line.
class CsvFormat : public FileFormat {
public:
    std::string name() const override { return "CSV"; }
    std::string description() const override { return "a text file"; }
    std::string tableKind() const override { return "CsvTable"; }
    Recognition recognise(const FileStart& start) const override;
    std::vector<FileObject> objects(const std::filesystem::path& file, RunContext& context) const override;
    std::shared_ptr<const FileOpener> tableOpener(const std::string& object,
                                                  const std::vector<std::string>& columns) const override;
};

Recognition CsvFormat::recognise(const FileStart& start) const {
    const bool isText = isUtf16(start.unpacked) || std::ranges::none_of(start.unpacked, isBinary);
    return isText ? Recognition::Possible : Recognition::No;
}

std::vector<FileObject> CsvFormat::objects(const std::filesystem::path& file, RunContext& context) const {
    const auto reader = tableOpener({}, {})->open(file, nullptr, context);
    return {tableObject({}, "table", countRows(*reader, context), reader->schema())};
}

std::shared_ptr<const FileOpener> CsvFormat::tableOpener(const std::string& object,
                                                         const std::vector<std::string>& columns) const {
    if (!object.empty()) {
        throw Failure("object", "a text file has one table without a name; leave \"object\" empty");
    }
    return withColumns(csvTableOpener(), columns);
}

}  // namespace

std::unique_ptr<FileFormat> makeCsvFormat() {
    return std::make_unique<CsvFormat>();
}

}  // namespace velmorak
