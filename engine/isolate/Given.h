#pragma once

#include <velmorak/Mutex.h>
#include <velmorak/Run.h>
#include <velmorak/StoredTable.h>

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <utility>

namespace velmorak::isolation {

/// Result files that a helper process writes. Those that it does not keep are removed with this object.
/// Threads: any.
class GivenFiles {
public:
    /// @return the number of the file, and the path to write to.
    std::pair<std::uint64_t, std::string> begin(RunContext& context, const std::string& name) {
        std::shared_ptr<ResultFile> file = context.beginResult(name);
        const MutexLock lock(mutex);
        files.emplace(++last, file);
        return {last, file->path().string()};
    }
    void keep(std::uint64_t number) { find(number)->keep(); }
    void drop(std::uint64_t number) {
        const std::shared_ptr<ResultFile> file = find(number);
        const MutexLock lock(mutex);
        files.erase(number);
    }

private:
    std::shared_ptr<ResultFile> find(std::uint64_t number) {
        const MutexLock lock(mutex);
        return files.at(number);
    }

    Mutex mutex;
    std::map<std::uint64_t, std::shared_ptr<ResultFile>> files VELMORAK_GUARDED_BY(mutex);
    std::uint64_t last VELMORAK_GUARDED_BY(mutex) = 0;
};

/// Readers of stored tables that a helper process reads.
/// Threads: any, one at a time for each reader.
class GivenReaders {
public:
    std::uint64_t open(std::shared_ptr<const StoredTable> table) {
        std::unique_ptr<TableReader> reader = table->open();
        const MutexLock lock(mutex);
        readers.emplace(++last, Given{std::move(table), std::move(reader)});
        return last;
    }
    TableReader& at(std::uint64_t number) {
        const MutexLock lock(mutex);
        return *readers.at(number).reader;
    }
    void drop(std::uint64_t number) {
        const MutexLock lock(mutex);
        readers.erase(number);
    }

private:
    struct Given {
        std::shared_ptr<const StoredTable> table;  ///< Outlives its reader.
        std::unique_ptr<TableReader> reader;
    };

    Mutex mutex;
    std::map<std::uint64_t, Given> readers VELMORAK_GUARDED_BY(mutex);
    std::uint64_t last VELMORAK_GUARDED_BY(mutex) = 0;
};

}  // namespace velmorak::isolation
