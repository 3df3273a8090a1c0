#pragma once

#include "Order.h"

/// Does what the command line asks for. @throws UsageError
ExitStatus execute(const Order& order);
