#pragma once

#include "Script.h"

#include <condition_variable>
#include <functional>
#include <mutex>
#include <set>
#include <string>

namespace recording {

/// The script in use, and whether a run is going on. The script changes only while no manager lives.
class State {
public:
    static State& instance();

    Script script;
    std::function<void(QzBase&, int)> valueIsSet;

    void run();        ///< Returns at once, or after letRunEnd() where the script says that a run blocks.
    void letRunEnd();  ///< Without a run nothing happens.
    /// Ends the run that is going on unless it is deaf. Without one, it counts for a run whose thread is there already.
    void stop();
    bool isRunning();

private:
    State();

    std::mutex mutex;
    std::condition_variable changed;
    bool running = false;
    bool mayEnd = false;
    std::set<std::string> askedToEnd;  ///< Threads that were there at the last stop without a run.
};

}  // namespace recording
