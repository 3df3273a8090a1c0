#include "numpy/ArrayHeader.h"

#include "numpy/Literal.h"

#include <velmorak/Failure.h>

#include <limits>
#include <set>
#include <utility>

namespace velmorak::numpy {
namespace {

constexpr std::size_t versionAt = 6;
constexpr std::size_t lengthAt = 8;
constexpr std::uint64_t maxHeaderBytes = std::uint64_t{1} << 24U;

unsigned byteAt(std::string_view bytes, std::size_t position) {
    return static_cast<unsigned char>(bytes[position]);
}

/// Version 1 has a length of two bytes, later ones of four.
std::size_t lengthBytes(std::string_view prefix) {
    return byteAt(prefix, versionAt) == 1 ? 2 : 4;
}

std::uint64_t product(std::uint64_t one, std::uint64_t other) {
    std::uint64_t result = 0;
    if (__builtin_mul_overflow(one, other, &result) || result > (std::uint64_t{1} << 62U)) {
        throw Failure("its header is damaged: the array is larger than any file");
    }
    return result;
}

std::vector<std::uint64_t> shapeIn(const Literal& literal) {
    if (literal.kind != Literal::Kind::Sequence) {
        throw Failure("its header has no shape");
    }
    std::vector<std::uint64_t> shape;
    for (const Literal& item : literal.items) {
        if (item.kind != Literal::Kind::Integer || item.integer < 0) {
            throw Failure("its header has a wrong shape");
        }
        shape.push_back(static_cast<std::uint64_t>(item.integer));
    }
    return shape;
}

std::uint64_t elementsIn(const std::vector<std::uint64_t>& shape) {
    std::uint64_t count = 1;
    for (const std::uint64_t length : shape) {
        count = product(count, length);
    }
    return count;
}

/// Collects the fields of a record type, which may hold others.
class RecordType {
public:
    void add(const std::string& prefix, const Literal& type, std::uint64_t count, bool isList);

    std::vector<Field> fields;
    std::uint64_t bytes = 0;

private:
    void addRecord(const std::string& prefix, const Literal& type);
    void addElement(const std::string& name, const std::string& code, std::uint64_t count, bool isList);
    void addField(Field field);

    std::set<std::string> names;
};

void RecordType::add(const std::string& prefix, const Literal& type, std::uint64_t count, bool isList) {
    if (type.kind == Literal::Kind::Text) {
        addElement(prefix, type.text, count, isList);
        return;
    }
    if (type.kind != Literal::Kind::Sequence) {
        throw Failure("the type of its elements is not known");
    }
    if (!isList) {
        addRecord(prefix, type);
        return;
    }
    RecordType inner;
    inner.addRecord("", type);
    addField({.name = prefix,
              .element = {.kind = Element::Kind::Unreadable, .problem = "arrays of records are not read"},
              .offset = bytes});
    bytes += product(inner.bytes, count);
}

void RecordType::addRecord(const std::string& prefix, const Literal& type) {
    for (const Literal& item : type.items) {
        if (item.kind != Literal::Kind::Sequence || item.items.size() < 2 || item.items.size() > 3 ||
            item.items.front().kind != Literal::Kind::Text) {
            // A field with a title has both in place of its name.
            throw Failure("the fields of its records cannot be read");
        }
        const std::string name = prefix.empty() ? item.items[0].text : prefix + "." + item.items[0].text;
        const bool isList = item.items.size() == 3;
        add(name, item.items[1], isList ? elementsIn(shapeIn(item.items[2])) : 1, isList);
    }
}

void RecordType::addElement(const std::string& name, const std::string& code, std::uint64_t count, bool isList) {
    Element element = elementOf(code);
    const std::uint64_t offset = bytes;
    bytes += product(element.bytes, count);
    if (element.isComplex && isList) {
        element = {.kind = Element::Kind::Unreadable, .problem = "lists of complex numbers are not read"};
    }
    if (!element.isComplex || element.kind == Element::Kind::Unreadable) {
        addField({.name = name, .element = element, .offset = offset, .count = count, .isList = isList});
        return;
    }
    const std::string stem = name.empty() ? "" : name + ".";
    element.bytes /= 2;
    addField({.name = stem + "real", .element = element, .offset = offset});
    addField({.name = stem + "imag", .element = element, .offset = offset + element.bytes});
}

/// A field without a name, of the padding, is left out.
void RecordType::addField(Field field) {
    const bool isPadding = field.name.empty() && field.element.kind == Element::Kind::Unreadable;
    if (!isPadding && names.insert(field.name).second) {
        fields.push_back(std::move(field));
    }
}

}  // namespace

std::uint64_t ArrayHeader::dataBytes() const {
    return product(elementsIn(shape), itemBytes);
}

std::uint64_t headerBytes(std::string_view prefix) {
    if (!prefix.starts_with(arraySignature) || prefix.size() < lengthAt + 2 ||
        prefix.size() < lengthAt + lengthBytes(prefix)) {
        throw Failure("it is no NumPy array");
    }
    const std::size_t count = lengthBytes(prefix);
    std::uint64_t length = 0;
    for (std::size_t i = count; i > 0; --i) {
        length = length << 8U | byteAt(prefix, lengthAt + i - 1);
    }
    if (length > maxHeaderBytes) {
        throw Failure("its header is damaged: it would have " + std::to_string(length) + " bytes");
    }
    return lengthAt + count + length;
}

ArrayHeader readHeader(std::string_view header) {
    const Literal dictionary = literalIn(header.substr(lengthAt + lengthBytes(header)));
    const Literal* type = dictionary.find("descr");
    const Literal* order = dictionary.find("fortran_order");
    const Literal* shape = dictionary.find("shape");
    if (!type || !order || !shape) {
        throw Failure("its header lacks the type, the order or the shape");
    }
    RecordType record;
    record.add("", *type, 1, false);
    ArrayHeader array{.fields = std::move(record.fields),
                      .hasRecords = type->kind == Literal::Kind::Sequence,
                      .itemBytes = record.bytes,
                      .shape = shapeIn(*shape),
                      .isFortran = order->integer != 0,
                      .begin = header.size()};
    array.dataBytes();
    return array;
}

}  // namespace velmorak::numpy
