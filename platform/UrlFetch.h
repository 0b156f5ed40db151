// Fetching a URL in the background. A fetch runs on the process's fetch
// worker thread, never on the caller's: starting one only queues it. The
// asker and the worker share the fetch by an atomically counted reference;
// the worker publishes the outcome once, and the asker looks at it when it
// likes (an editor at its next idle tick). A fetch that nobody waits for
// any more is abandoned: the worker stops it soon and drops it.
//
//   std::shared_ptr<platform::UrlFetch> f = platform::UrlFetch::start(url);
//   ...
//   if (f->finished()) use(f->succeeded() ? f->body() : f->failure());
//
// The transfer has time-outs of its own, so a server that never answers
// ends as a failure. Failures read "Internet error: " and the service's
// text (the client's own message, or the HTTP status and its reason).
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

namespace platform {

struct UrlFetchOptions {
    // Establishing the connection (name lookup included).
    std::uint32_t connectTimeoutMs = 10000;
    // The whole exchange, from the start to the last byte.
    std::uint32_t totalTimeoutMs = 20000;
    // A longer body is a failure: the answers fetched here are small.
    std::size_t maxBodyBytes = 1u << 20;
};

class UrlFetch {
public:
    enum class State { pending, succeeded, failed };

    // Queues the fetch on the worker, starting the worker when it is not
    // running. Cheap: the caller never waits for the network.
    static std::shared_ptr<UrlFetch> start(std::string url, const UrlFetchOptions& options = UrlFetchOptions());

    const std::string& url() const { return url_; }
    const UrlFetchOptions& options() const { return options_; }

    State state() const { return state_.load(std::memory_order_acquire); }
    bool finished() const { return state() != State::pending; }
    bool succeeded() const { return state() == State::succeeded; }
    // Read only once finished: the body of a success, the message of a failure.
    const std::string& body() const { return body_; }
    const std::string& failure() const { return failure_; }
    // The failure as the exception that carries its message (xInternetException).
    [[noreturn]] void rethrow() const;

    // Nobody waits for this fetch any more: the worker stops it soon.
    void abandon() { abandoned_.store(true, std::memory_order_release); }
    bool abandoned() const { return abandoned_.load(std::memory_order_acquire); }

    // Worker side: publishes the outcome, once.
    void succeed(std::string body);
    void fail(std::string serviceText);

    UrlFetch(std::string url, const UrlFetchOptions& options) : url_(std::move(url)), options_(options) {}
    UrlFetch(const UrlFetch&) = delete;
    UrlFetch& operator=(const UrlFetch&) = delete;

private:
    std::string url_;
    UrlFetchOptions options_;
    std::string body_, failure_;
    std::atomic<State> state_{State::pending};
    std::atomic<bool> abandoned_{false};
};

// Abandons every fetch in flight and ends the worker thread, never waiting
// for the network: a request under way is left to end on its own, its
// outcome dropped. Called when the last editor closes, so that closing is
// quick and the worker is gone when a host unloads the module (what is
// left of a request holds the module until it ends); a later fetch starts
// the worker again.
void stopUrlFetching();
// Whether the worker thread exists now.
bool urlFetchWorkerRunning();

// The failure text as fetches report it.
std::string internetErrorText(const std::string& serviceText);

}  // namespace platform
