// A small HTTP server on 127.0.0.1 for tests of the URL fetch: it answers
// every request the way the test sets (a body, a status, silence, an
// answer held back until the test releases it, or a closed connection) and
// notes the request lines it saw. It runs on a thread of its own until
// destroyed.
#pragma once

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace httptest {

class Server {
public:
    enum class Mode { answer, silent, held, hangUp };

    Server() {
        listener_ = ::socket(AF_INET, SOCK_STREAM, 0);
        int yes = 1;
        ::setsockopt(listener_, SOL_SOCKET, SO_REUSEADDR, &yes, sizeof yes);
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        address.sin_port = 0;
        ::bind(listener_, reinterpret_cast<sockaddr*>(&address), sizeof address);
        ::listen(listener_, 16);
        socklen_t length = sizeof address;
        ::getsockname(listener_, reinterpret_cast<sockaddr*>(&address), &length);
        port_ = ntohs(address.sin_port);
        thread_ = std::thread([this] { serve(); });
    }

    ~Server() {
        stop_ = true;
        thread_.join();
        for (int s : held_) ::close(s);
        for (const Waiting& w : waiting_) ::close(w.socket);
        ::close(listener_);
    }

    int port() const { return port_; }
    std::string url(const std::string& path) const { return "http://127.0.0.1:" + std::to_string(port_) + path; }

    // What the next requests get.
    void answer(std::string body, int status = 200, std::string reason = "OK") {
        std::lock_guard<std::mutex> lock(lock_);
        mode_ = Mode::answer;
        body_ = std::move(body);
        status_ = status;
        reason_ = std::move(reason);
    }
    void beSilent() { setMode(Mode::silent); }
    // The next requests get the answer set by `answer` only once released.
    void holdAnswers() { setMode(Mode::held); }
    void release() { released_.store(true); }
    bool released() const { return released_.load(); }
    void hangUp() { setMode(Mode::hangUp); }

    // The request lines seen: "GET /tdversioncheck?v=3 HTTP/1.1".
    std::vector<std::string> requests() const {
        std::lock_guard<std::mutex> lock(lock_);
        return requests_;
    }

private:
    void setMode(Mode mode) {
        std::lock_guard<std::mutex> lock(lock_);
        mode_ = mode;
    }

    void serve() {
        while (!stop_) {
            if (released_.load()) answerHeld();
            pollfd p{listener_, POLLIN, 0};
            if (::poll(&p, 1, 20) <= 0) continue;
            const int s = ::accept(listener_, nullptr, nullptr);
            if (s < 0) continue;
            handle(s);
        }
    }

    void handle(int s) {
        // The request's head, up to the blank line.
        std::string head;
        const auto until = std::chrono::steady_clock::now() + std::chrono::seconds(5);
        while (head.find("\r\n\r\n") == std::string::npos && std::chrono::steady_clock::now() < until && !stop_) {
            pollfd p{s, POLLIN, 0};
            if (::poll(&p, 1, 20) <= 0) continue;
            char buffer[1024];
            const ssize_t n = ::recv(s, buffer, sizeof buffer, 0);
            if (n <= 0) break;
            head.append(buffer, std::size_t(n));
        }
        Mode mode;
        std::string response;
        {
            std::lock_guard<std::mutex> lock(lock_);
            requests_.push_back(head.substr(0, head.find("\r\n")));
            mode = mode_;
            response = "HTTP/1.1 " + std::to_string(status_) + " " + reason_ + "\r\nContent-Type: text/plain\r\n" +
                       "Content-Length: " + std::to_string(body_.size()) + "\r\nConnection: close\r\n\r\n" + body_;
        }
        if (mode == Mode::silent) {
            held_.push_back(s);  // open, and never a word
            return;
        }
        if (mode == Mode::held) {
            waiting_.push_back({s, response});
            return;
        }
        if (mode == Mode::answer) send(s, response);
        ::close(s);
    }

    static void send(int s, const std::string& response) {
        std::size_t sent = 0;
        while (sent < response.size()) {
            const ssize_t n = ::send(s, response.data() + sent, response.size() - sent, MSG_NOSIGNAL);
            if (n <= 0) break;
            sent += std::size_t(n);
        }
    }

    void answerHeld() {
        for (const Waiting& w : waiting_) {
            send(w.socket, w.response);
            ::close(w.socket);
        }
        waiting_.clear();
    }

    struct Waiting {
        int socket;
        std::string response;
    };

    int listener_ = -1;
    int port_ = 0;
    std::atomic<bool> stop_{false};
    mutable std::mutex lock_;
    Mode mode_ = Mode::answer;
    std::string body_;
    int status_ = 200;
    std::string reason_ = "OK";
    std::vector<std::string> requests_;
    std::vector<int> held_;
    std::vector<Waiting> waiting_;  // the serving thread's alone
    std::atomic<bool> released_{false};
    std::thread thread_;
};

// A port on 127.0.0.1 that nobody listens on: bound, then closed.
inline int closedPort() {
    const int s = ::socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    ::bind(s, reinterpret_cast<sockaddr*>(&address), sizeof address);
    socklen_t length = sizeof address;
    ::getsockname(s, reinterpret_cast<sockaddr*>(&address), &length);
    ::close(s);
    return ntohs(address.sin_port);
}

}  // namespace httptest
