// The fetch transport on Windows: WinINet, synchronous on the worker's
// thread, with the request's connect, send and receive time-outs and an
// overall limit checked between reads. Stopping closes the request, its
// connection and the session from the stopping thread, which ends a call
// that waits on them where the system allows; else it ends by its time-out.
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
        HINTERNET connection = nullptr, request = nullptr;
        URL_COMPONENTSA parts{};
        char host[256] = {}, path[2048] = {}, extra[2048] = {};
        parts.dwStructSize = sizeof parts;
        parts.lpszHostName = host;
        parts.dwHostNameLength = sizeof host;
        parts.lpszUrlPath = path;
        parts.dwUrlPathLength = sizeof path;
        parts.lpszExtraInfo = extra;
        parts.dwExtraInfoLength = sizeof extra;
        if (fetch.abandoned() || stopping.load()) {
            failure = "cancelled";
        } else if (!InternetCrackUrlA(fetch.url().c_str(), 0, 0, &parts) ||
                   (parts.nScheme != INTERNET_SCHEME_HTTP && parts.nScheme != INTERNET_SCHEME_HTTPS)) {
            failure = "not a web address";
        } else {
            connection = InternetConnectA(session, host, parts.nPort, nullptr, nullptr, INTERNET_SERVICE_HTTP, 0, 0);
            const std::string target = std::string(path[0] != 0 ? path : "/") + extra;
            DWORD flags = INTERNET_FLAG_RELOAD | INTERNET_FLAG_NO_CACHE_WRITE | INTERNET_FLAG_NO_UI |
                          INTERNET_FLAG_NO_COOKIES | INTERNET_FLAG_PRAGMA_NOCACHE;
            if (parts.nScheme == INTERNET_SCHEME_HTTPS) flags |= INTERNET_FLAG_SECURE;
            if (connection != nullptr)
                request = HttpOpenRequestA(connection, "GET", target.c_str(), nullptr, nullptr, nullptr, flags, 0);
            {
                std::lock_guard<std::mutex> lock(lock_);
                connection_ = connection;
                request_ = request;
            }
            if (request != nullptr) {
                // The request's own time-outs: those of the session do not
                // reach every call on every system.
                InternetSetOptionA(request, INTERNET_OPTION_CONNECT_TIMEOUT, &connect, sizeof connect);
                InternetSetOptionA(request, INTERNET_OPTION_SEND_TIMEOUT, &total, sizeof total);
                InternetSetOptionA(request, INTERNET_OPTION_RECEIVE_TIMEOUT, &total, sizeof total);
            }
            if (request == nullptr || !HttpSendRequestA(request, nullptr, 0, nullptr, 0)) {
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
            }
            if (failure.empty() && !ok) failure = internetText(GetLastError());
        }
        {
            // A session closed by stop() took its children with it.
            std::lock_guard<std::mutex> lock(lock_);
            if (!closedByOther_) {
                if (request != nullptr) InternetCloseHandle(request);
                if (connection != nullptr) InternetCloseHandle(connection);
            }
        }
        {
            std::lock_guard<std::mutex> lock(lock_);
            if (!closedByOther_) InternetCloseHandle(session);
            session_ = connection_ = request_ = nullptr;
        }
        if (ok)
            fetch.succeed(std::move(body));
        else
            fetch.fail(failure);
    }

    void interrupt() override {
        std::lock_guard<std::mutex> lock(lock_);
        if (session_ == nullptr || closedByOther_) return;
        // The innermost first: closing the request ends a call that waits on it.
        if (request_ != nullptr) InternetCloseHandle(request_);
        if (connection_ != nullptr) InternetCloseHandle(connection_);
        InternetCloseHandle(session_);
        closedByOther_ = true;
    }

private:
    std::mutex lock_;
    HINTERNET session_ = nullptr, connection_ = nullptr, request_ = nullptr;
    bool closedByOther_ = false;
};

}  // namespace

std::unique_ptr<UrlFetchTransport> makeUrlFetchTransport() { return std::make_unique<WinInetTransport>(); }

}  // namespace platform
