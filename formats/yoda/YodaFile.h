#pragma once

#include <velmorak/Run.h>
#include <velmorak/Value.h>

#include <filesystem>
#include <iosfwd>
#include <string>
#include <vector>

/// YODA files: text with histograms, profiles and points, in versions 1, 2 and 3 of the format, plain or gzipped.
namespace velmorak {

/// An object of a file.
struct YodaEntry {
    std::string path;  ///< Absolute: "/MC_JETS/jet_pT_1".
    std::string type;  ///< In the file: "HISTO1D_V2", "COUNTER", ...
    std::uint64_t line = 0;
    Value value;          ///< A histogram, profile or points; a number with its error; or nothing.
    std::string problem;  ///< Why there is no value; empty if there is one.
};

/// Reads all objects of a file.
/// @throws Failure for the input "file" if it cannot be opened, or is not a YODA file.
std::vector<YodaEntry> readYoda(const std::filesystem::path& file, RunContext& context);

enum class YodaVersion { V2, V3 };

/// An object with its place in a file.
struct YodaObject {
    std::string path;
    Value value;
};

/// Writes a file, gzipped if its name ends with .gz. @throws Failure, also if it cannot be written.
/// @param name by which the user knows the file.
void writeYodaFile(const std::filesystem::path& file, const std::string& name, const std::vector<YodaObject>& objects,
                   YodaVersion version);

/// Writes an object with 17 digits, so that every number reads back to the last bit.
/// @param value a histogram of one or two dimensions, a profile, points of one to three dimensions, or a number.
/// @throws Failure if the format has no such object.
void writeYoda(std::ostream& out, const std::string& path, const Value& value, YodaVersion version);

}  // namespace velmorak
