#pragma once

#include "fileParts.h"

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

/// Replaces the content of a regular file atomically. Follows symbolic links; preserves owner, mode, extended
/// attributes and hard links.
///
/// Normally, the text is written to a temporary file in the same folder, flushed to the disk, and renamed to the
/// target. Invariant: a reader finds either the old content or the new one, at any time and also after a failure, a
/// kill or a power cut.
///
/// Renaming would break hard links. It is impossible without write permission for the folder, if the file belongs to
/// another user, if an attribute cannot be set, or if the disk has no room for two files. The target is then written in
/// place, with a weaker guarantee: a reader may find a half-written file; after a failure, the old content is restored;
/// after a kill or a power cut, the complete new text is in a copy (putCopy), written before the target is modified. If
/// there is no room for the copy either, the old content is in memory only: it survives a failure, but not a kill.
class SafeFile {
public:
    static constexpr mode_t defaultMode = 0666;  ///< Before the umask is applied.

    /// @param mode of a new file, before the umask is applied.
    explicit SafeFile(const std::string& name, mode_t mode = defaultMode);

    /// False if it is not a regular file or must not be written. Devices and pipes are never opened.
    bool isOpen() const;
    /// @return the current content; nothing if the file is new or cannot be read.
    std::optional<std::string> formerContent() const;
    bool isNew() const { return !former; }
    mode_t formerMode() const { return former ? former->st_mode : defaultMode; }
    /// @return false, with nothing changed, if there is no room for the text.
    bool save(std::string_view text);

private:
    bool replace(std::string_view text);
    bool overwrite(std::string_view text);

    std::filesystem::path target;
    std::optional<struct stat> former;
    Descriptor inPlace;                   ///< Open if the file exists.
    std::optional<TemporaryFile> beside;  ///< Set if the file is new.
};

/// Makes `text` the whole content of a file.
/// @return false, with nothing changed, if the file must not be written or there is no room for the text.
bool saveFile(const std::string& file, std::string_view text);

/// @return the copy with the text that a killed program was writing to the file in place; nothing if the file is
/// complete.
std::optional<std::string> interruptedSaveOf(const std::string& file);

/// @return whether something of that name exists and can be opened; does not wait for a pipe.
bool isThere(const std::string& file);
