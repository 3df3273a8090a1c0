#include "Xvfb.h"

#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <stdexcept>
#include <string>

namespace {

/// Never returns. The server writes the number of its display to `ready`.
[[noreturn]] void becomeServer(int ready) {
    prctl(PR_SET_PDEATHSIG, SIGTERM);
    const int nowhere = open("/dev/null", O_WRONLY);
    dup2(nowhere, STDERR_FILENO);
    const std::string channel = std::to_string(ready);
    execlp("Xvfb", "Xvfb", "-displayfd", channel.c_str(), "-screen", "0", "1280x1024x24", "-nolisten", "tcp", nullptr);
    _exit(127);
}

std::string readLine(int channel) {
    std::string line;
    for (char letter = 0; read(channel, &letter, 1) == 1 && letter != '\n';) {
        line += letter;
    }
    return line;
}

}  // namespace

Xvfb::Xvfb() {
    int channel[2];
    if (pipe(channel) != 0) {
        throw std::runtime_error("no pipe for Xvfb");
    }
    server = fork();
    if (server == 0) {
        close(channel[0]);
        becomeServer(channel[1]);
    }
    close(channel[1]);
    const std::string number = readLine(channel[0]);
    close(channel[0]);
    if (number.empty()) {
        throw std::runtime_error("Xvfb does not start; is it installed?");
    }
    setenv("DISPLAY", (':' + number).c_str(), 1);
}

Xvfb::~Xvfb() {
    kill(server, SIGTERM);
    waitpid(server, nullptr, 0);
}
