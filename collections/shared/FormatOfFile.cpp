#include "shared/FormatOfFile.h"

#include <utility>

namespace velmorak {
namespace {

class RefusingOpener : public FileOpener {
public:
    RefusingOpener(std::shared_ptr<const FileOpener> opener, std::string kind, const FileFormats& formats);

    FileColumns columnsOf(const std::filesystem::path& file, RunContext& context) const override;
    std::unique_ptr<TableReader> open(const std::filesystem::path& file, const Schema* wanted,
                                      RunContext& context) const override;
    void checkNames(const std::set<std::string>& names) const override { opener->checkNames(names); }

private:
    void check(const std::filesystem::path& file) const;

    const std::shared_ptr<const FileOpener> opener;
    const std::string kind;
    const FileFormats& formats;
};

RefusingOpener::RefusingOpener(std::shared_ptr<const FileOpener> opener, std::string kind, const FileFormats& formats)
    : opener(std::move(opener)), kind(std::move(kind)), formats(formats) {}

FileColumns RefusingOpener::columnsOf(const std::filesystem::path& file, RunContext& context) const {
    check(file);
    return opener->columnsOf(file, context);
}

std::unique_ptr<TableReader> RefusingOpener::open(const std::filesystem::path& file, const Schema* wanted,
                                                  RunContext& context) const {
    check(file);  // A single file is opened at once.
    return opener->open(file, wanted, context);
}

std::string cureFor(const FileFormat& format) {
    if (!format.tableKind().empty()) {
        return "; use " + format.tableKind() + " or Table";
    }
    return format.objectKind().empty() ? "" : "; use " + format.objectKind();
}

void RefusingOpener::check(const std::filesystem::path& file) const {
    const FileStart start = startOf(file);
    const FileFormat* format = formats.recognise(start);
    if (!format || format->tableKind() == kind || format->recognise(start) != Recognition::Certain) {
        return;
    }
    throw Failure("file", file.string() + " is " + format->description() + cureFor(*format));
}

}  // namespace

std::shared_ptr<const FileOpener> refusingOthers(std::shared_ptr<const FileOpener> opener, const std::string& kind,
                                                 const FileFormats& formats) {
    return std::make_shared<RefusingOpener>(std::move(opener), kind, formats);
}

std::uint64_t countRows(TableReader& reader, const RunContext& context) {
    std::uint64_t rows = 0;
    reader.selectColumns(std::vector<bool>(reader.schema().size(), false));
    for (Chunk chunk; reader.next(chunk); chunk = {}) {
        reader.complete(chunk);
        rows += chunk.rows;
        if (context.isStopping()) {
            throw Stopped();
        }
    }
    return rows;
}

FileObject tableObject(std::string path, std::string type, std::uint64_t rows, const Schema& schema) {
    FileObject object{.path = std::move(path), .type = std::move(type), .rows = rows, .isTable = true};
    for (const ColumnInfo& column : schema.columns()) {
        object.columns.push_back({.info = column});
    }
    return object;
}

}  // namespace velmorak
