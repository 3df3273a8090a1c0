#pragma once

#include <filesystem>
#include <string>
#include <string_view>

/// The folder in which programs of one user tell each other what they do: $XDG_RUNTIME_DIR/velmorak. docs/view.md
/// describes its files.
namespace velmorak {

inline constexpr std::string_view runFilePrefix = "run-";
inline constexpr std::string_view messageFilePrefix = "messages-";
inline constexpr std::string_view jobFilePrefix = "job-";
inline constexpr std::string_view announcementEnding = ".jsonl";
inline constexpr std::string_view progressEnding = ".progress";
inline constexpr std::string_view liveEnding = ".live";

/// @return the folder, which exists, belongs to the user and is closed to others; empty if there is none.
std::filesystem::path runtimeFolder();

/// Whether a program that still runs has the file open and locked.
bool isLocked(const std::filesystem::path& file);

/// Removes the files of ended programs, except for the newest.
void removeOldAnnouncements(const std::filesystem::path& folder);

/// Tells of a job in many parts, whose folder has its plan. Never throws: the job goes on.
void announceJob(const std::filesystem::path& job) noexcept;

/// Notes that somebody looks at the runs now. Called again every few seconds, as long as that is so.
void noteLook(const std::filesystem::path& folder);

/// Whether somebody looks: the last note is at most fifteen seconds old.
bool isLookedAt(const std::filesystem::path& folder);

/// Tells of a sentence that belongs to no run, such as a value that was refused. Never throws: the user has seen the
/// sentence on standard error.
void announceMessage(const std::string& sentence) noexcept;

/// @return milliseconds since 1970.
long long millisecondsNow();

}  // namespace velmorak
