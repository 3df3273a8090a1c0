#include "aida/text/RowBlocks.h"

#include <velmorak/Mutex.h>
#include <velmorak/Tasks.h>

#include <algorithm>
#include <cstring>
#include <utility>

namespace velmorak::io {

namespace {

constexpr std::size_t blockSize = std::size_t{1} << 19;

}  // namespace

void RowBlocks::Block::scanFrom(std::size_t begin) {
    scannedFrom = begin;
    rows.scan(bytes.data() + begin, size - begin);
}

/// State shared by the reader's thread and its helper tasks. The mutex is not held while reading or scanning.
struct RowBlocks::Shared {
    Shared(TextInput& stream, std::vector<PlainColumn> layout, std::size_t maxBlocks);

    bool mayRead() const VELMORAK_REQUIRES(mutex) { return !isReading && !isAtEnd && blocks.size() < maxBlocks; }
    Block* firstUnscanned() const VELMORAK_REQUIRES(mutex);
    /// @return false if there is nothing to do.
    bool work(bool isReadingFirst) VELMORAK_REQUIRES(mutex);
    void read() VELMORAK_REQUIRES(mutex);
    void scan(Block& block) VELMORAK_REQUIRES(mutex);
    void fill(Block& block);
    void help() VELMORAK_EXCLUDES(mutex);
    /// @param self this.
    void callHelpers(const std::shared_ptr<Shared>& self, std::size_t most) VELMORAK_REQUIRES(mutex);
    void forgetText() VELMORAK_REQUIRES(mutex);

    TextInput& stream;
    const std::vector<PlainColumn> layout;
    const std::size_t maxBlocks;
    Mutex mutex;
    ConditionVariable changed;
    std::deque<std::unique_ptr<Block>> blocks VELMORAK_GUARDED_BY(mutex);   ///< In the order of the text.
    std::vector<std::unique_ptr<Block>> unused VELMORAK_GUARDED_BY(mutex);  ///< For reuse.
    std::vector<char> rest;  ///< Of the last block, after its last row. Accessed by the reading thread.
    bool isDrained = false;  ///< The stream is at its end. Accessed by the reading thread.
    std::size_t helpers VELMORAK_GUARDED_BY(mutex) = 0;  ///< Tasks that were spawned and have not ended.
    std::size_t busy VELMORAK_GUARDED_BY(mutex) = 0;     ///< Helper tasks that are running.
    bool isReading VELMORAK_GUARDED_BY(mutex) = false;
    bool isAtEnd VELMORAK_GUARDED_BY(mutex) = false;
    bool isClosed VELMORAK_GUARDED_BY(mutex) = false;
};

RowBlocks::Shared::Shared(TextInput& stream, std::vector<PlainColumn> layout, std::size_t maxBlocks)
    : stream(stream), layout(std::move(layout)), maxBlocks(maxBlocks) {}

RowBlocks::Block* RowBlocks::Shared::firstUnscanned() const {
    const auto found = std::find_if(blocks.begin(), blocks.end(),
                                    [](const auto& block) { return !block->isScanned && !block->isBeingScanned; });
    return found == blocks.end() ? nullptr : found->get();
}

bool RowBlocks::Shared::work(bool isReadingFirst) {
    Block* const block = firstUnscanned();
    if (mayRead() && (isReadingFirst || !block)) {
        read();
    } else if (block) {
        scan(*block);
    } else {
        return false;
    }
    return true;
}

void RowBlocks::Shared::read() {
    isReading = true;
    std::unique_ptr<Block> block;
    if (!unused.empty()) {
        block = std::move(unused.back());
        unused.pop_back();
    }
    mutex.unlock();
    if (!block) {
        block = std::make_unique<Block>(layout);
    }
    fill(*block);
    mutex.lock();
    isReading = false;
    isAtEnd = isDrained;
    if (block->size > 0 || block->failure) {
        blocks.push_back(std::move(block));
    }
    changed.notifyAll();
}

/// Fills a block up to the end of its last row; the rest begins the next block.
void RowBlocks::Shared::fill(Block& block) {
    block.failure = nullptr;
    block.isScanned = block.isBeingScanned = false;
    block.bytes.resize(blockSize + rest.size() + plainRowsMargin);
    std::copy(rest.begin(), rest.end(), block.bytes.begin());
    block.size = rest.size();
    rest.clear();
    std::size_t count = 1;
    try {
        for (const std::size_t full = block.bytes.size() - plainRowsMargin; count > 0 && block.size < full;) {
            count = stream.read(block.bytes.data() + block.size, full - block.size);
            block.size += count;
        }
        block.fraction = stream.fraction();
    } catch (...) {
        // Rethrown by front.
        block.failure = std::current_exception();
    }
    isDrained = count == 0 || block.failure;
    const std::size_t last = isDrained ? std::string_view::npos : block.text().rfind(rowEnd);
    if (last != std::string_view::npos) {
        const std::size_t end = last + rowEnd.size();
        rest.assign(block.bytes.begin() + static_cast<std::ptrdiff_t>(end),
                    block.bytes.begin() + static_cast<std::ptrdiff_t>(block.size));
        block.size = end;
    }
    std::memset(block.bytes.data() + block.size, 0, plainRowsMargin);
}

void RowBlocks::Shared::scan(Block& block) {
    block.isBeingScanned = true;
    mutex.unlock();
    block.scanFrom(0);
    mutex.lock();
    block.isBeingScanned = false;
    block.isScanned = true;
    changed.notifyAll();
}

void RowBlocks::Shared::help() {
    const MutexLock lock(mutex);
    ++busy;
    while (!isClosed && work(true)) {
    }
    --busy;
    --helpers;
    changed.notifyAll();
}

/// Spawns helpers only when half of the blocks are free, so that they do not end and restart for every block.
void RowBlocks::Shared::callHelpers(const std::shared_ptr<Shared>& self, std::size_t most) {
    for (; helpers < most && !isAtEnd && 2 * blocks.size() <= maxBlocks; ++helpers) {
        spawnTask([self] { self->help(); });
    }
}

/// Frees the memory: a helper task that has not started may keep this object alive for long.
void RowBlocks::Shared::forgetText() {
    blocks = std::deque<std::unique_ptr<Block>>();
    unused = std::vector<std::unique_ptr<Block>>();
    rest = std::vector<char>();
}

RowBlocks::RowBlocks(TextInput& bytes, const std::vector<PlainColumn>& columns) : threads(runThreads()) {
    shared = std::make_shared<Shared>(bytes, columns, threads == 1 ? 1 : 4 + 4 * threads);
}

RowBlocks::~RowBlocks() {
    const MutexLock lock(shared->mutex);
    shared->isClosed = true;
    while (shared->busy > 0) {
        shared->changed.wait(shared->mutex);
    }
    shared->forgetText();
}

RowBlocks::Block* RowBlocks::front() {
    const MutexLock lock(shared->mutex);
    shared->callHelpers(shared, threads - 1);
    while (shared->blocks.empty() || !shared->blocks.front()->isScanned) {
        if (shared->blocks.empty() && shared->isAtEnd) {
            return nullptr;
        }
        if (!shared->work(false)) {
            shared->changed.wait(shared->mutex);
        }
    }
    Block* const block = shared->blocks.front().get();
    if (block->failure) {
        std::rethrow_exception(block->failure);
    }
    return block;
}

void RowBlocks::pop() {
    const MutexLock lock(shared->mutex);
    shared->unused.push_back(std::move(shared->blocks.front()));
    shared->blocks.pop_front();
}

}  // namespace velmorak::io
