#include "isolate/ChunkCodec.h"
#include "isolate/process/HelperSession.h"

#include <velmorak/ChunkSize.h>
#include <velmorak/FileCircumstances.h>
#include <velmorak/Parts.h>
#include <velmorak/RowBounds.h>
#include <velmorak/StoredTable.h>

#include <stdexcept>
#include <utility>

namespace velmorak::isolation {
namespace {

template <typename Number>
void writeOptional(MessageWriter& message, const std::optional<Number>& number) {
    message.flag(number.has_value());
    message.number(number.value_or(Number{}));
}

void writeProgress(MessageWriter& message, const TableReader& reader) {
    writeOptional(message, reader.fraction());
    message.number<std::uint64_t>(reader.rowsPerChunk());
}

/// A reader that the program knows by the number. @param reader null if the kind gives none.
Reply opened(HelperSession& session, std::uint64_t number, const std::shared_ptr<TableReader>& reader) {
    if (reader) {
        session.objects.put(number, reader);
    }
    return [reader](MessageWriter& message) {
        message.flag(reader != nullptr);
        if (!reader) {
            return;
        }
        write(message, reader->schema());
        message.number(reader->fileCount());
        writeProgress(message, *reader);
        message.flag(dynamic_cast<const SeekableReader*>(reader.get()) != nullptr);
        const auto* const circumstances = dynamic_cast<const FileCircumstances*>(reader.get());
        message.flag(circumstances != nullptr);
        if (circumstances) {
            write(message, circumstances->lists());
        }
    };
}

Reply open(HelperSession& session, MessageReader question) {
    const auto number = question.number<std::uint64_t>();
    questionIsRead();
    const RemoteArguments arguments(session);
    return opened(session, number, dynamic_cast<const Source&>(session.kind).open(arguments, session.context));
}

Reply openTable(HelperSession& session, MessageReader question) {
    const auto table = session.objects.at<StoredTable>(question.number<std::uint64_t>());
    const auto number = question.number<std::uint64_t>();
    questionIsRead();
    return opened(session, number, table->open());
}

Reply files(HelperSession& session) {
    questionIsRead();
    const RemoteArguments arguments(session);
    std::vector<std::string> paths;
    for (const std::filesystem::path& file :
         dynamic_cast<const Source&>(session.kind).files(arguments, session.context)) {
        paths.push_back(file.string());
    }
    return [paths](MessageWriter& message) { write(message, paths); };
}

/// A chunk of fewer rows than others may have as many bytes as a chunk can have.
bool mayBeHeavy(const Chunk& chunk) {
    std::size_t bytes = 0;
    for (const ColumnPtr& column : chunk.columns) {
        if (!column) {
            return true;
        }
        bytes += column->values.valueless_by_exception() ? 0 : bytesIn(*column);
    }
    return bytes >= maxChunkBytes;
}

/// The columns stay here until the program asks for them.
Reply next(HelperSession& session, MessageReader question) {
    const auto reader = session.objects.at<TableReader>(question.number<std::uint64_t>());
    const auto number = question.number<std::uint64_t>();
    questionIsRead();
    const auto chunk = std::make_shared<Chunk>();
    const bool hasRows = reader->next(*chunk);
    if (hasRows) {
        session.objects.put(number, chunk);
    }
    return [=](MessageWriter& message) {
        message.flag(hasRows);
        message.number<std::uint64_t>(chunk->rows);
        message.number(chunk->file);
        message.flag(mayBeHeavy(*chunk));
        writeProgress(message, *reader);
    };
}

Reply complete(HelperSession& session, MessageReader question) {
    const auto reader = session.objects.at<TableReader>(question.number<std::uint64_t>());
    const auto number = question.number<std::uint64_t>();
    const auto chunk = session.objects.at<Chunk>(number);
    session.objects.take(number);
    const Chunk place = readChunk(question);
    chunk->number = place.number;
    chunk->firstRow = place.firstRow;
    chunk->file = place.file;
    questionIsRead();
    reader->complete(*chunk);
    return [chunk](MessageWriter& message) { writeChunk(message, *chunk); };
}

template <typename Base>
Base* as(const std::shared_ptr<TableReader>& reader) {
    return dynamic_cast<Base*>(reader.get());
}

void seek(const std::shared_ptr<TableReader>& reader, MessageReader question) {
    const auto file = question.number<std::uint64_t>();
    ChunkStart start;
    start.chunk = question.number<std::uint64_t>();
    start.row = question.number<std::uint64_t>();
    start.bookmark = question.text();
    auto* const seekable = as<SeekableReader>(reader);
    if (!seekable) {
        throw Failure("the bookmark is of another version of the kind, which could begin in the middle of a file");
    }
    seekable->seek(file, start);
}

Reply circumstances(const std::shared_ptr<TableReader>& reader, MessageReader question) {
    const auto* const known = as<const FileCircumstances>(reader);
    const std::string text = known ? known->circumstancesOf(question.number<std::uint64_t>()) : "";
    return [text](MessageWriter& message) { message.text(text); };
}

Reply bookmark(const std::shared_ptr<TableReader>& reader) {
    const auto* const seekable = as<const SeekableReader>(reader);
    const std::optional<std::string> text = seekable ? seekable->bookmark() : std::nullopt;
    return [text](MessageWriter& message) {
        message.flag(text.has_value());
        message.text(text.value_or(""));
    };
}

/// What the program tells a reader before the first chunk. @return what the progress is then.
Reply prepare(const std::shared_ptr<TableReader>& reader, Op op, MessageReader question) {
    if (op == Op::SelectColumns) {
        reader->selectColumns(readFlags(question));
    } else if (op == Op::Seek) {
        seek(reader, question);
    } else if (op == Op::ReadOnly) {
        if (auto* const selection = as<FileSelection>(reader)) {
            selection->readOnly(readFlags(question));
        }
    } else if (auto* const bounded = as<BoundedReader>(reader)) {
        bounded->leaveOutBeyond(readBounds(question));
    }
    return [reader](MessageWriter& message) { writeProgress(message, *reader); };
}

}  // namespace

Reply answerOnSource(HelperSession& session, Op op, MessageReader question) {
    switch (op) {
        case Op::Files:
            return files(session);
        case Op::Open:
            return open(session, question);
        case Op::OpenTable:
            return openTable(session, question);
        case Op::Next:
            return next(session, question);
        case Op::Complete:
            return complete(session, question);
        default:
            break;
    }
    const auto reader = session.objects.at<TableReader>(question.number<std::uint64_t>());
    switch (op) {
        case Op::Bookmark:
            return bookmark(reader);
        case Op::Circumstances:
            return circumstances(reader, question);
        default:
            return prepare(reader, op, question);
    }
}

}  // namespace velmorak::isolation
