#include "fomal/FetchResults.h"

#include <algorithm>
#include <mutex>

#include "fomal/EditorScripts.h"
#include "fomal/EditorServices.h"

namespace Fomal {

namespace {

// Every editor's inbox. Editors may tick on more than one thread; the list
// is guarded, the inboxes themselves are their editors' own.
std::mutex& inboxesLock() {
    static std::mutex lock;
    return lock;
}

std::vector<FetchResults*>& inboxes() {
    static std::vector<FetchResults*> all;
    return all;
}

// A lambda names the frame it was written in, and that frame (the one that
// called fetchURL) has ended by the time the answer is delivered: at an
// idle tick no frame but the editor's global one is live. The callback
// runs with the editor's frame in its place, where `::` names lead too.
Quol::Value inEditorFrame(const Quol::Value& callback) {
    const std::string_view v = callback.view();
    if (v.size() < 3 || v[0] != '>' || v[1] != ':') return callback;
    const std::size_t close = v.find(':', 2);
    if (close == std::string_view::npos) return callback;
    return Quol::Value::joined(">", "::", v.substr(close + 1));
}

}  // namespace

FetchResults::FetchResults(EditorScripts& scripts, EditorServices& services) : scripts_(scripts), services_(services) {
    std::lock_guard<std::mutex> lock(inboxesLock());
    inboxes().push_back(this);
}

FetchResults::~FetchResults() {
    for (Waiting& w : waiting_) w.fetch->abandon();
    waiting_.clear();
    bool last = false;
    {
        std::lock_guard<std::mutex> lock(inboxesLock());
        std::vector<FetchResults*>& all = inboxes();
        all.erase(std::remove(all.begin(), all.end(), this), all.end());
        last = all.empty();
    }
    if (last) platform::stopUrlFetching();
}

bool FetchResults::start(Quol::Frame& frame, std::string url, const Quol::Value& callback) {
    FetchResults* inbox = nullptr;
    {
        std::lock_guard<std::mutex> lock(inboxesLock());
        for (FetchResults* r : inboxes())
            if (r->scripts_.started() && static_cast<Quol::Frame*>(&r->scripts_.gui()) == &frame) inbox = r;
    }
    if (inbox == nullptr) return false;
    inbox->waiting_.push_back({platform::UrlFetch::start(std::move(url)), inEditorFrame(callback)});
    return true;
}

void FetchResults::deliver() {
    if (waiting_.empty()) return;
    // Callbacks may start new fetches: take the finished ones out first.
    std::vector<Waiting> done;
    for (auto it = waiting_.begin(); it != waiting_.end();) {
        if (it->fetch->finished()) {
            done.push_back(std::move(*it));
            it = waiting_.erase(it);
        } else {
            ++it;
        }
    }
    for (const Waiting& w : done) {
        if (!scripts_.started()) continue;
        const Quol::Value outcome[2] = {
            w.fetch->succeeded() ? Quol::Value(w.fetch->body()) : Quol::Value(),
            w.fetch->succeeded() ? Quol::Value() : Quol::Value(w.fetch->failure()),
        };
        try {
            Quol::callWith(scripts_.gui(), w.callback, outcome, 2);
        } catch (...) {
            services_.reportFailure(std::current_exception());
        }
    }
}

}  // namespace Fomal
