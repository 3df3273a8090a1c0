#pragma once

#include "Script.h"

#include <condition_variable>
#include <functional>
#include <mutex>

namespace recording {

/// The script in use, and whether a run is going on. The script changes only while no manager lives.
class State {
public:
    static State& instance();

    Script script;
    std::function<void(QzBase&, int)> valueIsSet;

    void run();        ///< Returns at once, or after letRunEnd() where the script says that a run blocks.
    void letRunEnd();  ///< Without a run nothing happens.
    bool isRunning();

private:
    State();

    std::mutex mutex;
    std::condition_variable changed;
    bool running = false;
    bool mayEnd = false;
};

}  // namespace recording
