#pragma once

#include "root/container/File.h"

#include <cstdint>
#include <string>
#include <vector>

namespace velmorak::root {

/// The descriptions of an RNTuple, format version 1.0: its fields, the columns that they are stored in, and where
/// the pages of each column are.
struct NTupleField {
    enum class Role { Leaf = 0, Collection = 1, Record = 2, Variant = 3, Streamed = 4 };
    std::string name;
    std::string typeName;
    std::string description;
    std::size_t parent = 0;  ///< Its own position if it is at the top.
    Role role = Role::Leaf;
    std::uint64_t arraySize = 0;        ///< 0 if the field is not an array of fixed size.
    std::optional<std::size_t> source;  ///< Of a projected field: the one that has the values.
};

/// How the elements of a column are stored.
struct NTupleColumn {
    enum Type {
        Bit = 0,
        Byte,
        Char,
        Int8,
        UInt8,
        Int16,
        UInt16,
        Int32,
        UInt32,
        Int64,
        UInt64,
        Real16,
        Real32,
        Real64,
        Index32,
        Index64,
        Switch,
        SplitInt16,
        SplitUInt16,
        SplitInt32,
        SplitUInt32,
        SplitInt64,
        SplitUInt64,
        SplitReal16,
        SplitReal32,
        SplitReal64,
        SplitIndex32,
        SplitIndex64,
        Real32Trunc,
        Real32Quant
    };
    int type = Bit;
    unsigned bits = 0;
    std::size_t field = 0;
    unsigned representation = 0;
    double low = 0.0;  ///< Of a Real32Quant: range of its integers.
    double high = 0.0;
};

struct NTuplePage {
    std::uint64_t elements = 0;
    std::uint64_t position = 0;
    std::size_t bytes = 0;
    bool hasChecksum = false;
};

/// The pages of one column in one cluster.
struct NTuplePages {
    std::vector<NTuplePage> pages;
    bool isSuppressed = false;  ///< The values are in another representation of the field.
    std::uint64_t elements() const;
};

/// A cluster: consecutive entries that are stored together.
struct NTupleCluster {
    std::uint64_t firstEntry = 0;
    std::uint64_t entries = 0;
    std::vector<NTuplePages> columns;  ///< By column.
};

struct NTupleSchema {
    std::string name;
    std::string description;
    std::vector<NTupleField> fields;
    std::vector<NTupleColumn> columns;
    std::vector<NTupleCluster> clusters;
    std::uint64_t entries = 0;
    std::uint64_t footerChecksum = 0;

    /// @throws Failure if a description is damaged, has a wrong checksum or an unknown version.
    static NTupleSchema read(const File& file, const Key& anchor);
};

}  // namespace velmorak::root
