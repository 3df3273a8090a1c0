#include "RunCommand.h"
#include "StandardOutput.h"
#include "StopOnSignal.h"

#include "run/NodeError.h"
#include "run/Visible.h"

#include <velmorak/Value.h>

#include <cstdlib>
#include <exception>
#include <iostream>
#include <optional>

int main(int argc, char** argv) {
    StopOnSignal::holdSignals();
    try {
        ExitStatus status = AllDone;
        const std::optional<Options> order = readOrder(argc, argv, status);
        if (!order) {
            return status;
        }
        if (order->threads > 0) {
            setenv("VELMORAK_THREADS", velmorak::textOf(order->threads).c_str(), 1);
        }
        StopOnSignal signals(order->timeoutSeconds);
        StandardOutput output;
        status = execute(*order, signals, output.stream());
        if (!output.isComplete()) {
            std::cerr << "velmorak-run: standard output cannot be written\n";
            status = status == AllDone ? NotUsable : status;
        }
        return status;
    } catch (const std::exception&) {
        std::cerr << "velmorak-run: " << velmorak::visible(velmorak::errorOf(std::current_exception()).sentence)
                  << '\n';
        return NotUsable;
    }
}
