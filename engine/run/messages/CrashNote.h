#pragma once

namespace velmorak {

/// Marks the plug-in whose code this thread executes: if the program crashes there, a signal handler writes the title
/// to standard error before the signal takes its usual course.
class CrashNote {
public:
    /// @param title outlives this.
    explicit CrashNote(const char* title);
    ~CrashNote();
    CrashNote(const CrashNote&) = delete;
    CrashNote& operator=(const CrashNote&) = delete;

private:
    const char* outer;  ///< The title before this one, restored afterwards.
};

/// Installs handlers for the signals of a crash, except where one exists, for example that of a sanitizer. After
/// writing the title the signal is raised again without a handler, so that it dumps core as usual. May be called
/// repeatedly.
void nameCrashes();

}  // namespace velmorak
