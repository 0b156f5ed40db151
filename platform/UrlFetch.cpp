#include "platform/UrlFetch.h"

#include <condition_variable>
#include <deque>
#include <mutex>

#include "platform/BuildInfo.h"
#include "platform/Exceptions.h"
#include "platform/OrlThreads/Thread.h"
#include "platform/UrlFetchTransport.h"

namespace platform {

std::string internetErrorText(const std::string& serviceText) {
    return serviceText.empty() ? std::string("Internet error") : "Internet error: " + serviceText;
}

std::string urlFetchUserAgent() {
    const BuildInfo& build = buildInfo();
    return "Tendrane/" + build.version + " (build " + build.number + "; " + build.os + " " + build.cpu + ")";
}

void UrlFetch::succeed(std::string body) {
    if (finished()) return;
    body_ = std::move(body);
    state_.store(State::succeeded, std::memory_order_release);
}

void UrlFetch::fail(std::string serviceText) {
    if (finished()) return;
    failure_ = internetErrorText(serviceText);
    state_.store(State::failed, std::memory_order_release);
}

void UrlFetch::rethrow() const { throw xInternetException(failure_); }

namespace {

// The process's one fetch worker. The thread starts with the first fetch
// and waits for more while it lives; stop() ends it. Starting and stopping
// are serialized by `control_`, the queue between the threads is guarded
// by `queueLock_`.
class FetchWorker {
public:
    ~FetchWorker() { stop(); }

    void add(const std::shared_ptr<UrlFetch>& fetch) {
        std::lock_guard<std::mutex> control(control_);
        if (!thread_) {
            try {
                transport_ = makeUrlFetchTransport();
                stopping_.store(false);
                thread_ = std::make_unique<OrlThreads::Thread>("Url fetch", [this] { run(); });
                thread_->start();
            } catch (const std::exception& e) {
                // Without a worker the fetch can only fail, and it does so now.
                thread_.reset();
                transport_.reset();
                fetch->fail(e.what());
                return;
            }
        }
        {
            std::lock_guard<std::mutex> queue(queueLock_);
            queue_.push_back(fetch);
        }
        wake_.notify_one();
    }

    void stop() {
        std::lock_guard<std::mutex> control(control_);
        if (!thread_) return;
        {
            std::lock_guard<std::mutex> queue(queueLock_);
            stopping_.store(true);
            for (const std::shared_ptr<UrlFetch>& f : queue_) f->abandon();
            if (current_) current_->abandon();
            transport_->interrupt();
        }
        wake_.notify_one();
        try {
            thread_->join();
        } catch (const std::exception&) {
            // Already ended: nothing is left to wait for.
        }
        thread_.reset();
        transport_.reset();
        std::deque<std::shared_ptr<UrlFetch>> left;
        {
            std::lock_guard<std::mutex> queue(queueLock_);
            left.swap(queue_);
        }
        for (const std::shared_ptr<UrlFetch>& f : left) f->fail("cancelled");
    }

    bool running() {
        std::lock_guard<std::mutex> control(control_);
        return thread_ != nullptr;
    }

private:
    void run() {
        for (;;) {
            std::shared_ptr<UrlFetch> fetch;
            {
                std::unique_lock<std::mutex> queue(queueLock_);
                wake_.wait(queue, [this] { return stopping_.load() || !queue_.empty(); });
                if (stopping_.load()) return;
                fetch = queue_.front();
                queue_.pop_front();
                current_ = fetch;
            }
            if (fetch->abandoned())
                fetch->fail("cancelled");
            else
                transport_->perform(*fetch, stopping_);
            // Whatever happened, the fetch ends here.
            fetch->fail("cancelled");
            std::lock_guard<std::mutex> queue(queueLock_);
            current_.reset();
        }
    }

    std::mutex control_;
    std::mutex queueLock_;
    std::condition_variable wake_;
    std::deque<std::shared_ptr<UrlFetch>> queue_;
    std::shared_ptr<UrlFetch> current_;
    std::atomic<bool> stopping_{false};
    std::unique_ptr<UrlFetchTransport> transport_;
    std::unique_ptr<OrlThreads::Thread> thread_;
};

FetchWorker& worker() {
    // Ends with the process (or the module) at the latest; by then the last
    // editor has normally stopped it already.
    static FetchWorker w;
    return w;
}

}  // namespace

std::shared_ptr<UrlFetch> UrlFetch::start(std::string url, const UrlFetchOptions& options) {
    auto fetch = std::make_shared<UrlFetch>(std::move(url), options);
    worker().add(fetch);
    return fetch;
}

void stopUrlFetching() { worker().stop(); }

bool urlFetchWorkerRunning() { return worker().running(); }

}  // namespace platform
