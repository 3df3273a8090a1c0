#pragma once

#include <QzManager.h>

#include <functional>
#include <string>
#include <vector>

/// The recording library: a second implementation of the door. It computes nothing; it keeps what a small script
/// describes, and writes down every call that it gets.
///
/// Script, one statement a line, words with blanks in double quotes, '#' begins a comment:
///
///     kind NAME GROUP [DIRECTORY]         a kind; the lines below belong to it
///       in NAME [VALUE [DESCRIPTION]]
///       out NAME [DESCRIPTION]
///       about DESCRIPTION                 description of its plug-ins
///       extent WIDTH                      instead of 160
///     example NAME GROUP DIRECTORY
///     document FILE                       what ReadDocument of that file name (without folder) appends
///       plugin KIND NAME X Y [collapsed]
///       bind RECEIVER INPUT SENDER OUTPUT
///     run returns | blocks | deaf         blocks: until Stop, or letRunEnd(); deaf: until letRunEnd()
///
/// Taken from the file that QZ_RECORDING_SCRIPT names, or from setScript(). With QZ_RECORDING_LOG every call is also
/// appended to that file at once, one a line.
namespace recording {

/// Replaces kinds, examples, documents and the way of a run. Not while a manager lives.
void setScript(const std::string& script);

/// Every call so far, in order: "SetFontSize(9, 11)", for a plug-in "Adder1.Connect(a, Adder, sum)", on another thread
/// than the first with " [worker]" behind it.
std::vector<std::string> calls();

/// The calls without those that only ask.
std::vector<std::string> edits();

/// Those whose operation has this name.
std::vector<std::string> callsOf(const std::string& operation);

void forgetCalls();

/// True while Run is being executed.
bool isRunning();

/// Calls this after each value that is set, with the plug-in and the position of the input.
void whenValueIsSet(std::function<void(QzBase&, int)> action);

/// Ends the run that is going on, as if its work was done.
void letRunEnd();

}  // namespace recording
