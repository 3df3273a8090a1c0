#include "shared/OwnTypesOpener.h"

#include <utility>

namespace velmorak {
namespace {

class OwnTypesOpener : public FileOpener {
public:
    explicit OwnTypesOpener(OpenTable openTable) : openTable(std::move(openTable)) {}

    FileColumns columnsOf(const std::filesystem::path& file, RunContext& context) const override;
    std::unique_ptr<TableReader> open(const std::filesystem::path& file, const Schema* /*wanted*/,
                                      RunContext& context) const override;

private:
    const OpenTable openTable;
};

FileColumns OwnTypesOpener::columnsOf(const std::filesystem::path& file, RunContext& context) const {
    return {openTable(file, context)->schema()};
}

std::unique_ptr<TableReader> OwnTypesOpener::open(const std::filesystem::path& file, const Schema* /*wanted*/,
                                                  RunContext& context) const {
    return openTable(file, context);
}

}  // namespace

std::shared_ptr<const FileOpener> openerWith(OpenTable open) {
    return std::make_shared<OwnTypesOpener>(std::move(open));
}

}  // namespace velmorak
