#pragma once

#include <functional>
#include <string>

namespace velmorak {

/// @return the name itself if it is free, else the name followed by the first number, from 1 on, that makes it free.
std::string freeName(const std::string& wanted, const std::function<bool(const std::string&)>& isTaken);

}  // namespace velmorak
