#pragma once

#include <string>
#include <string_view>

/// Makes `text` the whole content of a file. Whoever reads the file meanwhile, or after a failure or a power cut, finds
/// either the former content or the new one.
///
/// The text goes to a file beside the target, to the disk, and then takes the target's place. Symbolic links are
/// followed, mode and owner are kept. Where that cannot be done (no right to the folder, a device, another's file) the
/// target is written in place, after room for the whole text has been reserved.
/// @return false, with nothing changed, when the file may not be written or there is no room for the text.
bool saveFile(const std::string& file, std::string_view text);
