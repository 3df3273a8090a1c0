#pragma once

#include <velmorak/Kind.h>

#include <string>
#include <vector>

namespace velmorak {

/// An object that is written into a file with others, or the table among them.
struct NamedObject {
    std::string name;
    DataObjectPtr object;  ///< Null for the table.
    std::string input;     ///< Where it is wired.
};

/// A value with its name in a file.
struct NamedValue {
    std::string name;
    Value value;
};

/// @return the histograms of a list, each under its own name or one made from the given name and its key; else the
/// value
///         itself, as an object under its own name, if it has one, or the given one.
std::vector<NamedValue> unfolded(const Value& value, const std::string& name);

/// What differs between the inputs of the writers.
struct WriterInputs {
    std::string objects;         ///< What they write: "Histogram, profile, points or table to write".
    std::string objectsRemark;   ///< A further sentence about them, after a blank; may be empty.
    std::string ending;          ///< Of the file: ".root".
    std::string fileRemark;      ///< As in writtenFileInput.
    std::string folder;          ///< An example of one: "/run1".
    std::vector<InputSpec> own;  ///< Of this writer alone, after the folder.
};

/// The inputs object, file and folder of a kind that writes several objects into one file, its own, and the number of
/// the objects with further inputs for them.
std::vector<InputSpec> writerInputs(const WriterInputs& inputs, const ValueTexts& values);

/// @return why the folder within the file cannot be used, as a sentence; empty if it can.
std::string folderRefusal(const std::string& folder);
/// @return the value of the input "folder". @throws Failure if it cannot be used.
const std::string& folderInFile(const Arguments& arguments);

/// The objects wired to the numbered inputs "object", under its own name or that of the plug-in that made it; of a list
/// its histograms. Names that are taken get a number.
/// @param plugin kind and file of the writer, such as "AidaWriter".
/// @param file   what it writes, such as "an AIDA file".
/// @throws Failure if an input has nothing wired, a number or a text, or if there are two tables.
std::vector<NamedObject> namedObjects(const Arguments& arguments, const std::string& plugin, const std::string& file);

}  // namespace velmorak
