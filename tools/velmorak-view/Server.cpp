#include "Server.h"

#include "FilesBelow.h"
#include "Page.h"

#include <httplib.h>
#include <nlohmann/json.hpp>

#include <sys/random.h>
#include <sys/socket.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <stdexcept>
#include <string_view>

namespace {

using Json = nlohmann::ordered_json;

constexpr int threads = 24;
constexpr int maxWaiting = 8;  ///< The other threads answer short requests.
constexpr int backlog = 1024;
constexpr int timeoutSeconds = 5;
constexpr std::chrono::milliseconds maxWait{10000};
constexpr std::size_t maxSentBytes = 1U << 16U;
constexpr const char* extraFolder = "folder";

std::string newToken() {
    std::array<unsigned char, 20> bytes{};
    if (getrandom(bytes.data(), bytes.size(), 0) != static_cast<ssize_t>(bytes.size())) {
        throw std::runtime_error("the system gives no random numbers");
    }
    constexpr std::string_view digits = "0123456789abcdef";
    std::string token;
    for (const unsigned char byte : bytes) {
        token += digits[byte >> 4U];
        token += digits[byte & 0xFU];
    }
    return token;
}

/// Takes the same time wherever the texts differ.
bool isEqual(std::string_view one, std::string_view other) {
    unsigned difference = one.size() == other.size() ? 0 : 1;
    for (std::size_t i = 0; i < std::min(one.size(), other.size()); ++i) {
        difference |= static_cast<unsigned char>(one[i]) ^ static_cast<unsigned char>(other[i]);
    }
    return difference == 0;
}

std::uint64_t numberIn(const httplib::Request& request, const char* parameter) {
    const std::string text = request.get_param_value(parameter);
    std::uint64_t number = 0;
    std::from_chars(text.data(), text.data() + text.size(), number);
    return number;
}

std::string typeOf(std::string_view name) {
    constexpr std::array<std::array<std::string_view, 2>, 12> types{{{".png", "image/png"},
                                                                     {".svg", "image/svg+xml"},
                                                                     {".pdf", "application/pdf"},
                                                                     {".html", "text/html; charset=utf-8"},
                                                                     {".js", "text/javascript; charset=utf-8"},
                                                                     {".css", "text/css; charset=utf-8"},
                                                                     {".json", "application/json"},
                                                                     {".csv", "text/plain; charset=utf-8"},
                                                                     {".txt", "text/plain; charset=utf-8"},
                                                                     {".dat", "text/plain; charset=utf-8"},
                                                                     {".gp", "text/plain; charset=utf-8"},
                                                                     {".md", "text/plain; charset=utf-8"}}};
    for (const auto& [ending, type] : types) {
        if (name.ends_with(ending)) {
            return std::string(type);
        }
    }
    return "application/octet-stream";
}

void refuse(httplib::Response& response, int status) {
    response.status = status;
    response.set_content(status == 404 ? "not found\n" : "refused\n", "text/plain");
}

void sendJson(httplib::Response& response, const std::string& text) {
    response.set_content(text, "application/json");
}

}  // namespace

Server::Server(Runs& runs, Jobs& jobs, std::string results)
    : runs(runs),
      jobs(jobs),
      results(std::move(results)),
      token(newToken()),
      http(std::make_unique<httplib::Server>()) {
    http->new_task_queue = [] { return new httplib::ThreadPool(threads); };
    http->set_keep_alive_max_count(1);  // An idle connection would keep a thread.
    http->set_read_timeout(timeoutSeconds);
    http->set_write_timeout(timeoutSeconds);
    http->set_payload_max_length(0);
    http->set_default_headers({{"X-Content-Type-Options", "nosniff"},
                               {"Referrer-Policy", "no-referrer"},
                               {"Cross-Origin-Resource-Policy", "same-origin"},
                               {"Cache-Control", "no-store"}});
    http->set_pre_routing_handler([this](const Request& request, Response& response) {
        if (isAllowed(request)) {
            return httplib::Server::HandlerResponse::Unhandled;
        }
        refuse(response, 403);
        return httplib::Server::HandlerResponse::Handled;
    });
    http->Get("/.*", [this](const Request& request, Response& response) { answer(request, response); });
}

Server::~Server() = default;

bool Server::bind(int wanted) {
    int socket = -1;
    http->set_socket_options([&socket](int opened) { socket = opened; });
    port = wanted == 0 ? http->bind_to_any_port("127.0.0.1") : (http->bind_to_port("127.0.0.1", wanted) ? wanted : -1);
    if (port <= 0) {
        return false;
    }
    // Many requests at once wait here for a thread.
    return ::listen(socket, backlog) == 0;
}

std::string Server::address() const {
    return "http://127.0.0.1:" + std::to_string(port) + "/" + token + "/";
}

void Server::serve() {
    http->listen_after_bind();
}

void Server::stop() {
    isStopping = true;
    http->stop();
}

