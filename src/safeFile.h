#pragma once

#include "fileParts.h"

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

/// A regular file that gets a new content as a whole. Symbolic links are followed; owner, mode, extended attributes and
/// hard links stay.
///
/// The text goes to a file beside the target, to the disk, and then takes the target's place: whoever reads the file
/// meanwhile, or after a failure, a kill or a power cut, finds either the former content or the new one.
///
/// That would cut hard links, and cannot be done without the right to the folder, for another's file, for attributes
/// that may not be set, or where the disk has no room for two. Then the target is written in place. The promise is a
/// weaker one: a reader may meet a file that is half written; after a failure the former content is put back; after a
/// kill or a power cut the whole new text lies in a copy (putCopy), made before the target is touched. Only where the
/// copy finds no room either, the former content is kept in memory alone, for a failure but not for a kill.
class SafeFile {
public:
    static constexpr mode_t usualMode = 0666;  ///< Less the user's mask.

    /// @param mode of a file that is not there yet, less the user's mask.
    explicit SafeFile(const std::string& name, mode_t mode = usualMode);

    /// False when it is no regular file or may not be written. A device or a pipe is not touched.
    bool isOpen() const;
    /// @return the content that it has; nothing when it is new or cannot be read.
    std::optional<std::string> formerContent() const;
    bool isNew() const { return !former; }
    mode_t formerMode() const { return former ? former->st_mode : usualMode; }
    /// @return false, with nothing changed, when there is no room for the text.
    bool save(std::string_view text);

private:
    bool replace(std::string_view text);
    bool overwrite(std::string_view text);

    std::filesystem::path target;
    std::optional<struct stat> former;
    Descriptor inPlace;                 ///< Of a file that is there.
    std::optional<PassingFile> beside;  ///< Of a new one.
};

/// Makes `text` the whole content of a file.
/// @return false, with nothing changed, when the file may not be written or there is no room for the text.
bool saveFile(const std::string& file, std::string_view text);

/// @return where the text lies that a program was writing in place when it was killed; empty where the file holds it.
std::optional<std::string> interruptedSaveOf(const std::string& file);

/// @return true when there is something of that name that can be opened; a pipe is not waited for.
bool isThere(const std::string& file);
