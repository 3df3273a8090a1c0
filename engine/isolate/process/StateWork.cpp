#include "isolate/ChunkCodec.h"
#include "isolate/process/HelperSession.h"
#include "run/pass/ChunkCheck.h"

#include <velmorak/OrderedAccumulation.h>
#include <velmorak/StateBytes.h>

#include <optional>
#include <utility>

namespace velmorak::isolation {
namespace {

/// As IsolatedStates.cpp reads it.
Reply prepare(HelperSession& session, MessageReader question) {
    const auto number = question.number<std::uint64_t>();
    const std::optional<Schema> schema = question.flag() ? std::optional(readSchema(question)) : std::nullopt;
    questionIsRead();
    const RemoteArguments arguments(session);
    const std::shared_ptr<Accumulation> accumulation =
        dynamic_cast<const Accumulator&>(session.kind).prepare(arguments, schema ? &*schema : nullptr, session.context);
    if (accumulation) {
        session.objects.put(number, accumulation);
    }
    const bool isOrdered = dynamic_cast<const OrderedAccumulation*>(accumulation.get()) != nullptr;
    return [isMade = accumulation != nullptr, isOrdered](MessageWriter& message) {
        message.flag(isMade);
        message.flag(isOrdered);
    };
}

/// The state with the number, which is made when it is first needed.
std::shared_ptr<AccumulatorState> stateAt(HelperSession& session, const Accumulation& accumulation,
                                          std::uint64_t number) {
    std::shared_ptr<AccumulatorState> state = session.objects.find<AccumulatorState>(number);
    if (!state) {
        state = mustBe(accumulation.newState(), "state");
        session.objects.put(number, state);
    }
    return state;
}

/// What the state itself writes.
Reply save(const AccumulatorState& state, const std::string& kind) {
    const std::size_t before = StateWriter(kind).sealed().size();
    std::string bytes = savedState(state, kind);
    const std::size_t count = bytes.size() - before;
    bytes = bytes.substr(before - sizeof(std::uint64_t), count);  // The checksum is at the end.
    return [bytes = std::move(bytes)](MessageWriter& message) { message.text(bytes); };
}

void load(AccumulatorState& state, MessageReader question) {
    const std::string kind = question.text();
    StateWriter writer(kind);
    writer.rest(question.view());
    const std::string bytes = writer.sealed();
    loadState(state, bytes, kind);
}

Reply answerOnState(HelperSession& session, Op op, Accumulation& accumulation, MessageReader question) {
    const auto state = stateAt(session, accumulation, question.number<std::uint64_t>());
    switch (op) {
        case Op::Fill: {
            const Chunk chunk = readChunk(question);
            questionIsRead();
            state->fill(chunk);
            break;
        }
        case Op::Merge: {
            const auto other = stateAt(session, accumulation, question.number<std::uint64_t>());
            questionIsRead();
            state->merge(*other);
            break;
        }
        case Op::Save:
            return save(*state, question.text());
        case Op::LoadState:
            load(*state, question);
            break;
        default: {
            questionIsRead();
            RemoteResults results(session);
            accumulation.finish(*state, results);
        }
    }
    return [](MessageWriter&) {};
}

}  // namespace

Reply answerOnStates(HelperSession& session, Op op, MessageReader question) {
    if (op == Op::PrepareStates) {
        return prepare(session, question);
    }
    const auto accumulation = session.objects.at<Accumulation>(question.number<std::uint64_t>());
    if (op == Op::MarkStateColumns) {
        std::vector<bool> needed = readFlags(question);
        accumulation->markColumns(needed);
        return [needed](MessageWriter& message) { write(message, needed); };
    }
    return answerOnState(session, op, *accumulation, question);
}

}  // namespace velmorak::isolation
