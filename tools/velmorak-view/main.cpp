#include "News.h"
#include "Notifier.h"
#include "Server.h"

#include "run/announce/RuntimeFolder.h"

#include <velmorak-view/Help.h>
#include <CLI/CLI.hpp>

#include <fcntl.h>
#include <malloc.h>
#include <spawn.h>
#include <sys/file.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <string>
#include <thread>

namespace {

namespace fs = std::filesystem;

constexpr std::chrono::milliseconds newsPause{500};

struct Options {
    std::string shown;  ///< Document or results folder; may be empty.
    bool staysClosed = false;
    bool watches = false;
    int port = 0;
};

/// @return the results folder of what the user named. @throws std::runtime_error if it is neither.
std::string resultsOf(const std::string& shown) {
    if (shown.empty()) {
        return {};
    }
    std::error_code error;
    const fs::path path = fs::canonical(shown, error);
    if (error) {
        throw std::runtime_error(shown + ": " + error.message());
    }
    if (fs::is_directory(path)) {
        return path.string();
    }
    fs::path results = path;
    results.replace_extension(".results");
    if (!fs::is_directory(results) || fs::is_symlink(results)) {
        throw std::runtime_error(path.string() + " has no results yet: there is no folder " + results.string());
    }
    return results.string();
}

/// @return the folder of the job that the user named; empty if it is none.
std::string jobOf(const std::string& shown) {
    std::error_code error;
    const fs::path path = fs::canonical(shown, error);
    return !error && Jobs::isJob(path) ? path.string() : std::string();
}

void openBrowser(const std::string& address) {
    std::string program = "xdg-open";
    std::string argument = address;
    char* const arguments[] = {program.data(), argument.data(), nullptr};
    pid_t child = 0;
    if (posix_spawnp(&child, program.c_str(), nullptr, nullptr, arguments, environ) == 0) {
        waitpid(child, nullptr, 0);
    } else {
        std::cerr << "velmorak-view: xdg-open cannot be started; open the address in a browser\n";
    }
}

constexpr const char* watchLock = "watch.lock";

/// Held by the one program that watches. @return false if another one does.
bool isOnlyWatcher(const fs::path& folder) {
    const int lock = open((folder / watchLock).c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0600);
    return lock >= 0 && flock(lock, LOCK_EX | LOCK_NB) == 0;
}

/// @param folder in which another program may watch, which then notifies; empty if this one does.
void follow(Runs& runs, const std::string& address, const fs::path& folder, const sigset_t& signals) {
    News news(runs);
    Notifier notifier([address] { openBrowser(address); });
    const timespec pause{0, std::chrono::nanoseconds(newsPause).count()};
    while (sigtimedwait(&signals, nullptr, &pause) < 0) {
        for (const NewsItem& item : news.take()) {
            if (!folder.empty() && velmorak::isLocked(folder / watchLock)) {
                continue;
            }
            notifier.show(item.title, item.sentence);
        }
    }
}

int view(const Options& options, const sigset_t& signals) {
    const fs::path folder = velmorak::runtimeFolder();
    if (options.watches && (folder.empty() || !isOnlyWatcher(folder))) {
        return 0;
    }
    Runs runs(folder);
    const std::string job = jobOf(options.shown);
    Jobs jobs(folder, job);
    Server server(runs, jobs, job.empty() ? resultsOf(options.shown) : "");
    if (!server.bind(options.port)) {
        std::cerr << "velmorak-view: no port of 127.0.0.1 can be used\n";
        return 1;
    }
    if (folder.empty()) {
        std::cerr << "velmorak-view: XDG_RUNTIME_DIR is not set, or its folder velmorak is open to others: runs cannot "
                     "be followed\n";
    }
    std::thread serving([&server] { server.serve(); });
    if (!options.watches) {
        std::cout << server.address() << std::endl;
    }
    if (!options.watches && !options.staysClosed) {
        openBrowser(server.address());
    }
    follow(runs, server.address(), options.watches ? fs::path() : folder, signals);
    server.stop();
    serving.join();
    return 0;
}

/// Most threads answer rarely: freed memory is for all of them, and large blocks go back to the system.
void shareFreedMemory() {
    constexpr int maxBlock = 64 << 10;
    constexpr int keptBytes = 128 << 10;
    mallopt(M_ARENA_MAX, 1);
    mallopt(M_MMAP_THRESHOLD, maxBlock);
    mallopt(M_TRIM_THRESHOLD, keptBytes);
}

}  // namespace

int main(int argc, char** argv) {
    shareFreedMemory();
    Options options;
    CLI::App app("", "velmorak-view");
    app.formatter_fn([](const CLI::App*, const std::string&, CLI::AppFormatMode) { return std::string(helpText); });
    app.add_option("DOCUMENT|RESULTS", options.shown);
    app.add_flag("--no-open", options.staysClosed);
    app.add_flag("--watch", options.watches);
    app.add_option("--port", options.port)->check(CLI::Range(0, 65535));
    app.set_version_flag("--version", VELMORAK_VERSION);
    CLI11_PARSE(app, argc, argv);
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGINT);
    sigaddset(&signals, SIGTERM);
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
    std::signal(SIGPIPE, SIG_IGN);
    try {
        return view(options, signals);
    } catch (const std::exception& error) {
        std::cerr << "velmorak-view: " << error.what() << '\n';
        return 1;
    }
}
