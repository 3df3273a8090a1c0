#pragma once

#include "InputFile.h"
#include "QuietContext.h"
#include "ReadTable.h"
#include "Target.h"

#include <filesystem>
#include <string>

namespace velmorak::fuzz {

/// A Failure is what bad input deserves.
template <typename Work>
void refusing(const Work& work) {
    try {
        work();
    } catch (const Failure&) {
    } catch (const Stopped&) {
    }
}

/// A few bytes can announce billions of rows without any bytes, so that reading is stopped after some chunks.
/// @param open gets a file, the path of an object in it, and a context, and returns a reader.
template <typename Open>
void readStopping(const std::filesystem::path& file, const std::string& object, const Open& open) {
    constexpr long maxPolls = 100;
    QuietContext context(maxPolls);
    readTable(*open(file, object, context));
}

/// Reads each of the objects that a file lists, and the one that is meant without a name.
template <typename List, typename Open>
void readObjects(std::string_view bytes, const List& list, const Open& open) {
    const InputFile file(bytes);
    refusing([&] {
        for (const auto& object : list(file.path())) {
            refusing([&] { readStopping(file.path(), object.path, open); });
        }
    });
    refusing([&] { readStopping(file.path(), "", open); });
}

}  // namespace velmorak::fuzz
