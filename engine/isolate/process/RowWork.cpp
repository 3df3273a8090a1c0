#include "isolate/ChunkCodec.h"
#include "isolate/process/HelperSession.h"

#include <velmorak/EndedOperation.h>
#include <velmorak/OrderedRows.h>
#include <velmorak/RowBounds.h>

#include <utility>

namespace velmorak::isolation {
namespace {

using Operations = std::vector<std::pair<std::uint64_t, std::shared_ptr<RowOperation>>>;

/// As IsolatedRows.cpp reads it.
void describe(MessageWriter& message, std::uint64_t number, const RowOperation* operation) {
    message.flag(operation != nullptr);
    if (!operation) {
        return;
    }
    message.number(number);
    write(message, operation->schema());
    message.flag(operation->countsRows());
    const std::optional<std::uint64_t> limit = operation->rowLimit();
    message.flag(limit.has_value());
    message.number(limit.value_or(0));
    message.flag(dynamic_cast<const OrderedRows*>(operation) != nullptr);
    message.flag(dynamic_cast<const EndedOperation*>(operation) != nullptr);
    message.flag(dynamic_cast<const BoundedOperation*>(operation) != nullptr);
}

Reply prepared(HelperSession& session, std::vector<std::unique_ptr<RowOperation>> made) {
    Operations operations;
    for (std::unique_ptr<RowOperation>& each : made) {
        operations.emplace_back(session.objects.newNumber(), std::move(each));
        if (operations.back().second) {
            session.objects.put(operations.back().first, operations.back().second);
        }
    }
    return [operations](MessageWriter& message) {
        message.number<std::uint64_t>(operations.size());
        for (const auto& [number, operation] : operations) {
            describe(message, number, operation.get());
        }
    };
}

Reply prepareRows(HelperSession& session, MessageReader question) {
    const Schema schema = readSchema(question);
    questionIsRead();
    const RemoteArguments arguments(session);
    std::vector<std::unique_ptr<RowOperation>> made;
    made.push_back(dynamic_cast<const RowWise&>(session.kind).prepare(arguments, schema, session.context));
    return prepared(session, std::move(made));
}

Reply prepareTables(HelperSession& session, MessageReader question) {
    std::vector<Schema> schemas;
    for (std::size_t left = question.count(); left > 0; --left) {
        schemas.push_back(readSchema(question));
    }
    questionIsRead();
    const RemoteArguments arguments(session);
    return prepared(session,
                    dynamic_cast<const Concatenation&>(session.kind).prepare(arguments, schemas, session.context));
}

Reply markColumns(RowOperation& operation, MessageReader question) {
    const std::vector<bool> wanted = readFlags(question);
    std::vector<bool> needed = readFlags(question);
    operation.markColumns(wanted, needed);
    return [needed](MessageWriter& message) { write(message, needed); };
}

/// @param owner what look has returned for the chunk.
Reply apply(const std::shared_ptr<RowOperation>& operation, MessageReader question,
            const std::shared_ptr<const void>& owner) {
    const auto chunk = std::make_shared<Chunk>(readChunk(question));
    chunk->owner = owner;
    questionIsRead();
    const auto made = std::make_shared<const Chunk>(operation->apply(*chunk));
    // Columns that came along need not travel back.
    return [chunk, made](MessageWriter& message) { writeChunk(message, *made, chunk->columns); };
}

Reply look(HelperSession& session, const std::shared_ptr<RowOperation>& operation, MessageReader question) {
    const Chunk chunk = readChunk(question);
    questionIsRead();
    const std::shared_ptr<const void> owner = dynamic_cast<OrderedRows&>(*operation).look(chunk);
    const std::uint64_t number = owner ? session.objects.newNumber() : 0;
    if (owner) {
        session.objects.put(number, owner);
    }
    return [number](MessageWriter& message) { message.number(number); };
}

}  // namespace

Reply answerOnRows(HelperSession& session, Op op, MessageReader question) {
    if (op == Op::PrepareRows || op == Op::PrepareTables) {
        return op == Op::PrepareRows ? prepareRows(session, question) : prepareTables(session, question);
    }
    const auto operation = session.objects.at<RowOperation>(question.number<std::uint64_t>());
    switch (op) {
        case Op::MarkRowColumns:
            return markColumns(*operation, question);
        case Op::Look:
            return look(session, operation, question);
        case Op::Bounds: {
            const auto bounds = dynamic_cast<const BoundedOperation&>(*operation).bounds();
            return [bounds](MessageWriter& message) { write(message, bounds); };
        }
        case Op::EndRows:
            questionIsRead();
            dynamic_cast<EndedOperation&>(*operation).end();
            return [](MessageWriter&) {};
        default: {
            const auto owner = question.number<std::uint64_t>();
            return apply(operation, question, session.objects.find<void>(owner));
        }
    }
}

}  // namespace velmorak::isolation
