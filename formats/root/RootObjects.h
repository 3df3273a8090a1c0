#pragma once

#include <velmorak/Kind.h>

#include <filesystem>
#include <memory>
#include <string>

/// Objects of ROOT files other than tables. See docs/root.md.
namespace velmorak {

/// @return the type of the objects of a class: Histogram, Profile or Points, Number for a TParameter, Text for a
///         TObjString or TNamed; Any for a class that cannot be read.
ValueType rootObjectType(const std::string& className);

/// Reads one object of a type: a histogram, profile or points, a double or a text.
/// @param path of the object, or its bare name; empty if the file contains only one object of the type.
/// @throws Failure if the file is missing, is not a ROOT file or is damaged; if no object or more than one matches,
///         with a list of those of the type.
Value readRootObject(const std::filesystem::path& file, const std::string& path, ValueType type, RunContext& context);

/// Reads the objects of a file one after the other, as a listing does.
class RootObjectReader {
public:
    /// @throws Failure if the file is missing, is not a ROOT file or is damaged.
    explicit RootObjectReader(const std::filesystem::path& file);
    ~RootObjectReader();
    RootObjectReader(const RootObjectReader&) = delete;
    RootObjectReader& operator=(const RootObjectReader&) = delete;

    /// @param path of an object as listRoot gives it.
    /// @throws Failure if there is no such object, or if it cannot be read.
    Value read(const std::string& path) const;

private:
    struct Opened;
    std::unique_ptr<Opened> opened;
};

}  // namespace velmorak
