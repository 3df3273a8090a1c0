#pragma once

namespace velmorak {

/// Names the plug-in whose kind this thread is in, for the case that the program crashes there: a signal handler then
/// writes the name to standard error before the signal takes its usual course.
class CrashNote {
public:
    /// @param title outlives this.
    explicit CrashNote(const char* title);
    ~CrashNote();
    CrashNote(const CrashNote&) = delete;
    CrashNote& operator=(const CrashNote&) = delete;

private:
    const char* outer;  ///< Named before, and again afterwards.
};

/// Takes on the signals of a crash, as far as nobody else has: a checker's handler stays where it is. After the name is
/// written the signal is raised once more, without a handler, so that a core dump is left as ever. May be called any
/// number of times.
void nameCrashes();

}  // namespace velmorak
