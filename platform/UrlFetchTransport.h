// The platform's HTTP client behind UrlFetch: libcurl on Linux, WinINet on
// Windows. One transport serves the fetch worker while the worker lives,
// one fetch at a time, on the worker's thread.
#pragma once

#include <atomic>
#include <memory>

#include "platform/UrlFetch.h"

namespace platform {

class UrlFetchTransport {
public:
    virtual ~UrlFetchTransport() = default;
    // Runs the fetch to its end and publishes its outcome. Returns early,
    // with a failure, when the fetch is abandoned or `stopping` is set.
    virtual void perform(UrlFetch& fetch, const std::atomic<bool>& stopping) = 0;
    // From another thread while perform runs: makes it return soon. The
    // flags that perform looks at are set before this is called.
    virtual void interrupt() = 0;
};

// The transport of this platform. Failure: "Internet error: " and why.
std::unique_ptr<UrlFetchTransport> makeUrlFetchTransport();

// The user agent the fetches introduce themselves with.
std::string urlFetchUserAgent();

}  // namespace platform
