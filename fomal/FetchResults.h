// The URL fetches that an editor's scripts started, waiting for their
// answers. `fetchURL(url, callback)` queues the fetch on the worker and
// notes it here, in the inbox of the editor whose frame called it; the
// editor's idle tick then calls the callback of each finished fetch in that
// editor's frame, with the body as $0, or void and the failure as $1 (the
// application script keeps `coalesce($1, $0)`). A lambda callback names the
// frame it was written in, which has ended by then: it runs with the
// editor's frame as its closure.
//
// When the editor closes, what it still waits for is abandoned: no
// callback runs into its frame, and the worker drops the fetch. When the
// last editor of the process closes, the worker thread is stopped and
// joined, so that nothing of the module runs once the host may unload it.
#pragma once

#include <memory>
#include <vector>

#include "platform/UrlFetch.h"
#include "quol/Frame.h"
#include "quol/Value.h"

namespace Fomal {

class EditorScripts;
class EditorServices;

class FetchResults {
public:
    FetchResults(EditorScripts& scripts, EditorServices& services);
    ~FetchResults();
    FetchResults(const FetchResults&) = delete;
    FetchResults& operator=(const FetchResults&) = delete;

    // Calls back the fetches that have finished, in the order they were
    // started. A failing callback is reported as any failure of an event.
    // Cheap when nothing waits. Editor thread.
    void deliver();
    // How many fetches wait for their answer.
    std::size_t waiting() const { return waiting_.size(); }

    // Starts fetching `url` for the editor whose global frame `frame` is;
    // false when no open editor has that frame.
    static bool start(Quol::Frame& frame, std::string url, const Quol::Value& callback);

private:
    struct Waiting {
        std::shared_ptr<platform::UrlFetch> fetch;
        Quol::Value callback;
    };

    EditorScripts& scripts_;
    EditorServices& services_;
    std::vector<Waiting> waiting_;
};

}  // namespace Fomal
