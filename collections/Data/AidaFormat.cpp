#include "kinds.h"

#include "files/ChosenColumns.h"
#include "shared/FormatOfFile.h"

#include <velmorak/Aida.h>
#include <velmorak/Text.h>

#include <algorithm>
#include <utility>

namespace velmorak {
namespace {

class AidaFormat : public FileFormat {
public:
    std::string name() const override { return "AIDA"; }
    std::string description() const override { return "an AIDA file"; }
    std::string tableKind() const override { return "AidaTable"; }
    Recognition recognise(const FileStart& start) const override;
    std::vector<FileObject> objects(const std::filesystem::path& file, RunContext& context) const override;
    std::shared_ptr<const FileOpener> tableOpener(const std::string& object,
                                                  const std::vector<std::string>& columns) const override {
        return withColumns(aidaTableOpener(object), columns);
    }
};

Recognition AidaFormat::recognise(const FileStart& start) const {
    const std::string& text = start.unpacked;
    const bool isXml = trimmed(text).starts_with("<") || text.starts_with("\xef\xbb\xbf<");
    if (isXml && (text.find("<aida") != std::string::npos || text.find("<!DOCTYPE aida") != std::string::npos)) {
        return Recognition::Certain;
    }
    // A binary file, or one without any signature of its packing, is known by its name alone.
    return start.path.extension() == ".aida" ? Recognition::Possible : Recognition::No;
}

std::vector<FileObject> AidaFormat::objects(const std::filesystem::path& file, RunContext& context) const {
    std::vector<FileObject> found;
    const std::vector<AidaEntry> entries = listAida(file, context);
    const auto isTable = [](const AidaEntry& entry) { return entry.schema.size() > 0; };
    std::vector<AidaObject> objects;
    if (!std::ranges::all_of(entries, isTable)) {
        objects = readAidaObjects(file, context);
    }
    for (const AidaEntry& entry : entries) {
        if (isTable(entry)) {
            const auto reader = openAidaTable(file, entry.path, context);
            found.push_back(tableObject(entry.path, entry.element, countRows(*reader, context), entry.schema));
            continue;
        }
        FileObject object{.path = entry.path, .type = entry.element};
        const auto read = std::ranges::find(objects, entry.path, &AidaObject::path);
        if (read != objects.end() && read->object) {
            object.description = summaryOf(*read->object);
        }
        found.push_back(std::move(object));
    }
    return found;
}

}  // namespace

std::unique_ptr<FileFormat> makeAidaFormat() {
    return std::make_unique<AidaFormat>();
}

}  // namespace velmorak
