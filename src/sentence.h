#pragma once

#include <string>

/// Says a sentence on standard error, and tells it the analysis library if that wants to know (QzSentence.h).
/// @param sentence one line, without its end.
void say(const std::string& sentence);
