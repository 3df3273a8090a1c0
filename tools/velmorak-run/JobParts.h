#pragma once

#include "run/parts/JobFolder.h"

#include <cstddef>
#include <iosfwd>
#include <string>
#include <vector>

std::string numbered(std::size_t count, const std::string& noun);

std::vector<std::size_t> allParts(const velmorak::JobPlan& plan);

/// Of the parts that are asked for.
struct PartsDone {
    std::vector<std::size_t> parts;
    std::vector<std::size_t> missing;
};

/// Lists those that are not done, and why.
PartsDone partsDone(const velmorak::JobFolder& job, const velmorak::JobPlan& plan,
                    const std::vector<std::size_t>& parts, std::ostream& output);
