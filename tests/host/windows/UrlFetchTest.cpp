// The WinINet fetch under the Windows loader: stopping the fetch worker
// while a request waits on a server that holds its answer returns before
// the server is allowed to answer (the test's own clock lets it answer
// after ten seconds, long before the fetch's own time-outs), the fetch
// ends as cancelled, and what is left of the request ends on its own once
// the server answers, leaving no thread behind. A fetch after that runs
// as before.
//
//   url_fetch_test
//
// Every failed check prints a line starting with "FAILED"; the exit status
// is the count of them.
#include <winsock2.h>
#include <ws2tcpip.h>
#include <windows.h>

#include <atomic>
#include <chrono>
#include <cstdio>
#include <string>
#include <thread>
#include <vector>

#include "platform/UrlFetch.h"
#include "tests/host/windows/WinTestSupport.h"
#include "tests/support/AnswerLater.h"
#include "tests/support/WaitUntil.h"

using namespace std::chrono_literals;
using namespace wintest;
using testsupport::AnswerLater;
using testsupport::waitUntil;

namespace {

// A server on 127.0.0.1 that reads each request and answers it only once
// released: the answers held back go out then.
class HoldingServer {
public:
    HoldingServer() {
        listener_ = socket(AF_INET, SOCK_STREAM, IPPROTO_TCP);
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        bind(listener_, reinterpret_cast<sockaddr*>(&address), sizeof address);
        listen(listener_, 8);
        int length = sizeof address;
        getsockname(listener_, reinterpret_cast<sockaddr*>(&address), &length);
        port_ = ntohs(address.sin_port);
        thread_ = std::thread([this] { serve(); });
    }
    ~HoldingServer() {
        stop_.store(true);
        thread_.join();
        for (SOCKET s : held_) closesocket(s);
        closesocket(listener_);
    }

    std::string url(const char* path) const { return "http://127.0.0.1:" + std::to_string(port_) + path; }
    int requests() const { return requests_.load(); }
    void release() { released_.store(true); }
    bool released() const { return released_.load(); }

private:
    void serve() {
        while (!stop_.load()) {
            if (released_.load()) {
                const std::string answer =
                    "HTTP/1.1 200 OK\r\nContent-Length: 4\r\nConnection: close\r\n\r\nlate";
                for (SOCKET s : held_) {
                    send(s, answer.data(), int(answer.size()), 0);
                    closesocket(s);
                }
                held_.clear();
            }
            fd_set ready;
            FD_ZERO(&ready);
            FD_SET(listener_, &ready);
            timeval wait{0, 20000};
            if (select(0, &ready, nullptr, nullptr, &wait) <= 0) continue;
            const SOCKET s = accept(listener_, nullptr, nullptr);
            if (s == INVALID_SOCKET) continue;
            std::string head;
            char buffer[1024];
            while (head.find("\r\n\r\n") == std::string::npos) {
                const int n = recv(s, buffer, sizeof buffer, 0);
                if (n <= 0) break;
                head.append(buffer, std::size_t(n));
            }
            held_.push_back(s);
            requests_.fetch_add(1);
        }
    }

    SOCKET listener_ = INVALID_SOCKET;
    int port_ = 0;
    std::atomic<bool> stop_{false}, released_{false};
    std::atomic<int> requests_{0};
    std::vector<SOCKET> held_;  // the serving thread's alone
    std::thread thread_;
};

}  // namespace

int main() {
    setvbuf(stdout, nullptr, _IONBF, 0);
    WSADATA wsa;
    if (WSAStartup(MAKEWORD(2, 2), &wsa) != 0) {
        std::printf("FAILED: no sockets\n");
        return 1;
    }
    const int threadsBefore = threadCount();
    {
        HoldingServer server;
        platform::UrlFetchOptions options;
        options.connectTimeoutMs = 120000;
        options.totalTimeoutMs = 120000;
        const auto fetch = platform::UrlFetch::start(server.url("/tdversioncheck?v=3"), options);
        check(waitUntil([&] { return server.requests() > 0; }, 10s), "the request never reached the server");
        check(!fetch->finished(), "the fetch ended before the server answered");
        {
            AnswerLater clock(server, 10s);
            const ULONGLONG before = GetTickCount64();
            platform::stopUrlFetching();
            const bool first = !server.released();
            std::printf("stopping during a held request: %s the server may answer (%llu ms)\n",
                        first ? "returned before" : "waited until", GetTickCount64() - before);
            check(first, "stopping the fetch worker waited for the server");
        }
        check(!platform::urlFetchWorkerRunning(), "the fetch worker still runs after stopping");
        check(fetch->finished() && fetch->failure() == "Internet error: cancelled",
              "the stopped fetch did not end as cancelled: \"%s\"", fetch->failure().c_str());
        // What is left of the request ends once the server answers, and its
        // answer is dropped.
        server.release();
        const bool gone = waitUntil([&] { return threadCount() <= threadsBefore + 1; }, 10s);
        std::printf("threads: %d before, %d after the server answered\n", threadsBefore, threadCount());
        check(gone, "the request's thread did not end after the server answered");
        check(fetch->failure() == "Internet error: cancelled" && fetch->body().empty(),
              "the late answer reached the stopped fetch");

        // The server answers at once now; a new fetch starts the worker again.
        const auto again = platform::UrlFetch::start(server.url("/again"));
        check(waitUntil([&] { return again->finished(); }, 20s), "the fetch after stopping did not end");
        check(again->succeeded() && again->body() == "late", "the fetch after stopping did not get the answer: %s",
              again->failure().c_str());
        platform::stopUrlFetching();
    }
    check(threadCount() <= threadsBefore, "threads grew from %d to %d", threadsBefore, threadCount());
    WSACleanup();
    if (failedChecks() == 0) std::printf("passed: the fetch worker stops without waiting for the network\n");
    return failedChecks();
}
