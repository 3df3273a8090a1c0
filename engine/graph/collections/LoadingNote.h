#pragma once

#include <filesystem>
#include <string>

namespace velmorak {

/// A file that exists while a collection is being loaded. If loading crashes the program, the file stays, and the next
/// program skips that collection. Where the file cannot be written, a collection is loaded without it.
class LoadingNote {
public:
    /// @param folder for notes; empty for none.
    /// @param object shared object that is about to be loaded.
    LoadingNote(const std::filesystem::path& folder, const std::filesystem::path& object);
    /// Removes the note, unless an earlier program left it.
    ~LoadingNote();
    LoadingNote(const LoadingNote&) = delete;
    LoadingNote& operator=(const LoadingNote&) = delete;

    /// An earlier program ended while it loaded the object, and the object has not changed since.
    bool isOfAnEndedProgram() const { return isLeftBehind; }
    const std::filesystem::path& file() const { return path; }

private:
    void write(const std::string& text) const;

    std::filesystem::path path;
    int descriptor = -1;
    bool isLeftBehind = false;
};

}  // namespace velmorak
