// The fetch transport on Windows: WinINet, synchronous on the worker's
// thread, with the session's connect, send and receive time-outs and an
// overall limit checked between reads. Stopping closes the session from
// the stopping thread, which ends the call that waits inside it.
#include <windows.h>
#include <wininet.h>

#include <mutex>
#include <string>

#include "platform/SystemError.h"
#include "platform/UrlFetchTransport.h"

namespace platform {

namespace {

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

class WinInetTransport : public UrlFetchTransport {
public:
    void perform(UrlFetch& fetch, const std::atomic<bool>& stopping) override {
        const UrlFetchOptions& options = fetch.options();
        const ULONGLONG deadline = GetTickCount64() + options.totalTimeoutMs;
        const std::string agent = urlFetchUserAgent();
        HINTERNET session = InternetOpenA(agent.c_str(), INTERNET_OPEN_TYPE_PRECONFIG, nullptr, nullptr, 0);
        if (session == nullptr) {
            fetch.fail(internetText(GetLastError()));
            return;
        }
        {
            std::lock_guard<std::mutex> lock(lock_);
            session_ = session;
            closedByOther_ = false;
        }
        DWORD connect = options.connectTimeoutMs, total = options.totalTimeoutMs;
        InternetSetOptionA(session, INTERNET_OPTION_CONNECT_TIMEOUT, &connect, sizeof connect);
        InternetSetOptionA(session, INTERNET_OPTION_SEND_TIMEOUT, &total, sizeof total);
        InternetSetOptionA(session, INTERNET_OPTION_RECEIVE_TIMEOUT, &total, sizeof total);

        std::string failure, body;
        bool ok = false;
        if (!(fetch.abandoned() || stopping.load())) {
            const DWORD flags = INTERNET_FLAG_RELOAD | INTERNET_FLAG_NO_CACHE_WRITE | INTERNET_FLAG_NO_UI |
                                INTERNET_FLAG_NO_COOKIES | INTERNET_FLAG_PRAGMA_NOCACHE;
            HINTERNET request = InternetOpenUrlA(session, fetch.url().c_str(), nullptr, 0, flags, 0);
            if (request == nullptr) {
                failure = internetText(GetLastError());
            } else {
                DWORD status = 0, size = sizeof status;
                HttpQueryInfoA(request, HTTP_QUERY_STATUS_CODE | HTTP_QUERY_FLAG_NUMBER, &status, &size, nullptr);
                if (status >= 400) {
                    char reason[256] = {};
                    DWORD length = sizeof reason - 1;
                    failure = "HTTP " + std::to_string(status);
                    if (HttpQueryInfoA(request, HTTP_QUERY_STATUS_TEXT, reason, &length, nullptr) && length > 0)
                        failure += " " + std::string(reason, length);
                } else {
                    ok = true;
                    char buffer[4096];
                    for (;;) {
                        if (fetch.abandoned() || stopping.load()) {
                            ok = false;
                            failure = "cancelled";
                            break;
                        }
                        if (GetTickCount64() > deadline) {
                            ok = false;
                            failure = internetText(ERROR_INTERNET_TIMEOUT);
                            break;
                        }
                        DWORD read = 0;
                        if (!InternetReadFile(request, buffer, sizeof buffer, &read)) {
                            ok = false;
                            failure = internetText(GetLastError());
                            break;
                        }
                        if (read == 0) break;
                        if (body.size() + read > options.maxBodyBytes) {
                            ok = false;
                            failure = "the response is too large";
                            break;
                        }
                        body.append(buffer, read);
                    }
                }
                std::lock_guard<std::mutex> lock(lock_);
                // A session closed by stop() took its request with it.
                if (!closedByOther_) InternetCloseHandle(request);
            }
        } else {
            failure = "cancelled";
        }
        {
            std::lock_guard<std::mutex> lock(lock_);
            if (!closedByOther_) InternetCloseHandle(session);
            session_ = nullptr;
        }
        if (ok)
            fetch.succeed(std::move(body));
        else
            fetch.fail(failure);
    }

    void interrupt() override {
        std::lock_guard<std::mutex> lock(lock_);
        if (session_ != nullptr && !closedByOther_) {
            InternetCloseHandle(session_);
            closedByOther_ = true;
        }
    }

private:
    std::mutex lock_;
    HINTERNET session_ = nullptr;
    bool closedByOther_ = false;
};

}  // namespace

std::unique_ptr<UrlFetchTransport> makeUrlFetchTransport() { return std::make_unique<WinInetTransport>(); }

}  // namespace platform
