#include "News.h"

#include "run/announce/RuntimeFolder.h"

#include <nlohmann/json.hpp>

#include <filesystem>
#include <sstream>

namespace {

using Json = nlohmann::json;

constexpr double longRun = 10.0;

std::string textIn(const Json& object, const char* key) {
    return object.is_object() && object.contains(key) && object.at(key).is_string() ? object.at(key).get<std::string>()
                                                                                    : std::string();
}

}  // namespace

News::News(Runs& runs) : runs(runs) {
    take();
}

std::vector<NewsItem> News::take() {
    std::vector<NewsItem> items;
    const Json list = Json::parse(runs.list(), nullptr, false);
    for (const Json& entry : list.at("runs")) {
        follow(entry.at("id").get<std::string>(), entry.value("alive", true), items);
    }
    return items;
}

void News::follow(const std::string& id, bool isAlive, std::vector<NewsItem>& items) {
    Followed& run = followed[id];
    run.isRun = id.starts_with(velmorak::runFilePrefix);
    const std::string text = runs.events(id, run.read).value_or("");
    run.read += text.size();
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) {
        if (const auto item = itemOf(line, run)) {
            items.push_back(*item);
        }
    }
    if (!isAlive && !run.hasEnded && run.read > 0) {
        const std::chrono::duration<double> passed = std::chrono::steady_clock::now() - run.begin;
        if (const auto item = endOf(run, "died", passed.count())) {
            items.push_back(*item);
        }
    }
}

std::optional<NewsItem> News::itemOf(const std::string& line, Followed& run) {
    const Json event = Json::parse(line, nullptr, false);
    const std::string kind = textIn(event, "event");
    if (kind == "began") {
        run.document = std::filesystem::path(textIn(event, "document")).filename().string();
    } else if (kind == "plugin" && textIn(event, "outcome") == "failed" && run.failure.empty()) {
        run.failure = textIn(event, "name") + ": " + textIn(event, "sentence");
    } else if (kind == "message" && !run.isRun) {
        return NewsItem{"Velmorak", textIn(event, "text")};
    } else if (kind == "ended") {
        return endOf(run, textIn(event, "outcome"), event.value("seconds", 0.0));
    }
    return std::nullopt;
}

std::optional<NewsItem> News::endOf(Followed& run, const std::string& outcome, double seconds) {
    run.hasEnded = true;
    const std::string name = run.document.empty() ? "The run" : run.document;
    if (outcome == "failed") {
        return NewsItem{name + " failed", run.failure};
    }
    if (outcome == "died") {
        return NewsItem{name + " ended without a result", "The program that ran it has died."};
    }
    if (seconds >= longRun) {
        return NewsItem{name + (outcome == "stopped" ? " was stopped" : " is done"),
                        "It took " + std::to_string(static_cast<int>(seconds)) + " seconds."};
    }
    return std::nullopt;
}
