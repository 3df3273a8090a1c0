#pragma once

#include <velmorak/Run.h>

#include <atomic>
#include <cstddef>
#include <memory>
#include <utility>

/// How much memory kinds may use for rows that they keep, such as rows to be sorted.
namespace velmorak {

/// The memory for rows that the kinds of a run keep. A kind takes it before it keeps rows and gives it back when they
/// are freed; when it gets no more, it moves rows to a temporary file (ChunkFile.h). Threads: any.
class MemoryBudget {
public:
    static constexpr std::size_t defaultLimit = std::size_t{1} << 30U;

    explicit MemoryBudget(std::size_t limit = defaultLimit) : most(limit) {}

    std::size_t limit() const { return most; }
    std::size_t used() const { return taken.load(std::memory_order_relaxed); }
    /// @return false, with nothing taken, if so many bytes are not left.
    bool take(std::size_t bytes) {
        std::size_t before = used();
        do {
            if (bytes > most || before > most - bytes) {
                return false;
            }
        } while (!taken.compare_exchange_weak(before, before + bytes, std::memory_order_relaxed));
        return true;
    }
    /// Takes what a kind cannot work without, even above the limit.
    void force(std::size_t bytes) { taken.fetch_add(bytes, std::memory_order_relaxed); }
    void give(std::size_t bytes) { taken.fetch_sub(bytes, std::memory_order_relaxed); }

private:
    std::size_t most;
    std::atomic<std::size_t> taken = 0;
};

/// The bytes that one owner has taken from a budget; given back by the destructor.
/// Threads: one at a time.
class MemoryShare {
public:
    explicit MemoryShare(std::shared_ptr<MemoryBudget> budget) : budget(std::move(budget)) {}
    ~MemoryShare() { giveAll(); }
    MemoryShare(const MemoryShare&) = delete;
    MemoryShare& operator=(const MemoryShare&) = delete;

    const MemoryBudget& of() const { return *budget; }
    std::size_t bytes() const { return held; }
    /// As MemoryBudget::take.
    bool take(std::size_t more) {
        const bool isTaken = budget->take(more);
        held += isTaken ? more : 0;
        return isTaken;
    }
    void force(std::size_t more) {
        budget->force(more);
        held += more;
    }
    void giveAll() {
        budget->give(held);
        held = 0;
    }

private:
    std::shared_ptr<MemoryBudget> budget;
    std::size_t held = 0;
};

/// A second base of a RunContext whose run limits the memory for rows.
class LimitedRun {
public:
    virtual ~LimitedRun() = default;
    /// Shared by all plug-ins of the run.
    virtual std::shared_ptr<MemoryBudget> memory() const = 0;
};

/// @return the budget of the run, or one of MemoryBudget::defaultLimit where the context has none, as in a preview.
inline std::shared_ptr<MemoryBudget> memoryOf(const RunContext& context) {
    const auto* const limited = dynamic_cast<const LimitedRun*>(&context);
    return limited ? limited->memory() : std::make_shared<MemoryBudget>();
}

}  // namespace velmorak
