#include "isolate/Answers.h"

#include "isolate/ChunkCodec.h"
#include "isolate/Codec.h"

#include <velmorak/Parts.h>

#include <stdexcept>
#include <utility>

namespace velmorak::isolation {
namespace {

RunContext& contextOf(Question& question) {
    if (RunContext* const context = question.of().context()) {
        return *context;
    }
    throw std::logic_error("the kind asks for a service of a run outside of one");
}

/// factOf, whose find runs in the helper process.
std::string fact(Question& question, const std::string& name) {
    return factOf(contextOf(question), name, [&question] { return question.askBetween(Op::FindFact).text(); });
}

bool answerOnFiles(Question& question, Op op, MessageReader& content, MessageWriter& reply) {
    switch (op) {
        case Op::InputFile:
            reply.text(contextOf(question).inputFile(content.text()).string());
            return true;
        case Op::Locate:
            reply.text(contextOf(question).locate(content.text()).string());
            return true;
        case Op::CommandLineAida:
            reply.text(contextOf(question).commandLineAida().string());
            return true;
        case Op::NamesIn: {
            const std::string folder = content.text();
            write(reply, contextOf(question).namesIn(folder, content.text()));
            return true;
        }
        case Op::SkipFile: {
            const std::string file = content.text();
            contextOf(question).skipFile(file, content.text());
            return true;
        }
        case Op::BeginResult: {
            const auto [number, path] = question.of().files().begin(contextOf(question), content.text());
            reply.number(number);
            reply.text(path);
            return true;
        }
        case Op::KeepResult:
            question.of().files().keep(content.number<std::uint64_t>());
            return true;
        case Op::DropResult:
            question.of().files().drop(content.number<std::uint64_t>());
            return true;
        default:
            return false;
    }
}

bool answerOnRun(Question& question, Op op, MessageReader& content, MessageWriter& reply) {
    switch (op) {
        case Op::IsStopping:
            reply.flag(contextOf(question).isStopping());
            return true;
        case Op::Warn:
            contextOf(question).warn(content.text());
            return true;
        case Op::Tell:
            contextOf(question).tell(content.text());
            return true;
        case Op::Record:
            write(reply, contextOf(question).record());
            return true;
        case Op::Fact:
            reply.text(fact(question, content.text()));
            return true;
        case Op::SetResult: {
            const std::string output = content.text();
            question.results().set(output, readValue(content, question.of()));
            return true;
        }
        case Op::LeaveResult: {
            const std::string output = content.text();
            question.results().leave(output, readValue(content, question.of()));
            return true;
        }
        default:
            return false;
    }
}

bool answerOnArguments(Question& question, Op op, MessageReader& content, MessageWriter& reply) {
    const std::string input = content.text();
    const Arguments& arguments = question.arguments();
    switch (op) {
        case Op::ArgumentNumber:
            reply.number(arguments.number(input));
            return true;
        case Op::ArgumentWithError:
            write(reply, Value(arguments.numberWithError(input)), question.of());
            return true;
        case Op::ArgumentInteger:
            reply.number(arguments.integer(input));
            return true;
        case Op::ArgumentText:
            reply.text(arguments.text(input));
            return true;
        case Op::ArgumentValue:
            write(reply, arguments.value(input), question.of());
            return true;
        case Op::ArgumentIsWired:
            reply.flag(arguments.isWired(input));
            return true;
        case Op::ArgumentHas:
            reply.flag(arguments.has(input));
            return true;
        case Op::ArgumentWhyMissing:
            reply.text(arguments.whyMissing(input));
            return true;
        case Op::ArgumentSource:
            reply.text(arguments.sourceName(input));
            return true;
        case Op::ArgumentSourceOutput:
            reply.text(arguments.sourceOutput(input));
            return true;
        default:
            return false;
    }
}

bool answerOnTables(Question& question, Op op, MessageReader& content, MessageWriter& reply) {
    GivenReaders& readers = question.of().readers();
    const auto number = content.number<std::uint64_t>();
    switch (op) {
        case Op::TableOpen:
            reply.number(readers.open(question.of().given(number)));
            return true;
        case Op::TableSelect:
            readers.at(number).selectColumns(readFlags(content));
            return true;
        case Op::TableNext: {
            Chunk chunk;
            TableReader& reader = readers.at(number);
            const bool hasRows = reader.next(chunk);
            if (hasRows) {
                reader.complete(chunk);
            }
            reply.flag(hasRows);
            writeChunk(reply, chunk);
            return true;
        }
        case Op::TableDrop:
            readers.drop(number);
            return true;
        default:
            return false;
    }
}

}  // namespace

void answer(Question& question, Op op, MessageReader content, MessageWriter& reply) {
    const bool isOnArguments = op >= Op::ArgumentNumber && op <= Op::ArgumentSourceOutput;
    const bool isOnTables = op >= Op::TableOpen && op <= Op::TableDrop;
    const bool isKnown = isOnArguments ? answerOnArguments(question, op, content, reply)
                         : isOnTables
                             ? answerOnTables(question, op, content, reply)
                             : answerOnFiles(question, op, content, reply) || answerOnRun(question, op, content, reply);
    if (!isKnown) {
        throw std::runtime_error("a message between the program and a helper process is damaged");
    }
}

}  // namespace velmorak::isolation
