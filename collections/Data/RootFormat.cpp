#include "kinds.h"

#include "shared/FormatOfFile.h"

#include <root/RootFile.h>
#include <root/RootObjects.h>

#include <string_view>
#include <utility>
#include <variant>

namespace velmorak {
namespace {

class RootFormat : public FileFormat {
public:
    std::string name() const override { return "ROOT"; }
    std::string description() const override { return "a ROOT file"; }
    std::string tableKind() const override { return "RootTable"; }
    Recognition recognise(const FileStart& start) const override;
    std::vector<FileObject> objects(const std::filesystem::path& file, RunContext& context) const override;
    std::shared_ptr<const FileOpener> tableOpener(const std::string& object,
                                                  const std::vector<std::string>& columns) const override;
};

Recognition RootFormat::recognise(const FileStart& start) const {
    return start.bytes.starts_with(std::string_view("root\0", 5)) ? Recognition::Certain : Recognition::No;
}

std::shared_ptr<const FileOpener> RootFormat::tableOpener(const std::string& object,
                                                          const std::vector<std::string>& columns) const {
    return rootTableOpener(object, columns);
}

std::string lineAbout(const Value& value) {
    if (const auto* object = std::get_if<DataObjectPtr>(&value)) {
        return summaryOf(**object);
    }
    const auto* text = std::get_if<std::string>(&value);
    return text ? *text : textOf(std::get<double>(value));
}

/// Adds what the file says about a table, histogram, graph or value.
void lookInto(FileObject& object, const std::filesystem::path& file, const RootObjectReader& reader) {
    try {
        if (object.isTable) {
            RootTableContent content = lookAtRootTable(file, object.path);
            object.rows = content.rows;
            object.columns = std::move(content.columns);
        } else if (rootObjectType(object.type) != ValueType::Any) {
            object.description = lineAbout(reader.read(object.path));
        }
    } catch (const Failure& failure) {
        object.description = std::string("cannot be read: ") + failure.what();
    }
}

std::vector<FileObject> RootFormat::objects(const std::filesystem::path& file, RunContext& context) const {
    std::vector<FileObject> found;
    const RootObjectReader reader(file);
    for (const RootEntry& entry : listRoot(file)) {
        if (context.isStopping()) {
            throw Stopped();
        }
        FileObject object{.path = entry.path, .type = entry.className, .isTable = entry.isTable};
        lookInto(object, file, reader);
        found.push_back(std::move(object));
    }
    return found;
}

}  // namespace

std::unique_ptr<FileFormat> makeRootFormat() {
    return std::make_unique<RootFormat>();
}

}  // namespace velmorak
