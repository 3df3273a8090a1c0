#pragma once

#include <velmorak/CompressedFile.h>
#include <velmorak/Failure.h>
#include <velmorak/Run.h>

#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>
#include <utility>

namespace velmorak {

/// Reads a text file, plain or compressed, line by line.
/// Threads: one at a time.
class Lines {
    template <typename Work>
    static auto ofTheFile(Work&& work) {
        try {
            return work();
        } catch (const Failure& failure) {
            throw Failure("file", failure.what());
        }
    }

public:
    /// @param run outlives this.
    /// @throws Failure for the input "file" if the file cannot be opened.
    Lines(const std::filesystem::path& file, const RunContext& run)
        : name(file.string()), in(ofTheFile([&] { return CompressedFile(file); })), run(run) {}

    /// @param line without its line end; valid until the next call.
    /// @return false at the end of the file.
    /// @throws Failure for the input "file" where the file is damaged or a line is longer than 64 MB. Stopped.
    bool next(std::string_view& line) {
        std::size_t end = buffer.find('\n', place);
        for (std::size_t seen = buffer.size() - place; end == std::string::npos && refill();) {
            end = buffer.find('\n', place + seen);
            seen = buffer.size() - place;
        }
        if (end == std::string::npos && place == buffer.size()) {
            return false;
        }
        line = std::string_view(buffer).substr(place, end == std::string::npos ? end : end - place);
        place = end == std::string::npos ? buffer.size() : end + 1;
        line.remove_suffix(line.ends_with('\r') ? 1 : 0);
        ++count;
        return true;
    }

    /// Number of the last line, counted from 1.
    std::uint64_t line() const { return count; }
    /// The place of the last line, for messages.
    std::string where() const { return "\"" + name + "\", line " + std::to_string(count); }
    double fraction() const { return in.fraction(); }

private:
    bool refill() {
        constexpr std::size_t readBytes = std::size_t{1} << 18U;
        constexpr std::size_t maxLineBytes = std::size_t{64} << 20U;
        if (run.isStopping()) {
            throw Stopped();
        }
        buffer.erase(0, std::exchange(place, 0));
        if (buffer.size() > maxLineBytes) {
            throw Failure("file", "\"" + name + "\", line " + std::to_string(count + 1) + ": the line does not end");
        }
        const std::size_t before = buffer.size();
        buffer.resize(before + readBytes);
        const std::size_t more = ofTheFile([&] { return in.read(buffer.data() + before, readBytes); });
        buffer.resize(before + more);
        return more > 0;
    }

    std::string name;
    CompressedFile in;
    const RunContext& run;
    std::string buffer;
    std::size_t place = 0;
    std::uint64_t count = 0;
};

}  // namespace velmorak
