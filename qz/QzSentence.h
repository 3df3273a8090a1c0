#pragma once

/// What a library may export, with C linkage, to learn what the editor itself says on standard error: it is called with
/// each sentence, without its line end. A library shows it where it shows its own; one without this function is not
/// told. Threads: the editor's main thread.
using QzSentenceFunction = void(const char* sentence);

/// Name of the function.
inline constexpr const char* qzSentenceName = "QzSentence";
