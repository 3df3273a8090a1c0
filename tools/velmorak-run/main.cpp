#include "Running.h"
#include "StopOnSignal.h"

#include <velmorak/Value.h>

#include <cstdlib>
#include <exception>
#include <iostream>
#include <optional>

int main(int argc, char** argv) {
    StopOnSignal::holdSignals();
    try {
        ExitStatus status = AllDone;
        const std::optional<Order> order = readOrder(argc, argv, status);
        if (!order) {
            return status;
        }
        if (order->threads > 0) {
            setenv("VELMORAK_THREADS", velmorak::textOf(order->threads).c_str(), 1);
        }
        return execute(*order);
    } catch (const std::exception& error) {
        std::cerr << "velmorak-run: " << error.what() << '\n';
        return NotUsable;
    }
}
