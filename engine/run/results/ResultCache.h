#pragma once

#include "run/RunState.h"
#include "run/results/CacheKeys.h"
#include "store/FileHashes.h"
#include "store/ResultStore.h"

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <vector>

namespace velmorak {

/// Reuses results of former runs from the store, and stores those of one run: adapts the store, which knows keys,
/// values and files, to the nodes of the run.
class ResultCache {
public:
    /// Whether this run needs the digest of an input file. Results that depend on another file are not kept.
    using NeedsDigest = std::function<bool(const std::filesystem::path&)>;

    /// @param state, store and hashes outlive this.
    ResultCache(RunState& state, ResultStore& store, FileHashes& hashes, NeedsDigest needsDigest);

    const std::optional<Digest>& key(std::size_t position) const { return keys[position]; }

    /// Finishes a node with its stored result if that is valid: the files that it was made from and those that it wrote
    /// have the same content as then.
    /// @return false if the node must be executed.
    bool reuse(std::size_t position);

    /// Whether the node's stored result is valid, and with it the files that it wrote. Does not finish the node.
    bool confirm(std::size_t position);

    /// Stores the results of nodes that have become complete, each once. A stream is stored without a value: only that
    /// all of its rows have passed.
    /// @param finished in the plan's order.
    void keep(const std::vector<std::size_t>& finished);

    /// Files that the results of these nodes depend on, by name, with their content now; as far as is known yet, and
    /// without those whose digests this run does not need.
    std::vector<FileContent> filesOf(const std::vector<std::size_t>& positions);

    /// Files that the node itself opened in this run, as far as they could be hashed.
    const std::vector<FileContent>& askedFiles(std::size_t position) const { return asked[position]; }
    /// Names of these files in the order in which the node asked for them, each file once; "" is the AIDA file of the
    /// command line.
    std::vector<std::string> filesInOrder(std::size_t position) const;
    /// Result files of the node, written in this run or reused.
    const std::vector<FileContent>& writtenFiles(std::size_t position) const { return written[position]; }

    /// Content of an input file or of a result file now; empty if it cannot be read.
    std::optional<Digest> contentOf(const NamedFile& file);
    std::optional<Digest> resultContentOf(const std::string& fileName);

private:
    bool isValid(const StoredResult& stored);
    /// Claims the result files of a reused result, so that no other node may write them.
    bool claims(std::size_t position, const StoredResult& stored);
    void keep(std::size_t position);
    bool collectFiles(std::size_t position);
    bool needsDigestOf(const AskedFile& file) const;
    std::optional<Digest> contentOf(const AskedFile& file);
    bool collectWritten(std::size_t position);

    RunState& state;
    ResultStore& store;
    FileHashes& hashes;
    const NeedsDigest needsDigest;
    std::uint64_t runNumber;
    std::vector<std::optional<Digest>> keys;
    std::vector<bool> isStored;                                  ///< Or needs no storing.
    std::vector<std::optional<std::vector<FileContent>>> files;  ///< Everything that each node's result depends on.
    std::vector<std::vector<FileContent>> asked;
    std::vector<std::vector<FileContent>> written;
};

}  // namespace velmorak
