#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

/// What the program keeps in the user's state folder ($XDG_STATE_HOME/velmorak, else ~/.local/state/velmorak) so that
/// no document is lost. Each text lies in a file of its own; beside it, under the same name with the extension
/// ".origin", stands the path of the file that it belongs to. docs/document.md describes the places.

/// Keeps the text of a document whose plug-ins are about to go.
/// @param origin the document's file; empty for one without a name.
/// @return the file that holds it, empty where it cannot be kept.
std::string keepRemoved(std::string_view text, const std::string& origin);
void forgetRemoved(const std::string& kept);

/// Puts the complete text of a file that is about to be written in place beside the file or, where that cannot be done,
/// into the state folder.
/// @return false where neither can be done.
bool putCopy(const std::filesystem::path& target, std::string_view text);
/// @return the newest copy of that kind that was not removed: the writing of the file was interrupted.
std::optional<std::filesystem::path> copyOf(const std::filesystem::path& target);
void removeCopies(const std::filesystem::path& target);
