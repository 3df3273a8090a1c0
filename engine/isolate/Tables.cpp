#include "isolate/Tables.h"

#include "isolate/ChunkCodec.h"
#include "isolate/Codec.h"

#include <exception>
#include <utility>

namespace velmorak::isolation {
namespace {

/// The columns of a chunk that are still in the helper process.
class WaitingChunk {
public:
    WaitingChunk(std::shared_ptr<Helper> helper, std::uint64_t number) : helper(std::move(helper)), number(number) {}
    ~WaitingChunk() {
        if (!isTaken) {
            helper->drop(number);
        }
    }
    WaitingChunk(const WaitingChunk&) = delete;
    WaitingChunk& operator=(const WaitingChunk&) = delete;

    std::uint64_t take() const {
        isTaken = true;
        return number;
    }

private:
    const std::shared_ptr<Helper> helper;
    const std::uint64_t number;
    mutable bool isTaken = false;
};

std::optional<double> readOptional(MessageReader& answer) {
    const bool hasNumber = answer.flag();
    const auto number = answer.number<double>();
    return hasNumber ? std::optional(number) : std::nullopt;
}

}  // namespace

void dropNow(const std::shared_ptr<Helper>& helper, std::uint64_t number) {
    try {
        Question question(helper, Op::Drop);
        question.message().number(number);
        question.ask();
    } catch (const std::exception&) {
        // The process has ended, and the object with it.
    }
}

std::unique_ptr<TableReader> openReader(std::shared_ptr<Helper> helper, std::uint64_t number, Question& question) {
    MessageReader answer = question.ask();
    if (!answer.flag()) {
        return nullptr;
    }
    OpenedReader opened;
    opened.number = number;
    opened.schema = readSchema(answer);
    opened.files = answer.number<std::uint64_t>();
    opened.fraction = readOptional(answer);
    opened.rowsPerChunk = answer.number<std::uint64_t>();
    opened.isSeekable = answer.flag();
    opened.hasCircumstances = answer.flag();
    if (opened.hasCircumstances) {
        opened.lists = readTexts(answer);
        return std::make_unique<CircumstantialReader>(std::move(helper), std::move(opened));
    }
    return std::make_unique<IsolatedReader>(std::move(helper), std::move(opened));
}

IsolatedReader::IsolatedReader(std::shared_ptr<Helper> helper, OpenedReader opened)
    : helper(std::move(helper)), opened(std::move(opened)) {}

IsolatedReader::~IsolatedReader() {
    dropNow(helper, opened.number);
}

void IsolatedReader::readProgress(MessageReader& answer) {
    opened.fraction = readOptional(answer);
    opened.rowsPerChunk = answer.number<std::uint64_t>();
}

void IsolatedReader::selectColumns(const std::vector<bool>& needed) {
    Question question(helper, Op::SelectColumns);
    question.message().number(opened.number);
    write(question.message(), needed);
    MessageReader answer = question.ask();
    readProgress(answer);
}

bool IsolatedReader::next(Chunk& chunk) {
    const std::uint64_t number = helper->newNumber();
    Question question(helper, Op::Next);
    question.message().number(opened.number);
    question.message().number(number);
    MessageReader answer = question.ask();
    const bool hasRows = answer.flag();
    chunk.rows = answer.number<std::uint64_t>();
    chunk.file = answer.number<std::uint64_t>();
    chunk.columns.clear();
    if (answer.flag()) {  // For the check of the number of rows, columns that are not there may be heavy.
        chunk.columns.resize(opened.schema.size());
    }
    readProgress(answer);
    chunk.owner = hasRows ? std::make_shared<WaitingChunk>(helper, number) : nullptr;
    return hasRows;
}

void IsolatedReader::complete(Chunk& chunk) const {
    const auto waiting = std::static_pointer_cast<const WaitingChunk>(chunk.owner);
    if (!waiting) {
        return;
    }
    chunk.owner.reset();
    chunk.columns.clear();
    Question question(helper, Op::Complete);
    question.message().number(opened.number);
    question.message().number(waiting->take());
    writeChunk(question.message(), chunk);
    MessageReader answer = question.ask();
    Chunk complete = readChunk(answer);
    chunk.rows = complete.rows;
    chunk.columns = std::move(complete.columns);
}

void IsolatedReader::readOnly(const std::vector<bool>& isWanted) {
    Question question(helper, Op::ReadOnly);
    question.message().number(opened.number);
    write(question.message(), isWanted);
    MessageReader answer = question.ask();
    readProgress(answer);
}

std::optional<std::string> IsolatedReader::bookmark() const {
    if (!opened.isSeekable) {
        return std::nullopt;
    }
    Question question(helper, Op::Bookmark);
    question.message().number(opened.number);
    MessageReader answer = question.ask();
    const bool hasText = answer.flag();
    std::string text = answer.text();
    return hasText ? std::optional(std::move(text)) : std::nullopt;
}

void IsolatedReader::seek(std::uint64_t file, const ChunkStart& start) {
    Question question(helper, Op::Seek);
    question.message().number(opened.number);
    question.message().number(file);
    question.message().number(start.chunk);
    question.message().number(start.row);
    question.message().text(start.bookmark);
    MessageReader answer = question.ask();
    readProgress(answer);
}

void IsolatedReader::leaveOutBeyond(const std::vector<ColumnBound>& bounds) {
    Question question(helper, Op::LeaveOut);
    question.message().number(opened.number);
    write(question.message(), bounds);
    MessageReader answer = question.ask();
    readProgress(answer);
}

std::string IsolatedReader::circumstances(std::uint64_t file) const {
    Question question(helper, Op::Circumstances);
    question.message().number(opened.number);
    question.message().number(file);
    return question.ask().text();
}

IsolatedTable::IsolatedTable(std::shared_ptr<Helper> helper, std::uint64_t number, Schema columns)
    : helper(std::move(helper)), number(number), columns(std::move(columns)) {}

IsolatedTable::~IsolatedTable() {
    helper->drop(number);
}

std::unique_ptr<TableReader> IsolatedTable::open() const {
    const std::uint64_t reader = helper->newNumber();
    Question question(helper, Op::OpenTable);
    question.message().number(number);
    question.message().number(reader);
    return openReader(helper, reader, question);
}

}  // namespace velmorak::isolation
