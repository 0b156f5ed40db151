// The fetch transport on Windows: WinINet. Its calls block, and closing
// their handles from another thread does not end every one of them on
// every system (a name lookup or a connect may go on to its time-out), so
// each exchange runs on a thread of its own while the worker waits for it
// in short slices. An abandoned fetch or a stopping worker leaves the
// exchange at once: the exchange stops at its next step, its thread ends
// when the call it is in returns (by its time-outs at the latest), and its
// outcome is dropped. Its handles are only ever touched by its own thread,
// so no call can meet a handle closed under it, nor one whose value was
// given out again. That thread holds the module while it lives, so that a
// host may unload the plug-in meanwhile; it lets go of the module as its
// very last act.
#include <windows.h>
#include <wininet.h>

#include <atomic>
#include <memory>
#include <mutex>
#include <string>

#include "platform/SystemError.h"
#include "platform/UrlFetchTransport.h"

namespace platform {

namespace {

// The longest the worker goes without looking at its flags.
constexpr DWORD POLL_MS = 20;

// WinINet's own errors have their texts in its module, not the system's.
std::string internetText(DWORD code) {
    if (code >= INTERNET_ERROR_BASE && code <= INTERNET_ERROR_LAST) {
        char* buffer = nullptr;
        const DWORD n = FormatMessageA(FORMAT_MESSAGE_FROM_HMODULE | FORMAT_MESSAGE_ALLOCATE_BUFFER |
                                           FORMAT_MESSAGE_IGNORE_INSERTS,
                                       GetModuleHandleA("wininet.dll"), code, 0, reinterpret_cast<char*>(&buffer),
                                       0, nullptr);
        std::string text = n != 0 && buffer != nullptr ? std::string(buffer, n) : std::string();
        if (buffer != nullptr) LocalFree(buffer);
        while (!text.empty() && (text.back() == '\r' || text.back() == '\n' || text.back() == ' ')) text.pop_back();
        if (!text.empty()) return text;
        return "error " + std::to_string(code);
    }
    return systemErrorText(long(code));
}

// The handles of one exchange, closed with it, the innermost first.
class Handles {
public:
    ~Handles() {
        for (HINTERNET h : {request, connection, session})
            if (h != nullptr) InternetCloseHandle(h);
    }
    HINTERNET session = nullptr, connection = nullptr, request = nullptr;
};

// One request and its answer, shared by the worker and the exchange's
// thread: whichever lets go last frees it. The outcome is written by the
// exchange's thread before it sets `done`, and read only after.
class Exchange {
public:
    Exchange(std::string url, const UrlFetchOptions& options)
        : url_(std::move(url)), options_(options), done_(CreateEventW(nullptr, TRUE, FALSE, nullptr)) {}
    ~Exchange() {
        if (done_ != nullptr) CloseHandle(done_);
    }
    Exchange(const Exchange&) = delete;
    Exchange& operator=(const Exchange&) = delete;

    HANDLE done() const { return done_; }
    bool ok() const { return ok_; }
    std::string& body() { return body_; }
    const std::string& failure() const { return failure_; }

    // On the exchange's thread: the whole request, then `done`.
    void run() {
        {
            Handles handles;
            runRequest(handles);
        }
        SetEvent(done_);
    }

    // From the worker: nobody waits for the outcome any more.
    void cancel() { cancelled_.store(true, std::memory_order_release); }

private:
    bool cancelled() const { return cancelled_.load(std::memory_order_acquire); }

    // Whether the exchange goes on after a step: it stops at a failed one,
    // and at any once cancelled.
    bool goesOn(bool stepDone) {
        if (cancelled()) {
            failure_ = "cancelled";
            return false;
        }
        if (!stepDone) failure_ = internetText(GetLastError());
        return stepDone;
    }

