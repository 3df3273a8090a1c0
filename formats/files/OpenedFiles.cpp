#include "files/OpenedFiles.h"

#include <velmorak/RowBounds.h>

#include <optional>
#include <vector>

namespace velmorak {

namespace {

/// Each table of a Concat is opened before the first row is read; the other half is for lists of files.
constexpr std::size_t maxAlone = OpenFiles::limit / 2;

/// Gives a reader's rows, and counts its file.
class CountedReader : public TableReader, public BoundedReader {
public:
    CountedReader(OpenFiles::Permit permit, std::unique_ptr<TableReader> file);

    const Schema& schema() const override { return file->schema(); }
    void selectColumns(const std::vector<bool>& needed) override { file->selectColumns(needed); }
    void leaveOutBeyond(const std::vector<ColumnBound>& bounds) override;
    bool next(Chunk& chunk) override { return file->next(chunk); }
    std::uint64_t fileCount() const override { return file->fileCount(); }
    std::size_t rowsPerChunk() const override { return file->rowsPerChunk(); }
    void complete(Chunk& chunk) const override { file->complete(chunk); }
    std::optional<double> fraction() const override { return file->fraction(); }

private:
    const OpenFiles::Permit permit;
    const std::unique_ptr<TableReader> file;
};

CountedReader::CountedReader(OpenFiles::Permit permit, std::unique_ptr<TableReader> file)
    : permit(std::move(permit)), file(std::move(file)) {}

void CountedReader::leaveOutBeyond(const std::vector<ColumnBound>& bounds) {
    if (auto* const bounded = dynamic_cast<BoundedReader*>(file.get())) {
        bounded->leaveOutBeyond(bounds);
    }
}

}  // namespace

OpenedFiles::~OpenedFiles() {
    for (const auto& [position, opening] : ahead) {
        opening->cancel();
    }
}

void OpenedFiles::begin(std::size_t first, std::size_t end, const std::function<bool(std::size_t)>& isWanted) {
    for (std::size_t i = first; i < end; ++i) {
        if (!isWanted(i) || ahead.contains(i)) {
            continue;
        }
        OpenFiles::Permit permit = openFiles->tryTake(OpenFiles::limit - 1);
        if (!permit) {
            return;
        }
        ahead.emplace(
            i, Opening::begin([this, i, permit = std::move(permit)]() mutable { return open(i, std::move(permit)); }));
    }
}

std::shared_ptr<OpenedFile> OpenedFiles::take(std::size_t position) {
    const auto found = ahead.find(position);
    if (found == ahead.end()) {
        return open(position, openFiles->take());
    }
    const std::shared_ptr<Opening> opening = found->second;
    ahead.erase(found);
    return opening->take();
}

std::unique_ptr<TableReader> openAlone(OpenFiles& openFiles,
                                       const std::function<std::unique_ptr<TableReader>()>& open) {
    OpenFiles::Permit permit = openFiles.tryTake(maxAlone);
    return permit ? std::make_unique<CountedReader>(std::move(permit), open()) : nullptr;
}

}  // namespace velmorak
