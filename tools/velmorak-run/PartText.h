#pragma once

#include "run/parts/JobPlan.h"

#include <cstddef>
#include <string>
#include <vector>

namespace velmorak {

/// Says which files and chunks a part reads, for example "Part 3 of 16, round 1: files 5 to 8 of 20".
std::string whatPartCovers(const JobPlan& plan, std::size_t part);

/// @return numbers of parts, counted from 1: "part 3" or "parts 1-4, 7".
std::string partNames(const std::vector<std::size_t>& parts);

}  // namespace velmorak