    void runRequest(Handles& h) {
        const ULONGLONG deadline = GetTickCount64() + options_.totalTimeoutMs;
        const std::string agent = urlFetchUserAgent();
        h.session = InternetOpenA(agent.c_str(), INTERNET_OPEN_TYPE_PRECONFIG, nullptr, nullptr, 0);
        if (!goesOn(h.session != nullptr)) return;
        DWORD connect = options_.connectTimeoutMs, total = options_.totalTimeoutMs;
        InternetSetOptionA(h.session, INTERNET_OPTION_CONNECT_TIMEOUT, &connect, sizeof connect);
        InternetSetOptionA(h.session, INTERNET_OPTION_SEND_TIMEOUT, &total, sizeof total);
        InternetSetOptionA(h.session, INTERNET_OPTION_RECEIVE_TIMEOUT, &total, sizeof total);

        URL_COMPONENTSA parts{};
        char host[256] = {}, path[2048] = {}, extra[2048] = {};
        parts.dwStructSize = sizeof parts;
        parts.lpszHostName = host;
        parts.dwHostNameLength = sizeof host;
        parts.lpszUrlPath = path;
        parts.dwUrlPathLength = sizeof path;
        parts.lpszExtraInfo = extra;
        parts.dwExtraInfoLength = sizeof extra;
        if (!InternetCrackUrlA(url_.c_str(), 0, 0, &parts) ||
            (parts.nScheme != INTERNET_SCHEME_HTTP && parts.nScheme != INTERNET_SCHEME_HTTPS)) {
            failure_ = "not a web address";
            return;
        }
        const std::string target = std::string(path[0] != 0 ? path : "/") + extra;
        DWORD flags = INTERNET_FLAG_RELOAD | INTERNET_FLAG_NO_CACHE_WRITE | INTERNET_FLAG_NO_UI |
                      INTERNET_FLAG_NO_COOKIES | INTERNET_FLAG_PRAGMA_NOCACHE;
        if (parts.nScheme == INTERNET_SCHEME_HTTPS) flags |= INTERNET_FLAG_SECURE;
        h.connection = InternetConnectA(h.session, host, parts.nPort, nullptr, nullptr, INTERNET_SERVICE_HTTP, 0, 0);
        if (!goesOn(h.connection != nullptr)) return;
        h.request = HttpOpenRequestA(h.connection, "GET", target.c_str(), nullptr, nullptr, nullptr, flags, 0);
        if (!goesOn(h.request != nullptr)) return;
        // The request's own time-outs: those of the session do not reach
        // every call on every system.
        InternetSetOptionA(h.request, INTERNET_OPTION_CONNECT_TIMEOUT, &connect, sizeof connect);
        InternetSetOptionA(h.request, INTERNET_OPTION_SEND_TIMEOUT, &total, sizeof total);
        InternetSetOptionA(h.request, INTERNET_OPTION_RECEIVE_TIMEOUT, &total, sizeof total);
        if (!goesOn(HttpSendRequestA(h.request, nullptr, 0, nullptr, 0) != FALSE)) return;
        DWORD status = 0, size = sizeof status;
        HttpQueryInfoA(h.request, HTTP_QUERY_STATUS_CODE | HTTP_QUERY_FLAG_NUMBER, &status, &size, nullptr);
        if (status >= 400) {
            char reason[256] = {};
            DWORD length = sizeof reason - 1;
            failure_ = "HTTP " + std::to_string(status);
            if (HttpQueryInfoA(h.request, HTTP_QUERY_STATUS_TEXT, reason, &length, nullptr) && length > 0)
                failure_ += " " + std::string(reason, length);
            return;
        }
        char buffer[4096];
        for (;;) {
            if (GetTickCount64() > deadline) {
                failure_ = internetText(ERROR_INTERNET_TIMEOUT);
                return;
            }
            DWORD read = 0;
            if (!goesOn(InternetReadFile(h.request, buffer, sizeof buffer, &read) != FALSE)) return;
            if (read == 0) break;
            if (body_.size() + read > options_.maxBodyBytes) {
                failure_ = "the response is too large";
                return;
            }
            body_.append(buffer, read);
        }
        ok_ = true;
    }

    const std::string url_;
    const UrlFetchOptions options_;
    HANDLE done_;
    std::atomic<bool> cancelled_{false};
    bool ok_ = false;
    std::string body_, failure_;
};

// What the exchange's thread starts with: its share of the exchange, and
// the module it holds.
struct ThreadStart {
    std::shared_ptr<Exchange> exchange;
    HMODULE module;
};

void runExchange(ThreadStart* start) {
    const std::unique_ptr<ThreadStart> owned(start);
    owned->exchange->run();
}

DWORD WINAPI exchangeThread(void* parameter) {
    auto* start = static_cast<ThreadStart*>(parameter);
    const HMODULE module = start->module;
    // Everything of the exchange is gone before the module may go.
    runExchange(start);
    FreeLibraryAndExitThread(module, 0);
}

// The module this code is in, held once more: the caller lets go of it.
HMODULE holdThisModule() {
    HMODULE module = nullptr;
    if (!GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS, reinterpret_cast<LPCWSTR>(&holdThisModule),
                            &module))
        return nullptr;
    return module;
}

class WinInetTransport : public UrlFetchTransport {
public:
    void perform(UrlFetch& fetch, const std::atomic<bool>& stopping) override {
        if (fetch.abandoned() || stopping.load()) {
            fetch.fail("cancelled");
            return;
        }
        auto exchange = std::make_shared<Exchange>(fetch.url(), fetch.options());
        if (exchange->done() == nullptr || !startThread(exchange)) {
            fetch.fail(internetText(GetLastError()));
            return;
        }
        {
            std::lock_guard<std::mutex> hold(lock_);
            current_ = exchange;
        }
        // The exchange's own limits come first; this one ends an exchange
        // whose calls outlive them.
        const ULONGLONG deadline = GetTickCount64() + fetch.options().totalTimeoutMs + 2000;
        bool finished = false, cancelled = false;
        while (!finished) {
            finished = WaitForSingleObject(exchange->done(), POLL_MS) == WAIT_OBJECT_0;
            if (finished) break;
            if (fetch.abandoned() || stopping.load()) {
                cancelled = true;
                break;
            }
            if (GetTickCount64() > deadline) break;
        }
        {
            std::lock_guard<std::mutex> hold(lock_);
            current_.reset();
        }
        if (!finished) {
            exchange->cancel();
            fetch.fail(cancelled ? std::string("cancelled") : internetText(ERROR_INTERNET_TIMEOUT));
            return;
        }
        if (exchange->ok())
            fetch.succeed(std::move(exchange->body()));
        else
            fetch.fail(exchange->failure());
    }

    void interrupt() override {
        std::lock_guard<std::mutex> hold(lock_);
        if (current_) current_->cancel();
    }

private:
    static bool startThread(const std::shared_ptr<Exchange>& exchange) {
        const HMODULE module = holdThisModule();
        if (module == nullptr) return false;
        auto* start = new ThreadStart{exchange, module};
        const HANDLE thread = CreateThread(nullptr, 0, &exchangeThread, start, 0, nullptr);
        if (thread == nullptr) {
            const DWORD error = GetLastError();
            delete start;
            FreeLibrary(module);
            SetLastError(error);
            return false;
        }
        CloseHandle(thread);
        return true;
    }

    std::mutex lock_;
    std::shared_ptr<Exchange> current_;  // under lock_
};

}  // namespace

std::unique_ptr<UrlFetchTransport> makeUrlFetchTransport() { return std::make_unique<WinInetTransport>(); }

}  // namespace platform
