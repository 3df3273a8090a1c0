#pragma once

#include <filesystem>
#include <string>

namespace velmorak {

/// A note on disk that a collection is being loaded. A program that ends meanwhile leaves its note behind, and the next
/// one knows what not to load. Where no note can be written there is none.
class LoadingNote {
public:
    /// @param folder that notes are kept in; empty for none.
    /// @param object that is about to be loaded.
    LoadingNote(const std::filesystem::path& folder, const std::filesystem::path& object);
    /// The note goes, unless it is that of an earlier program.
    ~LoadingNote();
    LoadingNote(const LoadingNote&) = delete;
    LoadingNote& operator=(const LoadingNote&) = delete;

    /// A program ended while it was loading the object, which has not changed since.
    bool isOfAnEndedProgram() const { return isLeftBehind; }
    const std::filesystem::path& file() const { return path; }

private:
    void write(const std::string& text) const;

    std::filesystem::path path;
    int descriptor = -1;
    bool isLeftBehind = false;
};

}  // namespace velmorak
