#pragma once

#include "Jobs.h"
#include "Runs.h"

#include <atomic>
#include <cstdint>
#include <memory>
#include <string>

namespace httplib {
class Server;
struct Request;
struct Response;
}  // namespace httplib

/// Serves the page, the user's runs and the files of their results folders to this machine only. Every address begins
/// with a random token. Requests under another host name, or from pages of another origin, are refused.
class Server {
public:
    /// @param runs and jobs outlive this.
    /// @param results a folder to show besides those of the runs; empty for none.
    Server(Runs& runs, Jobs& jobs, std::string results);
    ~Server();
    Server(const Server&) = delete;
    Server& operator=(const Server&) = delete;

    /// @param wanted port; 0: any. @return false if none can be had.
    bool bind(int wanted);
    /// The address of the page, with its token.
    std::string address() const;
    /// Serves until stop is called.
    void serve();
    void stop();

private:
    using Request = httplib::Request;
    using Response = httplib::Response;

    bool isAllowed(const Request& request) const;
    void answer(const Request& request, Response& response);
    void answerQuestion(const std::string& name, const Request& request, Response& response);
    void sendEvents(const Request& request, Response& response) const;
    void sendLive(const std::string& id, Response& response) const;
    void sendFiles(const std::string& id, Response& response);
    void sendFile(const std::string& idAndName, Response& response);
    void wait(const Request& request, Response& response);
    std::string folderOf(const std::string& id);

    Runs& runs;
    Jobs& jobs;
    const std::string results;
    const std::string token;
    std::unique_ptr<httplib::Server> http;
    int port = 0;
    std::atomic<int> waiting = 0;
    std::atomic<bool> isStopping = false;
};
