#include "isolate/Rows.h"

#include "isolate/ChunkCodec.h"
#include "isolate/Codec.h"
#include "isolate/Tables.h"

#include <utility>

namespace velmorak::isolation {
namespace {

/// What an operation has found in a chunk, in the helper process.
class Seen {
public:
    Seen(std::shared_ptr<Helper> helper, std::uint64_t number) : helper(std::move(helper)), number(number) {}
    ~Seen() { helper->drop(number); }
    Seen(const Seen&) = delete;
    Seen& operator=(const Seen&) = delete;

    std::uint64_t which() const { return number; }

private:
    const std::shared_ptr<Helper> helper;
    const std::uint64_t number;
};

std::unique_ptr<RowOperation> readOperation(const std::shared_ptr<Helper>& helper, MessageReader& answer) {
    if (!answer.flag()) {
        return nullptr;
    }
    PreparedRows prepared;
    prepared.number = answer.number<std::uint64_t>();
    prepared.schema = readSchema(answer);
    prepared.countsRows = answer.flag();
    const bool hasLimit = answer.flag();
    const auto limit = answer.number<std::uint64_t>();
    prepared.rowLimit = hasLimit ? std::optional(limit) : std::nullopt;
    prepared.isOrdered = answer.flag();
    prepared.isEnded = answer.flag();
    prepared.isBounded = answer.flag();
    if (prepared.isOrdered) {
        return std::make_unique<IsolatedOrderedRows>(helper, std::move(prepared));
    }
    return std::make_unique<IsolatedRows>(helper, std::move(prepared));
}

}  // namespace

std::vector<std::unique_ptr<RowOperation>> prepareOperations(const std::shared_ptr<Helper>& helper,
                                                             Question& question) {
    MessageReader answer = question.ask();
    std::vector<std::unique_ptr<RowOperation>> operations;
    for (auto left = answer.number<std::uint64_t>(); left > 0; --left) {
        operations.push_back(readOperation(helper, answer));
    }
    return operations;
}

IsolatedRows::IsolatedRows(std::shared_ptr<Helper> helper, PreparedRows prepared)
    : helper(std::move(helper)), prepared(std::move(prepared)) {}

IsolatedRows::~IsolatedRows() {
    dropNow(helper, prepared.number);
}

void IsolatedRows::markColumns(const std::vector<bool>& wanted, std::vector<bool>& needed) {
    Question question(helper, Op::MarkRowColumns);
    question.message().number(prepared.number);
    write(question.message(), wanted);
    write(question.message(), needed);
    MessageReader answer = question.ask();
    needed = readFlags(answer);
}

void IsolatedRows::end() {
    if (prepared.isEnded) {
        Question question(helper, Op::EndRows);
        question.message().number(prepared.number);
        question.ask();
    }
}

std::vector<ColumnBound> IsolatedRows::bounds() const {
    if (!prepared.isBounded) {
        return {};
    }
    Question question(helper, Op::Bounds);
    question.message().number(prepared.number);
    MessageReader answer = question.ask();
    return readBounds(answer);
}

Chunk IsolatedRows::applied(const Chunk& chunk, std::uint64_t seen) const {
    Question question(helper, Op::Apply);
    question.message().number(prepared.number);
    question.message().number(seen);
    writeChunk(question.message(), chunk);
    MessageReader answer = question.ask();
    return readChunk(answer, chunk.columns);
}

std::shared_ptr<const void> IsolatedRows::seenIn(const Chunk& chunk) {
    Question question(helper, Op::Look);
    question.message().number(prepared.number);
    writeChunk(question.message(), chunk);
    const auto number = question.ask().number<std::uint64_t>();
    return number == 0 ? nullptr : std::make_shared<const Seen>(helper, number);
}

Chunk IsolatedOrderedRows::apply(const Chunk& chunk) const {
    const auto seen = std::static_pointer_cast<const Seen>(chunk.owner);
    return applied(chunk, seen ? seen->which() : 0);
}

}  // namespace velmorak::isolation