bool Server::isAllowed(const Request& request) const {
    const std::string own = ":" + std::to_string(port);
    const std::string host = request.get_header_value("Host");
    const bool isOwnHost = host == "127.0.0.1" + own || host == "localhost" + own;
    const std::string origin = request.get_header_value("Origin");
    const bool isOwnOrigin = origin.empty() || origin == "http://" + host;
    const std::string site = request.get_header_value("Sec-Fetch-Site");
    const bool isOwnSite = site.empty() || site == "same-origin" || site == "none";
    const bool isReading = request.method == "GET" || request.method == "HEAD";
    const std::size_t end = request.path.find('/', 1);
    const bool hasToken = end != std::string::npos && isEqual(std::string_view(request.path).substr(1, end - 1), token);
    return isOwnHost && isOwnOrigin && isOwnSite && isReading && hasToken;
}

void Server::answer(const Request& request, Response& response) {
    const std::string path = request.path.substr(token.size() + 2);
    if (path.starts_with("api/")) {
        answerQuestion(path.substr(4), request, response);
    } else if (path.starts_with("file/")) {
        sendFile(path.substr(5), response);
    } else if (const std::string_view* const part = partOfPage(path.empty() ? "index.html" : path)) {
        response.set_header("Content-Security-Policy",
                            "default-src 'none'; script-src 'self'; style-src 'self'; img-src 'self' data: blob:; "
                            "connect-src 'self'; base-uri 'none'; form-action 'none'; frame-ancestors 'none'");
        response.set_content(std::string(*part), typeOf(path.empty() ? "index.html" : path));
    } else {
        refuse(response, 404);
    }
}

void Server::answerQuestion(const std::string& name, const Request& request, Response& response) {
    if (name == "runs") {
        wait(request, response);
    } else if (name == "events") {
        sendEvents(request, response);
    } else if (name == "live") {
        sendLive(request.get_param_value("run"), response);
    } else if (name == "jobs") {
        sendJson(response, jobs.list());
    } else if (name == "files") {
        sendFiles(request.get_param_value("run"), response);
    } else if (name == "start") {
        sendJson(response, Json{{"folder", results}, {"job", jobs.folderShown()}}.dump(-1, ' ', false,
                                                                                       Json::error_handler_t::replace));
    } else {
        refuse(response, 404);
    }
}

/// A request with a version waits for the next one, as long as threads are free.
void Server::wait(const Request& request, Response& response) {
    if (request.has_param("look")) {
        runs.noteLook();
    }
    const bool mayWait = request.has_param("version") && ++waiting <= maxWaiting;
    const auto longest = mayWait ? maxWait : std::chrono::milliseconds(0);
    sendJson(response, runs.waitFor(numberIn(request, "version"), longest, [this] { return isStopping.load(); }));
    if (request.has_param("version")) {
        --waiting;
    }
}

void Server::sendEvents(const Request& request, Response& response) const {
    const std::uint64_t from = numberIn(request, "from");
    if (const auto text = runs.events(request.get_param_value("run"), from)) {
        response.set_header("X-Next", std::to_string(from + text->size()));
        response.set_content(*text, "text/plain; charset=utf-8");
    } else {
        refuse(response, 404);
    }
}

void Server::sendLive(const std::string& id, Response& response) const {
    if (const auto text = runs.live(id)) {
        sendJson(response, *text);
    } else {
        refuse(response, 404);
    }
}

std::string Server::folderOf(const std::string& id) {
    return id == extraFolder ? results : runs.resultsOf(id).value_or("");
}

void Server::sendFiles(const std::string& id, Response& response) {
    const std::string folder = folderOf(id);
    if (folder.empty()) {
        refuse(response, 404);
        return;
    }
    Json all = Json::array();
    for (const FilesBelow::Entry& entry : FilesBelow(folder).list()) {
        all.push_back({{"name", entry.name}, {"size", entry.size}, {"time", entry.milliseconds}});
    }
    sendJson(response, all.dump(-1, ' ', false, Json::error_handler_t::replace));
}

/// A page or picture of the results is shown without the rights of this server's own page.
void Server::sendFile(const std::string& idAndName, Response& response) {
    const std::size_t end = idAndName.find('/');
    const std::string folder = end == std::string::npos ? "" : folderOf(idAndName.substr(0, end));
    const auto file = folder.empty() ? nullptr : FilesBelow(folder).open(idAndName.substr(end + 1));
    if (!file) {
        refuse(response, 404);
        return;
    }
    response.set_header("Content-Security-Policy",
                        "sandbox; default-src 'none'; style-src 'unsafe-inline'; img-src data:; font-src data:");
    if (file->size() == 0) {
        response.set_content("", typeOf(idAndName));
        return;
    }
    response.set_content_provider(file->size(), typeOf(idAndName),
                                  [file](std::size_t offset, std::size_t length, httplib::DataSink& sink) {
                                      const std::string piece = file->read(offset, std::min(length, maxSentBytes));
                                      return !piece.empty() && sink.write(piece.data(), piece.size());
                                  });
}
