#include "hdf5/Leaves.h"

#include <velmorak/Failure.h>
#include <velmorak/Utf8.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>
#include <string_view>

namespace velmorak::hdf5 {
namespace {

constexpr int maxTypeDepth = 16;
constexpr std::size_t maxLeaves = 20000;

bool isSwapped(hid_t type) {
    const H5T_order_t order = H5Tget_order(type);
    return (order == H5T_ORDER_BE) == (std::endian::native == std::endian::little);
}

/// Half, single and double precision, as IEEE 754 defines them.
bool isStandardReal(hid_t type) {
    std::size_t sign = 0;
    std::size_t exponentAt = 0;
    std::size_t exponent = 0;
    std::size_t mantissaAt = 0;
    std::size_t mantissa = 0;
    H5Tget_fields(type, &sign, &exponentAt, &exponent, &mantissaAt, &mantissa);
    const std::size_t bits = 8 * H5Tget_size(type);
    const std::size_t wanted = bits == 16 ? 5 : bits == 32 ? 8 : 11;
    const H5T_order_t order = H5Tget_order(type);
    return (bits == 16 || bits == 32 || bits == 64) && exponent == wanted && mantissa == bits - 1 - wanted &&
           mantissaAt == 0 && exponentAt == mantissa && sign == bits - 1 && H5Tget_norm(type) == H5T_NORM_IMPLIED &&
           H5Tget_ebias(type) == (std::size_t{1} << (wanted - 1)) - 1 &&
           (order == H5T_ORDER_LE || order == H5T_ORDER_BE);
}

bool isStandardInteger(hid_t type) {
    const std::size_t size = H5Tget_size(type);
    const H5T_order_t order = H5Tget_order(type);
    return (size == 1 || size == 2 || size == 4 || size == 8) && H5Tget_precision(type) == 8 * size &&
           H5Tget_offset(type) == 0 && (order == H5T_ORDER_LE || order == H5T_ORDER_BE);
}

/// h5py stores booleans as an enumeration of FALSE and TRUE.
bool isBooleanEnumeration(hid_t type) {
    std::array<std::string_view, 2> expected = {"FALSE", "TRUE"};
    if (H5Tget_nmembers(type) != 2 || H5Tget_size(type) != 1) {
        return false;
    }
    for (unsigned i = 0; i < 2; ++i) {
        char* name = H5Tget_member_name(type, i);
        const bool isExpected = name != nullptr && name == expected[i];
        H5free_memory(name);
        if (!isExpected) {
            return false;
        }
    }
    return true;
}

class Walk {
public:
    void element(hid_t type, Leaf leaf, int depth);

