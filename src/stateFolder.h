#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

/// Backups in the user's state folder ($XDG_STATE_HOME/velmorak, else ~/.local/state/velmorak), so that no document is
/// lost. Each text is in a separate file; a second file with the same name and the extension ".origin" contains the
/// path of the file that it belongs to. docs/document.md describes the folders.

/// The extension of a document's file.
inline constexpr const char* documentExtension = ".zedra";

/// Keeps the text of a document whose plug-ins are about to be removed.
/// @param origin the document's file; empty if it has no name yet.
/// @return the file with the text; empty if it cannot be written.
std::string keepRemoved(std::string_view text, const std::string& origin);
void forgetRemoved(const std::string& kept);

/// Writes a copy of the text with which a file is about to be overwritten in place: into the same folder or, if that is
/// not possible, into the state folder.
/// @return false if neither is possible.
bool putCopy(const std::filesystem::path& target, std::string_view text);
/// @return the newest copy made by putCopy and not removed since. It exists only if overwriting was interrupted.
std::optional<std::filesystem::path> copyOf(const std::filesystem::path& target);
void removeCopies(const std::filesystem::path& target);
