#pragma once

#include "run/RunState.h"
#include "store/CacheKeys.h"
#include "store/FileHashes.h"
#include "store/ResultStore.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

namespace velmorak {

/// Takes results of former runs from the store, and puts those of this run into it.
class ResultCache {
public:
    /// @param state, store and digests outlive this.
    ResultCache(RunState& state, ResultStore& store, FileHashes& digests);

    const std::optional<Digest>& key(std::size_t position) const { return keys[position]; }

    /// Settles a plug-in whose stored result is still right: the files that it was made from and those that it left
    /// hold what they held.
    /// @return false when it has to be executed.
    bool reuse(std::size_t position);

    /// Stores the results of plug-ins that have become complete, each once. A stream is stored without a value: that
    /// its rows have passed is all that there is to know.
    /// @param finished in the plan's order.
    void keep(const std::vector<std::size_t>& finished);

    /// Files that the results of these plug-ins depend on, by name, with what they hold now; as far as is known yet.
    std::vector<FileContent> filesOf(const std::vector<std::size_t>& positions);

    /// Files that the plug-in itself asked for in this run, as far as they could be read since.
    const std::vector<FileContent>& askedFiles(std::size_t position) const { return asked[position]; }
    /// Files that the plug-in left in this run or before it.
    const std::vector<FileContent>& writtenFiles(std::size_t position) const { return written[position]; }

    /// What a file that was read, or one that was left, holds now; nothing when it is not there.
    std::optional<Digest> contentOf(const NamedFile& file);
    std::optional<Digest> resultContentOf(const std::string& fileName);

private:
    bool isRight(const StoredResult& stored);
    bool claims(std::size_t position, const StoredResult& stored);
    void keep(std::size_t position);
    bool gatherFiles(std::size_t position);
    bool gatherWritten(std::size_t position);

    RunState& state;
    ResultStore& store;
    FileHashes& digests;
    std::uint64_t number;
    std::vector<std::optional<Digest>> keys;
    std::vector<bool> isSeen;
    std::vector<std::optional<std::vector<FileContent>>> files;  ///< All that each plug-in's result depends on.
    std::vector<std::vector<FileContent>> asked;
    std::vector<std::vector<FileContent>> written;
};

}  // namespace velmorak
