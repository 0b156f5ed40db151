// The fetch transport on Linux: libcurl's multi interface, driven by the
// worker in short polls, so that an abandoned fetch or a stopping worker
// ends within one poll however the server behaves.
#include <curl/curl.h>

#include <stdexcept>
#include <string>

#include "platform/UrlFetchTransport.h"

namespace platform {

namespace {

// The longest a running transfer goes without looking at its flags.
constexpr int POLL_MS = 50;

struct Transfer {
    std::string body;
    std::size_t maxBody = 0;
    bool tooLarge = false;
    std::string reason;  // of the last HTTP status line

    static std::size_t write(char* data, std::size_t size, std::size_t count, void* self) {
        Transfer& t = *static_cast<Transfer*>(self);
        const std::size_t n = size * count;
        if (t.body.size() + n > t.maxBody) {
            t.tooLarge = true;
            return 0;  // ends the transfer with a write error
        }
        t.body.append(data, n);
        return n;
    }

    // "HTTP/1.1 404 Not Found\r\n": keeps "Not Found".
    static std::size_t header(char* data, std::size_t size, std::size_t count, void* self) {
        Transfer& t = *static_cast<Transfer*>(self);
        const std::size_t n = size * count;
        std::string line(data, n);
        if (line.compare(0, 5, "HTTP/") == 0) {
            while (!line.empty() && (line.back() == '\r' || line.back() == '\n')) line.pop_back();
            const std::size_t code = line.find(' ');
            const std::size_t reason = code == std::string::npos ? std::string::npos : line.find(' ', code + 1);
            t.reason = reason == std::string::npos ? std::string() : line.substr(reason + 1);
        }
        return n;
    }
};

class CurlTransport : public UrlFetchTransport {
public:
    CurlTransport() {
        if (curl_global_init(CURL_GLOBAL_DEFAULT) != CURLE_OK) throw std::runtime_error(internetErrorText("the client did not start"));
        multi_ = curl_multi_init();
        if (multi_ == nullptr) {
            curl_global_cleanup();
            throw std::runtime_error(internetErrorText("the client did not start"));
        }
    }
    ~CurlTransport() override {
        curl_multi_cleanup(multi_);
        curl_global_cleanup();
    }

    void perform(UrlFetch& fetch, const std::atomic<bool>& stopping) override {
        CURL* easy = curl_easy_init();
        if (easy == nullptr) {
            fetch.fail("the client could not make a request");
            return;
        }
        Transfer t;
        t.maxBody = fetch.options().maxBodyBytes;
        char error[CURL_ERROR_SIZE] = {};
        const std::string agent = urlFetchUserAgent();
        curl_easy_setopt(easy, CURLOPT_URL, fetch.url().c_str());
        curl_easy_setopt(easy, CURLOPT_NOSIGNAL, 1L);
        // A name lookup still running when the fetch is dropped is left to
        // end on its own: closing the editor never waits for the resolver.
        curl_easy_setopt(easy, CURLOPT_QUICK_EXIT, 1L);
        curl_easy_setopt(easy, CURLOPT_FOLLOWLOCATION, 1L);
        curl_easy_setopt(easy, CURLOPT_MAXREDIRS, 5L);
        curl_easy_setopt(easy, CURLOPT_PROTOCOLS_STR, "http,https");
        curl_easy_setopt(easy, CURLOPT_REDIR_PROTOCOLS_STR, "http,https");
        curl_easy_setopt(easy, CURLOPT_CONNECTTIMEOUT_MS, long(fetch.options().connectTimeoutMs));
        curl_easy_setopt(easy, CURLOPT_TIMEOUT_MS, long(fetch.options().totalTimeoutMs));
        curl_easy_setopt(easy, CURLOPT_USERAGENT, agent.c_str());
        curl_easy_setopt(easy, CURLOPT_ACCEPT_ENCODING, "");
        curl_easy_setopt(easy, CURLOPT_ERRORBUFFER, error);
        curl_easy_setopt(easy, CURLOPT_WRITEFUNCTION, &Transfer::write);
        curl_easy_setopt(easy, CURLOPT_WRITEDATA, &t);
        curl_easy_setopt(easy, CURLOPT_HEADERFUNCTION, &Transfer::header);
        curl_easy_setopt(easy, CURLOPT_HEADERDATA, &t);

        bool cancelled = false;
        CURLcode result = CURLE_OK;
        if (curl_multi_add_handle(multi_, easy) != CURLM_OK) {
            curl_easy_cleanup(easy);
            fetch.fail("the client could not make a request");
            return;
        }
        for (;;) {
            int running = 0;
            if (curl_multi_perform(multi_, &running) != CURLM_OK) {
                result = CURLE_FAILED_INIT;
                break;
            }
            if (running == 0) {
                int left = 0;
                result = CURLE_FAILED_INIT;
                while (CURLMsg* m = curl_multi_info_read(multi_, &left))
                    if (m->msg == CURLMSG_DONE && m->easy_handle == easy) result = m->data.result;
                break;
            }
            if (fetch.abandoned() || stopping.load()) {
                cancelled = true;
                break;
            }
            curl_multi_poll(multi_, nullptr, 0, POLL_MS, nullptr);
        }
        long status = 0;
        curl_easy_getinfo(easy, CURLINFO_RESPONSE_CODE, &status);
        curl_multi_remove_handle(multi_, easy);
        curl_easy_cleanup(easy);

        if (cancelled) {
            fetch.fail("cancelled");
        } else if (t.tooLarge) {
            fetch.fail("the response is too large");
        } else if (result != CURLE_OK) {
            fetch.fail(error[0] != 0 ? std::string(error) : std::string(curl_easy_strerror(result)));
        } else if (status >= 400) {
            fetch.fail("HTTP " + std::to_string(status) + (t.reason.empty() ? "" : " " + t.reason));
        } else {
            fetch.succeed(std::move(t.body));
        }
    }

    void interrupt() override { curl_multi_wakeup(multi_); }

private:
    CURLM* multi_ = nullptr;
};

}  // namespace

std::unique_ptr<UrlFetchTransport> makeUrlFetchTransport() { return std::make_unique<CurlTransport>(); }

}  // namespace platform
