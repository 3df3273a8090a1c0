#include "isolate/process/HelperSession.h"

#include "isolate/ChunkCodec.h"

#include <velmorak/StoredTable.h>

#include <exception>
#include <utility>

namespace velmorak::isolation {
namespace {

/// Reads a table that the program has.
class GivenReader : public TableReader {
public:
    GivenReader(Links& links, std::uint64_t table, Schema schema) : links(links), columns(std::move(schema)) {
        links.ask(
            Op::TableOpen, [&](MessageWriter& message) { message.number(table); },
            [this](MessageReader& answer) { number = answer.number<std::uint64_t>(); });
    }
    ~GivenReader() override {
        try {
            links.ask(Op::TableDrop, [this](MessageWriter& message) { message.number(number); });
        } catch (const std::exception&) {
            // The program closes it when this process ends.
        }
    }

    const Schema& schema() const override { return columns; }
    void selectColumns(const std::vector<bool>& needed) override {
        links.ask(Op::TableSelect, [&](MessageWriter& message) {
            message.number(number);
            write(message, needed);
        });
    }
    bool next(Chunk& chunk) override {
        bool hasRows = false;
        links.ask(
            Op::TableNext, [this](MessageWriter& message) { message.number(number); },
            [&](MessageReader& answer) {
                hasRows = answer.flag();
                chunk = readChunk(answer);
            });
        return hasRows;
    }

private:
    Links& links;
    const Schema columns;
    std::uint64_t number = 0;
};

class GivenTable : public StoredTable {
public:
    GivenTable(Links& links, std::uint64_t number, Schema columns)
        : links(links), number(number), columns(std::move(columns)) {}

    const Schema& schema() const override { return columns; }
    std::unique_ptr<TableReader> open() const override { return std::make_unique<GivenReader>(links, number, columns); }

private:
    Links& links;
    const std::uint64_t number;
    const Schema columns;
};

}  // namespace

std::uint64_t HelperSession::give(const std::shared_ptr<const StoredTable>& table) {
    const std::uint64_t number = objects.newNumber();
    objects.put(number, table);
    return number;
}

std::shared_ptr<const StoredTable> HelperSession::take(std::uint64_t number, Schema schema) {
    return std::make_shared<GivenTable>(links, number, std::move(schema));
}

void RemoteArguments::ask(Op op, const std::string& input, const Reading& reading) const {
    session.links.ask(
        op, [&](MessageWriter& message) { message.text(input); }, reading);
}

double RemoteArguments::number(const std::string& input) const {
    double number = 0.0;
    ask(Op::ArgumentNumber, input, [&](MessageReader& answer) { number = answer.number<double>(); });
    return number;
}

NumberWithError RemoteArguments::numberWithError(const std::string& input) const {
    Value value;
    ask(Op::ArgumentWithError, input, [&](MessageReader& answer) { value = readValue(answer, session); });
    return std::get<NumberWithError>(value);
}

std::int64_t RemoteArguments::integer(const std::string& input) const {
    std::int64_t number = 0;
    ask(Op::ArgumentInteger, input, [&](MessageReader& answer) { number = answer.number<std::int64_t>(); });
    return number;
}

const Value& RemoteArguments::value(const std::string& input) const {
    const auto known = values.find(input);
    if (known != values.end()) {
        return known->second;
    }
    Value value;
    ask(Op::ArgumentValue, input, [&](MessageReader& answer) { value = readValue(answer, session); });
    return values.emplace(input, std::move(value)).first->second;
}

const std::string& RemoteArguments::textOf(Op op, const std::string& input) const {
    const auto known = texts.find({op, input});
    if (known != texts.end()) {
        return known->second;
    }
    std::string text;
    ask(op, input, [&](MessageReader& answer) { text = answer.text(); });
    return texts.emplace(std::pair(op, input), std::move(text)).first->second;
}

bool RemoteArguments::flagOf(Op op, const std::string& input) const {
    bool flag = false;
    ask(op, input, [&](MessageReader& answer) { flag = answer.flag(); });
    return flag;
}

void RemoteResults::send(Op op, const std::string& output, const Value& value) {
    session.links.ask(op, [&](MessageWriter& message) {
        message.text(output);
        write(message, value, session);
    });
}

}  // namespace velmorak::isolation
