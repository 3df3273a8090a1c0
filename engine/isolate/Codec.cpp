#include "isolate/Codec.h"

#include "run/messages/NodeError.h"
#include "store/StoreBytes.h"
#include "table/ByteReader.h"
#include "table/ByteWriter.h"

#include <velmorak/StoredTable.h>

#include <new>
#include <stdexcept>
#include <utility>

namespace velmorak::isolation {
namespace {

constexpr std::uint64_t markOfValues = 0x31'45'55'4c'41'56'6c'76;

enum class ValueForm : std::uint8_t { Plain, Table };
enum class ErrorClass : std::uint8_t { Stopped, Failure, Logic, Memory, Other };

template <typename List, typename Each>
void writeEach(MessageWriter& message, const List& list, const Each& each) {
    message.number<std::uint64_t>(list.size());
    for (const auto& element : list) {
        each(element);
    }
}

template <typename Element, typename Each>
std::vector<Element> readEach(MessageReader& message, const Each& each) {
    std::vector<Element> list;
    for (std::size_t left = message.count(); left > 0; --left) {
        list.push_back(each());
    }
    return list;
}

void write(MessageWriter& message, const InputSpec& spec) {
    message.text(spec.name);
    message.text(spec.description);
    message.number(spec.type);
    message.text(spec.value);
    isolation::write(message, spec.choices);
    message.number(spec.minimum);
    message.number(spec.maximum);
    message.flag(spec.isInteger);
    message.flag(spec.isOptional);
    message.flag(spec.isSeed);
    message.flag(spec.mayFail);
}

InputSpec readInputSpec(MessageReader& message) {
    InputSpec spec;
    spec.name = message.text();
    spec.description = message.text();
    spec.type = message.number<ValueType>();
    spec.value = message.text();
    spec.choices = readTexts(message);
    spec.minimum = message.number<double>();
    spec.maximum = message.number<double>();
    spec.isInteger = message.flag();
    spec.isOptional = message.flag();
    spec.isSeed = message.flag();
    spec.mayFail = message.flag();
    return spec;
}

void write(MessageWriter& message, const RecordedInput& input) {
    message.text(input.name);
    message.text(input.value);
    message.text(input.plugin);
    message.text(input.output);
    message.flag(input.isSeed);
}

RecordedInput readRecordedInput(MessageReader& message) {
    RecordedInput input{message.text(), message.text(), message.text(), message.text()};
    input.isSeed = message.flag();
    return input;
}

void write(MessageWriter& message, const RecordedPlugin& plugin) {
    message.text(plugin.name);
    message.text(plugin.kind);
    message.number(plugin.version);
    writeEach(message, plugin.inputs, [&](const RecordedInput& input) { write(message, input); });
    isolation::write(message, plugin.outputs);
    message.number(plugin.x);
    message.number(plugin.y);
    message.number(plugin.state);
    message.text(plugin.sentence);
}

RecordedPlugin readRecordedPlugin(MessageReader& message) {
    RecordedPlugin plugin;
    plugin.name = message.text();
    plugin.kind = message.text();
    plugin.version = message.number<int>();
    plugin.inputs = readEach<RecordedInput>(message, [&] { return readRecordedInput(message); });
    plugin.outputs = readTexts(message);
    plugin.x = message.number<float>();
    plugin.y = message.number<float>();
    plugin.state = message.number<RecordedState>();
    plugin.sentence = message.text();
    return plugin;
}

void writeFailure(MessageWriter& message, ErrorClass which, const std::string& input, const std::string& sentence,
                  Failure::Cause cause = Failure::Cause::Other) {
    message.number(which);
    message.text(input);
    message.text(sentence);
    message.number(cause);
}

}  // namespace

void write(MessageWriter& message, const Ports& ports) {
    writeEach(message, ports.inputs, [&](const InputSpec& spec) { write(message, spec); });
    writeEach(message, ports.outputs, [&](const OutputSpec& spec) {
        message.text(spec.name);
        message.text(spec.description);
        message.number(spec.type);
    });
}

Ports readPorts(MessageReader& message) {
    Ports ports;
    ports.inputs = readEach<InputSpec>(message, [&] { return readInputSpec(message); });
    ports.outputs = readEach<OutputSpec>(message, [&] {
        OutputSpec spec{message.text(), message.text()};
        spec.type = message.number<ValueType>();
        return spec;
    });
    return ports;
}

void write(MessageWriter& message, const ValueTexts& values) {
    writeEach(message, values, [&](const auto& value) {
        message.text(value.first);
        message.text(value.second);
    });
}

ValueTexts readValueTexts(MessageReader& message) {
    ValueTexts values;
    for (std::size_t left = message.count(); left > 0; --left) {
        std::string name = message.text();
        values[std::move(name)] = message.text();
    }
    return values;
}

void write(MessageWriter& message, const Schema& schema) {
    writeEach(message, schema.columns(), [&](const ColumnInfo& column) {
        message.text(column.name);
        message.number(column.type);
        message.flag(column.isList);
        message.text(column.unit);
    });
}

Schema readSchema(MessageReader& message) {
    return Schema(readEach<ColumnInfo>(message, [&] {
        ColumnInfo column;
        column.name = message.text();
        column.type = message.number<ColumnType>();
        column.isList = message.flag();
        column.unit = message.text();
        return column;
    }));
}

void write(MessageWriter& message, const std::vector<bool>& flags) {
    message.number<std::uint64_t>(flags.size());
    for (const bool flag : flags) {
        message.flag(flag);
    }
}

std::vector<bool> readFlags(MessageReader& message) {
    return readEach<bool>(message, [&] { return message.flag(); });
}

void write(MessageWriter& message, const std::vector<std::string>& texts) {
    writeEach(message, texts, [&](const std::string& text) { message.text(text); });
}

std::vector<std::string> readTexts(MessageReader& message) {
    return readEach<std::string>(message, [&] { return message.text(); });
}

void write(MessageWriter& message, const std::vector<ColumnBound>& bounds) {
    writeEach(message, bounds, [&](const ColumnBound& bound) {
        message.number<std::uint64_t>(bound.column);
        message.number(bound.relation);
        message.number(bound.number);
    });
}

std::vector<ColumnBound> readBounds(MessageReader& message) {
    return readEach<ColumnBound>(message, [&] {
        ColumnBound bound;
        bound.column = message.number<std::uint64_t>();
        bound.relation = message.number<ColumnBound::Relation>();
        bound.number = message.number<double>();
        return bound;
    });
}

void write(MessageWriter& message, const RunRecord& record) {
    message.text(record.document);
    message.text(record.documentSha256);
    message.text(record.program);
    writeEach(message, record.plugins, [&](const RecordedPlugin& plugin) { write(message, plugin); });
    writeEach(message, record.files, [&](const RecordedFile& file) {
        message.text(file.name);
        message.text(file.sha256);
        message.number(file.bytes);
    });
    writeEach(message, record.former, [&](const FormerFile& file) {
        message.text(file.plugin);
        message.text(file.file);
    });
    writeEach(message, record.skipped, [&](const SkippedFile& file) {
        message.text(file.plugin);
        message.text(file.file);
        message.text(file.reason);
    });
}

RunRecord readRunRecord(MessageReader& message) {
    RunRecord record;
    record.document = message.text();
    record.documentSha256 = message.text();
    record.program = message.text();
    record.plugins = readEach<RecordedPlugin>(message, [&] { return readRecordedPlugin(message); });
    record.files = readEach<RecordedFile>(message, [&] {
        RecordedFile file{message.text(), message.text()};
        file.bytes = message.number<std::uint64_t>();
        return file;
    });
    record.former = readEach<FormerFile>(message, [&] { return FormerFile{message.text(), message.text()}; });
    record.skipped = readEach<SkippedFile>(message, [&] {
        return SkippedFile{message.text(), message.text(), message.text()};
    });
    return record;
}

void write(MessageWriter& message, const Value& value, TableLinks& tables) {
    const auto* const object = std::get_if<DataObjectPtr>(&value);
    if (const auto table = std::dynamic_pointer_cast<const StoredTable>(object ? *object : nullptr)) {
        message.number(ValueForm::Table);
        message.number(tables.give(table));
        write(message, table->schema());
        return;
    }
    message.number(ValueForm::Plain);
    const bool isNull = object != nullptr && !*object;
    message.flag(isNull);
    if (isNull) {
        return;
    }
    try {
        ByteWriter bytes;
        bytes.number(markOfValues);
        addValue(bytes, value);
        message.text(bytes.sealed());
    } catch (const std::invalid_argument&) {
        throw Failure(
            "an object of a class that only its collection knows cannot leave the helper process of the "
            "plug-in; VELMORAK_ISOLATE=0 runs its kind inside the program");
    }
}

Value readValue(MessageReader& message, TableLinks& tables) {
    if (message.number<ValueForm>() == ValueForm::Table) {
        const auto number = message.number<std::uint64_t>();
        return DataObjectPtr(tables.take(number, readSchema(message)));
    }
    if (message.flag()) {
        return DataObjectPtr();
    }
    ByteReader bytes(message.view(), markOfValues);
    return velmorak::readValue(bytes);
}

void write(MessageWriter& message, const std::exception_ptr& exception) {
    try {
        std::rethrow_exception(exception);
    } catch (const Stopped&) {
        writeFailure(message, ErrorClass::Stopped, {}, {});
    } catch (const Failure& failure) {
        writeFailure(message, ErrorClass::Failure, failure.input(), failure.what(), failure.cause());
    } catch (const std::bad_alloc&) {
        writeFailure(message, ErrorClass::Memory, {}, {});
    } catch (const std::length_error&) {
        writeFailure(message, ErrorClass::Other, {}, errorOf(exception).sentence);
    } catch (const std::logic_error& error) {
        writeFailure(message, ErrorClass::Logic, {}, error.what());
    } catch (...) {
        writeFailure(message, ErrorClass::Other, {}, errorOf(exception).sentence);
    }
}

void rethrow(MessageReader& message, const std::string& onMemory) {
    const auto which = message.number<ErrorClass>();
    const std::string input = message.text();
    const std::string sentence = message.text();
    const auto cause = message.number<Failure::Cause>();
    switch (which) {
        case ErrorClass::Stopped:
            throw Stopped();
        case ErrorClass::Memory:
            if (!onMemory.empty()) {
                throw Failure(onMemory);
            }
            throw std::bad_alloc();
        case ErrorClass::Logic:
            throw std::logic_error(sentence);
        case ErrorClass::Failure:
        case ErrorClass::Other:
            break;
    }
    throw Failure(input, sentence, cause);
}

}  // namespace velmorak::isolation
