#include "run/parts/JobPlan.h"

#include <system_error>

namespace velmorak {

std::vector<std::size_t> JobPlan::partsOf(std::size_t run, std::size_t pass) const {
    std::vector<std::size_t> found;
    for (std::size_t i = 0; i < parts.size(); ++i) {
        if (parts[i].run == run && parts[i].pass == pass) {
            found.push_back(i);
        }
    }
    return found;
}

std::string plannedPath(const std::filesystem::path& file) {
    std::error_code ignored;
    return std::filesystem::absolute(file, ignored).lexically_normal().string();
}

}  // namespace velmorak
