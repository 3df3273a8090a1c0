#include "PartNumber.h"

#include "Settings.h"

#include <velmorak/Text.h>

#include <array>
#include <charconv>
#include <cstdlib>
#include <optional>
#include <string_view>
#include <system_error>

namespace {

/// A variable in which a batch system gives each process its number.
struct NumberVariable {
    const char* name;
    std::size_t first;  ///< Number of the first process.
};

/// In the order of precedence: the number in an array of jobs comes before the rank in a parallel program, because each
/// job of a Slurm array also has the rank 0.
constexpr std::array variables = {NumberVariable{"SLURM_ARRAY_TASK_ID", 1}, NumberVariable{"SGE_TASK_ID", 1},
                                  NumberVariable{"OMPI_COMM_WORLD_RANK", 0}, NumberVariable{"PMI_RANK", 0},
                                  NumberVariable{"SLURM_PROCID", 0}};

std::optional<std::size_t> numberIn(std::string_view text) {
    std::size_t number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    return error == std::errc() && end == text.data() + text.size() ? std::optional(number) : std::nullopt;
}

/// Grid Engine sets SGE_TASK_ID to "undefined" for a job that is not an array.
std::optional<std::size_t> numberFromEnvironment() {
    for (const NumberVariable& variable : variables) {
        const char* const text = std::getenv(variable.name);
        if (!text || std::string_view(text) == "undefined") {
            continue;
        }
        const std::optional<std::size_t> number = numberIn(text);
        if (!number || *number < variable.first) {
            throw UsageError(std::string(variable.name) + " is " + velmorak::quoted(text) +
                             ", which is not the number of a part; give the number instead of auto");
        }
        return *number - variable.first + 1;
    }
    return std::nullopt;
}

}  // namespace

std::size_t partNumberOf(const std::string& text) {
    if (text != "auto") {
        const std::optional<std::size_t> number = numberIn(text);
        if (!number || *number == 0) {
            throw UsageError("--part " + text + ": expected a number from 1 on, or auto");
        }
        return *number;
    }
    if (const std::optional<std::size_t> number = numberFromEnvironment()) {
        return *number;
    }
    std::string names;
    for (const NumberVariable& variable : variables) {
        names += (names.empty() ? "" : ", ") + std::string(variable.name);
    }
    throw UsageError("--part auto: no batch system has set " + names + "; give the number instead of auto");
}
