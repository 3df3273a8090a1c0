#include "kinds.h"

#include "shared/FormatOfFile.h"

#include <root/RootFile.h>

#include <string_view>
#include <utility>

namespace velmorak {
namespace {

class RootFormat : public FileFormat {
public:
    std::string name() const override { return "ROOT"; }
    std::string description() const override { return "a ROOT file"; }
    std::string tableKind() const override { return "RootTable"; }
    Recognition recognise(const FileStart& start) const override {
        return start.bytes.starts_with(std::string_view("root\0", 5)) ? Recognition::Certain : Recognition::No;
    }
    std::vector<FileObject> objects(const std::filesystem::path& file, RunContext& context) const override;
    std::shared_ptr<const FileOpener> tableOpener(const std::string& object,
                                                  const std::vector<std::string>& columns) const override {
        return rootTableOpener(object, columns);
    }
};

std::vector<FileObject> RootFormat::objects(const std::filesystem::path& file, RunContext& context) const {
    std::vector<FileObject> found;
    for (const RootEntry& entry : listRoot(file)) {
        if (context.isStopping()) {
            throw Stopped();
        }
        FileObject object{.path = entry.path, .type = entry.className, .isTable = entry.isTable};
        if (entry.isTable) {
            try {
                RootTableContent content = lookAtRootTable(file, entry.path);
                object.rows = content.rows;
                object.columns = std::move(content.columns);
            } catch (const Failure& failure) {
                object.description = std::string("cannot be read: ") + failure.what();
            }
        }
        found.push_back(std::move(object));
    }
    return found;
}

}  // namespace

std::unique_ptr<FileFormat> makeRootFormat() {
    return std::make_unique<RootFormat>();
}

}  // namespace velmorak
