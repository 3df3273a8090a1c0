#pragma once

#include "run/RunListener.h"
#include "run/announce/ResultJson.h"
#include "store/FileDescriptor.h"

#include <velmorak/Mutex.h>

#include <nlohmann/json_fwd.hpp>

#include <chrono>
#include <filesystem>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace velmorak {

/// Tells the user's other programs about one run: appends its events and results to a file in the runtime folder, and
/// keeps the file locked, so that they see when the program has died. The progress is in a file of its own, which is
/// replaced. Costs a few writes per plug-in, and four per second. While somebody looks, histograms and profiles that
/// are being filled are in another file that is replaced, at most twice a second and for at most 2 % of the time.
///
/// A file that cannot be written ends the announcement, never the run.
/// Threads: every operation may be called on any thread.
class Announcement : public RunListener {
public:
    /// @return null where there is no runtime folder.
    static std::unique_ptr<Announcement> begin();
    ~Announcement() override;

    void began(const Pipeline& run, int threads) override;
    bool isProgressDue() override;
    void progressed(const ProgressNow& progress) override;
    bool isLookDue() override;
    void looked(const std::vector<ResultsSoFar>& results, std::chrono::nanoseconds spent) override;
    bool wantsTables() override { return true; }
    void sawTable(const TableHead& head) override;
    void nodeFinished(const PipelineNode& node, const NodeReport& report) override;
    void ended(const RunReport& report) override;
    /// A line of the run's messages.
    void addMessage(const std::string& line);

private:
    using Clock = std::chrono::steady_clock;

    Announcement(std::filesystem::path path, FileDescriptor file);
    void write(const nlohmann::ordered_json& event);
    void append(const std::string& line) VELMORAK_REQUIRES(mutex);
    void replace(std::string_view ending, const nlohmann::ordered_json& content);
    nlohmann::ordered_json outputsOf(const PipelineNode& node, const NodeReport& report) VELMORAK_REQUIRES(mutex);
    std::optional<DataSpan> spanFor(const PipelineNode& node) const VELMORAK_REQUIRES(mutex);

    const std::filesystem::path path;
    Mutex mutex;
    FileDescriptor file VELMORAK_GUARDED_BY(mutex);
    bool isBroken VELMORAK_GUARDED_BY(mutex) = false;
    std::size_t bytes VELMORAK_GUARDED_BY(mutex) = 0;
    Clock::time_point lastProgress VELMORAK_GUARDED_BY(mutex){};
    Clock::time_point nextLook VELMORAK_GUARDED_BY(mutex){};
    std::set<std::size_t> tables VELMORAK_GUARDED_BY(mutex);  ///< Nodes whose first rows were told.
    const Pipeline* pipeline VELMORAK_GUARDED_BY(mutex) = nullptr;
    std::map<std::string, DataSpan> spans VELMORAK_GUARDED_BY(mutex);  ///< Of what plug-ins have made, by name.
};

}  // namespace velmorak
