#include "InputFile.h"
#include "QuietContext.h"
#include "Target.h"

#include "csv/CsvReader.h"

// A text file of rows. Its last byte chooses how it is read, so that any such file is an input; a line end means commas
// and a header.

namespace velmorak::fuzz {
namespace {

CsvOptions optionsOf(const std::filesystem::path& file, unsigned choice) {
    constexpr std::string_view delimiters = ",;\t |";
    CsvOptions options{.file = file, .form = {}, .missing = "NA", .types = {}};
    choice = choice == '\n' ? 0 : choice;
    options.form.delimiter = delimiters[choice % delimiters.size()];
    choice /= static_cast<unsigned>(delimiters.size());
    options.form.comment = choice % 2 == 0 ? "#" : "";
    options.hasHeader = choice / 2 % 2 == 0;
    options.isSkipping = choice / 4 % 2 == 1;
    if (choice / 8 % 2 == 1) {
        CsvTypes given = csvTypesIn("a: integer, c1: boolean, x: text, c2: real, begin: date");
        options.types = std::move(given.types);
        options.dates = std::move(given.dates);
    }
    options.thousands = choice / 16 % 2 == 1 ? ' ' : '\0';
    return options;
}

void readAll(const CsvOptions& options) {
    QuietContext context;
    CsvReader reader(options, context);
    Chunk chunk;
    while (reader.next(chunk)) {
        require(chunk.rows > 0 && chunk.rows <= chunkRows, "a chunk has rows, and no more than it may");
        reader.complete(chunk);
        require(chunk.columns.size() == reader.schema().size(), "a chunk has the columns of its schema");
        for (const ColumnPtr& column : chunk.columns) {
            const std::size_t values = column->isList() ? column->offsets.size() - 1 : column->valueCount();
            require(values == chunk.rows, "a column has a value or a list for each row");
        }
        chunk = {};
    }
}

}  // namespace
}  // namespace velmorak::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace velmorak;
    const fuzz::InputFile file(fuzz::textOf(data, size));
    try {
        fuzz::readAll(fuzz::optionsOf(file.path(), size == 0 ? 0 : data[size - 1]));
    } catch (const Failure&) {
    } catch (const Stopped&) {
    }
    return 0;
}
