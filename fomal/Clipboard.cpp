#include "fomal/Clipboard.h"

namespace Fomal {

namespace {

class ProcessClipboard : public Clipboard {
public:
    std::optional<std::string> read() override { return text_; }
    void write(std::string_view text) override { text_ = std::string(text); }

private:
    std::optional<std::string> text_;
};

ProcessClipboard& processClipboard() {
    static ProcessClipboard clipboard;
    return clipboard;
}

thread_local Clipboard* platformClipboard = nullptr;

}  // namespace

Clipboard& Clipboard::system() { return platformClipboard != nullptr ? *platformClipboard : processClipboard(); }

void Clipboard::setSystem(Clipboard* clipboard) { platformClipboard = clipboard; }

Clipboard* Clipboard::current() { return platformClipboard; }

}  // namespace Fomal
