#include "simulator/CommandLine.h"
#include "simulator/Console.h"
#include "simulator/Server.h"

#include <poll.h>
#include <signal.h>
#include <sys/signalfd.h>
#include <unistd.h>

#include <cstdio>
#include <string>
#include <system_error>

namespace {

using simulator::Bytes;
using simulator::LogEntry;
using simulator::Server;

void Print(const std::string& text) {
    if (!text.empty()) {
        std::printf("%s\n", text.c_str());
        std::fflush(stdout);
    }
}

void PrintFrame(const LogEntry& entry) {
    std::string text(12, '\0');
    std::snprintf(text.data(), text.size(), "%10.3f", entry.seconds);
    text.resize(10);
    auto append = [&text](auto& bytes) {
        for (std::uint8_t byte : bytes) {
            char digits[4];
            std::snprintf(digits, sizeof digits, " %02X", byte);
            text += digits;
        }
    };
    text += "  >";
    append(entry.request.bytes);
    text += entry.request.good ? "  <" : "  wrong sum";
    append(entry.reply);
    Print(text);
}

// True when it is time to end.
bool RunLines(Server& server, std::string& typed) {
    for (std::size_t end; (end = typed.find('\n')) != std::string::npos;) {
        simulator::ConsoleResult result = RunConsoleCommand(server, std::string_view(typed).substr(0, end));
        typed.erase(0, end + 1);
        Print(result.text);
        if (result.quit) {
            return true;
        }
    }
    return false;
}

void Serve(Server& server, int signals) {
    std::string typed;
    pollfd handles[] = {{signals, POLLIN, 0}, {STDIN_FILENO, POLLIN, 0}};
    for (;;) {
        ::poll(handles, std::size(handles), -1);
        if (handles[0].revents != 0) {
            return;
        }
        if (handles[1].revents == 0) {
            continue;
        }
        char buffer[512];
        ssize_t count = ::read(STDIN_FILENO, buffer, sizeof buffer);
        if (count <= 0) {
            handles[1].fd = -1;  // nobody types any more; the line is served on
        } else if (RunLines(server, typed.append(buffer, static_cast<std::size_t>(count)))) {
            return;
        }
    }
}

}  // namespace

int main(int argc, char** argv) {
    simulator::CommandLine line = simulator::ParseCommandLine(argc, argv);
    if (!line.error.empty()) {
        std::fprintf(stderr, "%s\n", line.error.c_str());
        return 2;
    }
    if (line.help) {
        std::fputs(simulator::HelpText().c_str(), stdout);
        return 0;
    }

    // Blocked before the server's thread exists, so that only the handle below sees them.
    sigset_t ending;
    sigemptyset(&ending);
    sigaddset(&ending, SIGINT);
    sigaddset(&ending, SIGTERM);
    sigaddset(&ending, SIGHUP);
    pthread_sigmask(SIG_BLOCK, &ending, nullptr);
    ::signal(SIGPIPE, SIG_IGN);
    int signals = ::signalfd(-1, &ending, SFD_CLOEXEC);

    try {
        Server server(line.config);
        if (line.verbose) {
            server.observe(PrintFrame);
        }
        Print(server.devicePath() + (line.config.portLink.empty() ? "" : " as " + line.config.portLink));
        Serve(server, signals);
    } catch (const std::system_error& error) {
        std::fprintf(stderr, "%s\n", error.what());
        return 1;
    }
    return 0;
}
