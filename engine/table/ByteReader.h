#pragma once

#include "table/Checksum.h"

#include <velmorak/Value.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace velmorak {

/// The header of every serialised object.
struct ObjectHead {
    std::string name;
    std::string title;
    std::string options;
    std::vector<AnnotationItem> annotation;

    void give(DataObject& object) const {
        object.name = name;
        object.title = title;
        object.options = options;
        object.annotation = annotation;
    }
};

/// Reads the bytes of a ByteWriter. Every operation throws std::invalid_argument if the bytes are damaged.
class ByteReader {
public:
    ByteReader(std::string_view sealed, std::uint64_t mark) : bytes(sealed) {
        const std::size_t sumAt = sealed.size() - std::min(sealed.size(), sizeof(std::uint64_t));
        bytes = sealed.substr(sumAt);
        const auto sum = number<std::uint64_t>();
        bytes = sealed.substr(0, sumAt);
        if (number<std::uint64_t>() != mark || sum != checksum(sealed.substr(0, sumAt))) {
            throw std::invalid_argument("these are not the bytes of such an object");
        }
    }

    template <typename Number>
    Number number() {
        Number value{};
        take(&value, sizeof value);
        return value;
    }
    template <typename List>
    List list() {
        const auto count = number<std::uint64_t>();
        constexpr std::size_t each = sizeof(typename List::value_type);
        if (count > bytes.size() / each) {
            throw std::invalid_argument("the bytes of an object end too early");
        }
        List values;
        values.resize(count);
        take(values.data(), count * each);
        return values;
    }
    /// Reads what ByteWriter::raw has written.
    void raw(void* value, std::size_t count) { take(value, count); }
    ObjectHead head() {
        ObjectHead head;
        head.name = list<std::string>();
        head.title = list<std::string>();
        head.options = list<std::string>();
        for (auto items = number<std::uint64_t>(); items > 0; --items) {
            AnnotationItem item;
            item.key = list<std::string>();
            item.value = list<std::string>();
            item.isSticky = number<std::uint8_t>() != 0;
            head.annotation.push_back(std::move(item));
        }
        return head;
    }
    void mustBeAtEnd() const {
        if (!bytes.empty()) {
            throw std::invalid_argument("the bytes of an object are followed by others");
        }
    }

private:
    void take(void* target, std::size_t count) {
        if (count > bytes.size()) {
            throw std::invalid_argument("the bytes of an object end too early");
        }
        if (count != 0) {
            std::memcpy(target, bytes.data(), count);
        }
        bytes.remove_prefix(count);
    }

    std::string_view bytes;
};

}  // namespace velmorak
