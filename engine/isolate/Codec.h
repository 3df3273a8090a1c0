#pragma once

#include "isolate/Message.h"

#include <velmorak/Kind.h>
#include <velmorak/RowBounds.h>

#include <cstdint>
#include <exception>
#include <string>
#include <vector>

namespace velmorak {
class StoredTable;
}

/// How what kinds and runs exchange becomes part of a message.
namespace velmorak::isolation {

void write(MessageWriter& message, const Ports& ports);
Ports readPorts(MessageReader& message);

void write(MessageWriter& message, const ValueTexts& values);
ValueTexts readValueTexts(MessageReader& message);

void write(MessageWriter& message, const Schema& schema);
Schema readSchema(MessageReader& message);

void write(MessageWriter& message, const std::vector<bool>& flags);
std::vector<bool> readFlags(MessageReader& message);

void write(MessageWriter& message, const std::vector<std::string>& texts);
std::vector<std::string> readTexts(MessageReader& message);

void write(MessageWriter& message, const std::vector<ColumnBound>& bounds);
std::vector<ColumnBound> readBounds(MessageReader& message);

void write(MessageWriter& message, const RunRecord& record);
RunRecord readRunRecord(MessageReader& message);

/// The other process knows a stored table by a number.
class TableLinks {
public:
    virtual ~TableLinks() = default;
    /// @return the number of a table that this process has.
    virtual std::uint64_t give(const std::shared_ptr<const StoredTable>& table) = 0;
    /// @return a table that the other process has.
    virtual std::shared_ptr<const StoredTable> take(std::uint64_t number, Schema schema) = 0;
};

/// @throws Failure for an object of a class that only its collection knows.
void write(MessageWriter& message, const Value& value, TableLinks& tables);
Value readValue(MessageReader& message, TableLinks& tables);

/// An exception as its class, as far as kinds or runs tell classes apart, and its words.
void write(MessageWriter& message, const std::exception_ptr& exception);
/// Throws an exception that errorOf translates to the same words.
/// @param onMemory sentence for a lack of memory; empty: the usual one.
[[noreturn]] void rethrow(MessageReader& message, const std::string& onMemory = {});

}  // namespace velmorak::isolation
