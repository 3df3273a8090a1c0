#pragma once

#include "files/FileContext.h"

#include <velmorak/Ahead.h>
#include <velmorak/OpenFiles.h>
#include <velmorak/Table.h>
#include <velmorak/TableReader.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <utility>

namespace velmorak {

/// A file whose rows are being read, or whose chunks are still being completed.
struct OpenedFile {
    OpenedFile(OpenFiles::Permit permit, std::unique_ptr<FileContext> context, std::unique_ptr<TableReader> reader)
        : permit(std::move(permit)), context(std::move(context)), reader(std::move(reader)) {}

    const OpenFiles::Permit permit;  ///< Given back after the file was closed.
    const std::unique_ptr<FileContext> context;
    const std::unique_ptr<TableReader> reader;
    std::uint64_t firstRow = 0;  ///< Rows of the files before.
    std::uint64_t chunks = 0;    ///< That have been read.
};

/// Opens the files of a list, the next ones ahead on other threads, as far as the run's limit of open files allows.
/// Threads: one at a time.
class OpenedFiles {
public:
    /// @param open opens the file at a position of the list, on any thread; outlives this, as does all that it uses.
    using Open = std::function<std::shared_ptr<OpenedFile>(std::size_t position, OpenFiles::Permit permit)>;

    OpenedFiles(std::shared_ptr<OpenFiles> openFiles, Open open)
        : openFiles(std::move(openFiles)), open(std::move(open)) {}
    OpenedFiles(const OpenedFiles&) = delete;
    OpenedFiles& operator=(const OpenedFiles&) = delete;
    /// Waits for threads that are opening files.
    ~OpenedFiles();

    /// Begins to open the files from first up to, but not including, end.
    void begin(std::size_t first, std::size_t end, const std::function<bool(std::size_t position)>& isWanted);
    /// @throws what opening the file has thrown.
    std::shared_ptr<OpenedFile> take(std::size_t position);
    /// Whether the file that is being read must not stay open any longer than it is read.
    bool isFull() const { return openFiles->count() + 1 >= OpenFiles::limit; }

private:
    using Opening = Ahead<std::shared_ptr<OpenedFile>>;

    const std::shared_ptr<OpenFiles> openFiles;
    const Open open;
    std::map<std::size_t, std::shared_ptr<Opening>> ahead;  ///< By position.
};

/// A file that is read on its own, and counts as open until the reader is gone.
/// @return null if so many others are open that it should be opened only when its rows are read.
std::unique_ptr<TableReader> openAlone(OpenFiles& openFiles, const std::function<std::unique_ptr<TableReader>()>& open);

}  // namespace velmorak
