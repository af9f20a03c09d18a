// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// Fetches one page as the logic does, to standard output or to a file: what is measured whole, from its start
// to its end.
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <string>
#include <vector>

#include "app/runtime/Application.h"
#include "app/runtime/Thread.h"
#include "http/HTTPSocket.h"

namespace sorakaze {
namespace {

constexpr int kFailed = 1, kWrongCall = 2, kTimedOut = 3;

struct Console : Host {
    void ShowMessage(const Message& message, std::stop_token) override { std::cerr << message.text << '\n'; }
    std::function<bool()> LeaveMessage(const Message&) override {
        return [] { return true; };
    }
};

struct Task {
    String url;
    FolderItemRef file;
    std::int32_t timeout = 30;
};

bool Put(const std::string& bytes) {
    std::size_t put = 0;
    while (put < bytes.size()) {
        const ssize_t now = write(STDOUT_FILENO, bytes.data() + put, bytes.size() - put);
        if (now < 0) return false;
        put += static_cast<std::size_t>(now);
    }
    return true;
}

int Fetch(const Task& task) {
    HTTPSocket socket;
    socket.Constructor();
    socket.Yield = true;
    if (task.file)
        socket.Get(task.url, task.file, task.timeout);
    else if (!Put(socket.Get(task.url, task.timeout).Bytes()))
        return kFailed;
    if (socket.ErrorCode() == 0) return EXIT_SUCCESS;
    std::cerr << "http_fetch: code " << socket.ErrorCode() << '\n';
    return socket.ErrorCode() == -1 ? kTimedOut : kFailed;
}

int FetchOnThread(const Task& task) {
    int status = kFailed;
    Thread thread;
    thread.RunEvent = [&] { status = Fetch(task); };
    thread.Run();
    App.DoEventsWhile([&] { return thread.State() == Thread::kRunning; });
    return status;
}

int Main(const std::vector<std::string>& arguments) {
    Task task;
    std::vector<std::string> places;
    bool onThread = false;
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        if (arguments[i] == "--on" && i + 1 < arguments.size())
            onThread = arguments[++i] == "thread";
        else if (arguments[i] == "--timeout" && i + 1 < arguments.size())
            task.timeout = std::atoi(arguments[++i].c_str());
        else
            places.push_back(arguments[i]);
    }
    if (places.empty() || places.size() > 2) {
        std::cerr << "usage: http_fetch [--on main|thread] [--timeout SECONDS] URL [FILE]\n";
        return kWrongCall;
    }
    task.url = places[0];
    if (places.size() == 2) task.file = std::make_shared<FolderItem>(places[1]);
    Console console;
    Runtime runtime({std::make_unique<WallClock>(), std::filesystem::current_path(), nullptr, {}}, console);
    return onThread ? FetchOnThread(task) : Fetch(task);
}

}  // namespace
}  // namespace sorakaze

int main(int argc, char** argv) {
    return sorakaze::Main({argv + 1, argv + argc});
}
