#include "store/StoreBytes.h"

#include <velmorak/ObjectBytes.h>

#include <stdexcept>

namespace velmorak {
namespace {

constexpr std::uint64_t storeMark = 0x32'53'45'52'6b'6c'65'56;

enum class ValueTag : std::uint8_t { Nothing, Number, Text, Object, NumberWithError };

void addNumber(ByteWriter& writer, const NumberWithError& number) {
    writer.number(number.value());
    writer.number<std::uint64_t>(number.terms().size());
    for (const NumberWithError::Term& term : number.terms()) {
        writer.list(term.covariance->origin);
        writer.number<std::uint64_t>(term.covariance->size());
        for (const std::string& name : term.covariance->names) {
            writer.list(name);
        }
        writer.list(term.covariance->elements);
        writer.list(term.derivatives);
    }
}

NumberWithError::Term readTerm(ByteReader& reader) {
    CovarianceMatrix covariance;
    covariance.origin = reader.list<std::string>();
    for (auto count = reader.number<std::uint64_t>(); count > 0; --count) {
        covariance.names.push_back(reader.list<std::string>());
    }
    covariance.elements = reader.list<std::vector<double>>();
    auto derivatives = reader.list<std::vector<double>>();
    return {std::make_shared<const CovarianceMatrix>(std::move(covariance)), std::move(derivatives)};
}

/// @throws std::invalid_argument
NumberWithError readNumberWithError(ByteReader& reader) {
    const auto value = reader.number<double>();
    std::vector<NumberWithError::Term> terms;
    for (auto count = reader.number<std::uint64_t>(); count > 0; --count) {
        terms.push_back(readTerm(reader));
    }
    return {value, std::move(terms)};
}

}  // namespace

void addValue(ByteWriter& writer, const Value& value) {
    writer.number(static_cast<std::uint8_t>(value.index()));
    if (const auto* number = std::get_if<double>(&value)) {
        writer.number(*number);
    } else if (const auto* text = std::get_if<std::string>(&value)) {
        writer.list(*text);
    } else if (const auto* object = std::get_if<DataObjectPtr>(&value)) {
        writer.object(**object);
    } else if (const auto* withError = std::get_if<NumberWithError>(&value)) {
        addNumber(writer, *withError);
    }
}

Value readValue(ByteReader& reader) {
    switch (static_cast<ValueTag>(reader.number<std::uint8_t>())) {
        case ValueTag::Nothing:
            return {};
        case ValueTag::Number:
            return reader.number<double>();
        case ValueTag::Text:
            return reader.list<std::string>();
        case ValueTag::Object:
            return objectFrom(reader.list<std::string>());
        case ValueTag::NumberWithError:
            return readNumberWithError(reader);
    }
    throw std::invalid_argument("unknown type of value");
}

namespace {

void write(ByteWriter& writer, const StoredResult& result) {
    writer.number(storeMark);
    writer.number<std::uint64_t>(result.outputs.size());
    for (const Value& value : result.outputs) {
        addValue(writer, value);
    }
    addFiles(writer, result.files);
    addFiles(writer, result.asked);
    addFiles(writer, result.written);
}

}  // namespace

void addFiles(ByteWriter& writer, const std::vector<FileContent>& files) {
    writer.number<std::uint64_t>(files.size());
    for (const FileContent& content : files) {
        writer.number<std::uint8_t>(content.file ? 1 : 0);
        writer.list(content.file.value_or(""));
        writer.number(content.digest);
    }
}

std::vector<FileContent> readFiles(ByteReader& reader) {
    std::vector<FileContent> files;
    for (auto count = reader.number<std::uint64_t>(); count > 0; --count) {
        FileContent content;
        const bool isNamed = reader.number<std::uint8_t>() != 0;
        auto name = reader.list<std::string>();
        if (isNamed) {
            content.file = std::move(name);
        }
        content.digest = reader.number<Digest>();
        files.push_back(std::move(content));
    }
    return files;
}

std::optional<std::string> bytesOf(const StoredResult& result) {
    try {
        ByteWriter writer;
        write(writer, result);
        return writer.sealed();
    } catch (const std::invalid_argument&) {
        return std::nullopt;
    }
}

void bytesOf(const StoredResult& result, const ByteSink& sink) {
    ByteWriter writer(sink);
    write(writer, result);
    writer.seal();
}

std::optional<std::uint64_t> countBytesOf(const StoredResult& result) {
    try {
        ByteWriter writer = ByteWriter::counter();
        write(writer, result);
        return writer.count();
    } catch (const std::invalid_argument&) {
        return std::nullopt;
    }
}

std::optional<StoredResult> storedResultFrom(const std::string& bytes) {
    try {
        ByteReader reader(bytes, storeMark);
        StoredResult result;
        for (auto count = reader.number<std::uint64_t>(); count > 0; --count) {
            result.outputs.push_back(readValue(reader));
        }
        result.files = readFiles(reader);
        result.asked = readFiles(reader);
        result.written = readFiles(reader);
        reader.mustBeAtEnd();
        return result;
    } catch (const std::invalid_argument&) {
        return std::nullopt;
    }
}

}  // namespace velmorak
