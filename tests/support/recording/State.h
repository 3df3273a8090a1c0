#pragma once

#include "Script.h"

#include <condition_variable>
#include <functional>
#include <mutex>
#include <set>
#include <string>

namespace recording {

/// The current script, and whether a run is active. The script changes only while no manager exists.
class State {
public:
    static State& instance();

    Script script;
    std::function<void(QzBase&, int)> valueIsSet;

    void run();        ///< Returns at once or, if the script says so, after Stop or letRunEnd().
    void letRunEnd();  ///< No effect without a run.
    /// Ends the active run unless it is deaf. Without one, it ends a later run of a thread that exists already.
    void stop();
    bool isRunning();

private:
    State();

    std::mutex mutex;
    std::condition_variable changed;
    bool running = false;
    bool mayEnd = false;
    std::set<std::string> askedToEnd;  ///< Threads that existed at the last stop without a run.
};

}  // namespace recording