    std::vector<Leaf> leaves;

private:
    void number(hid_t type, Leaf leaf);
    void text(hid_t type, Leaf leaf);
    void array(hid_t type, Leaf leaf);
    void list(hid_t type, Leaf leaf);
    void compound(hid_t type, const Leaf& leaf, int depth);
    void add(Leaf leaf) { leaves.push_back(std::move(leaf)); }
    void addProblem(Leaf leaf, std::string problem);
};

void Walk::addProblem(Leaf leaf, std::string problem) {
    leaf.problem = std::move(problem);
    add(std::move(leaf));
}

/// Describes a number. @return false if the type is none.
bool describeNumber(hid_t type, Leaf& leaf) {
    leaf.bytes = H5Tget_size(type);
    switch (H5Tget_class(type)) {
        case H5T_INTEGER: {
            const bool isSigned = H5Tget_sign(type) == H5T_SGN_2;
            leaf.number = {isSigned ? StoredNumber::Kind::Signed : StoredNumber::Kind::Unsigned, leaf.bytes,
                           leaf.bytes > 1 && isSwapped(type)};
            if (!isStandardInteger(type)) {
                leaf.kind = Leaf::Kind::Converted;
                leaf.number = {StoredNumber::Kind::Signed, 8, false};
            }
            return true;
        }
        case H5T_FLOAT:
            leaf.number = {StoredNumber::Kind::Real, leaf.bytes, isSwapped(type)};
            if (!isStandardReal(type)) {
                leaf.kind = Leaf::Kind::Converted;
                leaf.number = {StoredNumber::Kind::Real, 8, false};
            }
            return true;
        case H5T_ENUM: {
            const bool isBoolean = isBooleanEnumeration(type);
            const Handle base(H5Tget_super(type), H5Tclose);
            if (!base || !describeNumber(base.id(), leaf) || leaf.kind != Leaf::Kind::Number) {
                return false;
            }
            leaf.number.kind = isBoolean ? StoredNumber::Kind::Boolean : leaf.number.kind;
            return true;
        }
        case H5T_BITFIELD:
            // PyTables stores booleans as eight bits.
            leaf.number = {leaf.bytes == 1 ? StoredNumber::Kind::Boolean : StoredNumber::Kind::Unsigned, leaf.bytes,
                           leaf.bytes > 1 && isSwapped(type)};
            return isKnown(leaf.number);
        default:
            return false;
    }
}

void Walk::element(hid_t type, Leaf leaf, int depth) {
    if (leaves.size() > maxLeaves || depth > maxTypeDepth) {
        throw Failure("its type has too many members");
    }
    switch (H5Tget_class(type)) {
        case H5T_INTEGER:
        case H5T_FLOAT:
        case H5T_ENUM:
        case H5T_BITFIELD:
            return number(type, std::move(leaf));
        case H5T_STRING:
            return text(type, std::move(leaf));
        case H5T_ARRAY:
            return array(type, std::move(leaf));
        case H5T_VLEN:
            return list(type, std::move(leaf));
        case H5T_COMPOUND:
            return compound(type, leaf, depth);
        case H5T_REFERENCE:
            return addProblem(std::move(leaf), "references to other objects are not read");
        default:
            return addProblem(std::move(leaf), "values without a known type (opaque, time) are not read");
    }
}

void Walk::number(hid_t type, Leaf leaf) {
    if (describeNumber(type, leaf)) {
        add(std::move(leaf));
    } else {
        addProblem(std::move(leaf), "numbers of this type are not read");
    }
}

void Walk::text(hid_t type, Leaf leaf) {
    if (H5Tis_variable_str(type) > 0) {
        leaf.kind = Leaf::Kind::LongText;
        leaf.isUtf8 = H5Tget_cset(type) == H5T_CSET_UTF8;
    } else {
        leaf.kind = Leaf::Kind::Text;
        leaf.bytes = H5Tget_size(type);
        leaf.padding = H5Tget_strpad(type) == H5T_STR_SPACEPAD ? ' ' : '\0';
    }
    add(std::move(leaf));
}

void Walk::array(hid_t type, Leaf leaf) {
    const Handle base(H5Tget_super(type), H5Tclose);
    const bool isText = base && H5Tget_class(base.id()) == H5T_STRING && H5Tis_variable_str(base.id()) == 0;
    if (isText) {
        text(base.id(), leaf);
        leaf = std::move(leaves.back());
        leaves.pop_back();
    }
    const bool isNumber = base && !isText && describeNumber(base.id(), leaf) && leaf.kind == Leaf::Kind::Number;
    if ((!isText && !isNumber) || leaf.bytes == 0) {
        leaf.kind = Leaf::Kind::Number;
        return addProblem(std::move(leaf), "arrays of anything but usual numbers and short texts are not read");
    }
    leaf.count = H5Tget_size(type) / leaf.bytes;
    leaf.isList = true;
    add(std::move(leaf));
}

void Walk::list(hid_t type, Leaf leaf) {
    const Handle base(H5Tget_super(type), H5Tclose);
    Leaf item;
    if (!base || !describeNumber(base.id(), item) || item.number.kind == StoredNumber::Kind::Boolean) {
        return addProblem(std::move(leaf), "lists of anything but numbers are not read");
    }
    leaf.kind = Leaf::Kind::LongList;
    leaf.number = {
        columnTypeOf(item.number) == ColumnType::Real ? StoredNumber::Kind::Real : StoredNumber::Kind::Signed, 8,
        false};
    leaf.isList = true;
    add(std::move(leaf));
}

void Walk::compound(hid_t type, const Leaf& leaf, int depth) {
    const int count = H5Tget_nmembers(type);
    for (int i = 0; i < count; ++i) {
        const auto position = static_cast<unsigned>(i);
        char* name = H5Tget_member_name(type, position);
        const std::string member = name ? toUtf8(name) : "";
        std::vector<std::string> members = leaf.members;
        members.emplace_back(name ? name : "");
        H5free_memory(name);
        const Handle inner(H5Tget_member_type(type, position), H5Tclose);
        if (inner) {
            element(inner.id(),
                    {.name = leaf.name.empty() ? member : leaf.name + "." + member,
                     .members = std::move(members),
                     .offset = leaf.offset + H5Tget_member_offset(type, position)},
                    depth + 1);
        }
    }
}

hid_t numberType(const Leaf& leaf) {
    return leaf.number.kind == StoredNumber::Kind::Real ? H5T_NATIVE_DOUBLE : H5T_NATIVE_INT64;
}

Handle innermostType(const Leaf& leaf) {
    if (leaf.kind == Leaf::Kind::LongList) {
        return {H5Tvlen_create(numberType(leaf)), H5Tclose};
    }
    if (leaf.kind == Leaf::Kind::LongText) {
        Handle type(H5Tcopy(H5T_C_S1), H5Tclose);
        H5Tset_size(type.id(), H5T_VARIABLE);
        H5Tset_cset(type.id(), leaf.isUtf8 ? H5T_CSET_UTF8 : H5T_CSET_ASCII);
        return type;
    }
    return {H5Tcopy(numberType(leaf)), H5Tclose};
}

}  // namespace

ColumnType Leaf::type() const {
    return kind == Kind::Text || kind == Kind::LongText ? ColumnType::Text : columnTypeOf(number);
}

std::vector<Leaf> leavesOf(hid_t type) {
    Walk walk;
    walk.element(type, {}, 0);
    return std::move(walk.leaves);
}

Handle memoryTypeOf(const Leaf& leaf) {
    Handle type = innermostType(leaf);
    std::for_each(leaf.members.rbegin(), leaf.members.rend(), [&type](const std::string& member) {
        Handle outer(H5Tcreate(H5T_COMPOUND, H5Tget_size(type.id())), H5Tclose);
        H5Tinsert(outer.id(), member.c_str(), 0, type.id());
        type = std::move(outer);
    });
    return type;
}

void appendTexts(Column& column, const Leaf& leaf, const char* first, std::size_t stride, std::size_t count) {
    auto& texts = std::get<Column::Texts>(column.values);
    for (std::size_t i = 0; i < count; ++i) {
        std::string_view text(first + i * stride, leaf.bytes);
        text = text.substr(0, text.find('\0'));
        while (text.ends_with(leaf.padding)) {
            text.remove_suffix(1);
        }
        texts.push_back(toUtf8(text));
    }
}

}  // namespace velmorak::hdf5
