#include "shared/FormatOfFile.h"

#include <utility>

namespace velmorak {
namespace {

class CheckedOpener : public FileOpener {
public:
    CheckedOpener(std::shared_ptr<const FileOpener> opener, FileCheck check);

    FileColumns columnsOf(const std::filesystem::path& file, RunContext& context) const override;
    std::unique_ptr<TableReader> open(const std::filesystem::path& file, const Schema* wanted,
                                      RunContext& context) const override;
    void checkNames(const std::set<std::string>& names) const override { opener->checkNames(names); }

private:
    const std::shared_ptr<const FileOpener> opener;
    const FileCheck check;
};

CheckedOpener::CheckedOpener(std::shared_ptr<const FileOpener> opener, FileCheck check)
    : opener(std::move(opener)), check(std::move(check)) {}

FileColumns CheckedOpener::columnsOf(const std::filesystem::path& file, RunContext& context) const {
    check(file);
    return opener->columnsOf(file, context);
}

std::unique_ptr<TableReader> CheckedOpener::open(const std::filesystem::path& file, const Schema* wanted,
                                                 RunContext& context) const {
    if (wanted == nullptr) {
        check(file);  // A single file is opened without a call of columnsOf.
    }
    return opener->open(file, wanted, context);
}

std::string cureFor(const FileFormat& format) {
    if (!format.tableKind().empty()) {
        return "; use " + format.tableKind() + " or Table";
    }
    return format.objectKind().empty() ? "" : "; use " + format.objectKind();
}

/// Refuses a file that certainly has another format than the kind reads.
void refuseOther(const std::filesystem::path& file, const std::string& kind, const FileFormats& formats) {
    const FileStart start = startOf(file);
    const FileFormat* const format = formats.recognise(start);
    if (!format) {
        return;
    }
    if (format->tableKind() == kind || format->recognise(start) != Recognition::Certain) {
        return;
    }
    throw Failure("file", file.string() + " is " + format->description() + cureFor(*format));
}

}  // namespace

std::shared_ptr<const FileOpener> checkedOpener(std::shared_ptr<const FileOpener> opener, FileCheck check) {
    return std::make_shared<CheckedOpener>(std::move(opener), std::move(check));
}

std::shared_ptr<const FileOpener> refusingOthers(std::shared_ptr<const FileOpener> opener, const std::string& kind,
                                                 const FileFormats& formats) {
    return checkedOpener(std::move(opener),
                         [kind, &formats](const std::filesystem::path& file) { refuseOther(file, kind, formats); });
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
