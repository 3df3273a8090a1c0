#pragma once

#include <QzManager.h>

#include <functional>
#include <string>
#include <vector>

/// The recording library: a second implementation of the interface in qz/. It computes nothing; it holds the objects
/// that a small script describes, and records every call.
///
/// Script: one statement per line, words with spaces in double quotes, comments after '#':
///
///     kind NAME GROUP [DIRECTORY]         a kind; the lines below belong to it
///       in NAME [VALUE [DESCRIPTION]]
///       out NAME [DESCRIPTION]
///       about DESCRIPTION                 description of its plug-ins
///       extent WIDTH                      instead of 160
///     example NAME GROUP DIRECTORY
///     document FILE                       the objects that ReadDocument of that file (name without folder) adds
///       plugin KIND NAME X Y [collapsed]
///       bind RECEIVER INPUT SENDER OUTPUT
///     run returns | blocks | deaf         blocks: until Stop, or letRunEnd(); deaf: until letRunEnd()
///
/// The script comes from the file in QZ_RECORDING_SCRIPT or from setScript(). If QZ_RECORDING_LOG names a file, every
/// call is also appended to it at once, one per line.
namespace recording {

/// Replaces kinds, examples, documents and the behaviour of a run. Not while a manager exists.
void setScript(const std::string& script);

/// Every call so far, in order, such as "SetFontSize(9, 11)" or, for a plug-in, "Adder1.Connect(a, Adder, sum)". Calls
/// on any thread but the first end with " [worker]".
std::vector<std::string> calls();

/// The calls, without those that only read.
std::vector<std::string> edits();

/// The calls of the operation with this name.
std::vector<std::string> callsOf(const std::string& operation);

void forgetCalls();

/// True while Run is being executed.
bool isRunning();

/// Sets a callback, called after each change of a value with the plug-in and the position of the input.
void whenValueIsSet(std::function<void(QzBase&, int)> action);

/// Ends the active run, as if its work were done.
void letRunEnd();

}  // namespace recording
