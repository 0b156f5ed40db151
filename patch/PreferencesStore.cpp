#include "patch/PreferencesStore.h"

#include <atomic>
#include <memory>
#include <optional>

#include "patch/Chunk.h"
#include "platform/Exceptions.h"
#include "platform/PreferenceStorage.h"

namespace {

constexpr uint32_t kMagic = 0x46455250u;  // "PREF"
constexpr uint32_t kVersion = 1;
constexpr std::size_t kHeaderSize = 16;

void putWord(std::string& out, uint32_t v) {
    for (int i = 0; i < 4; ++i) out += static_cast<char>((v >> (8 * i)) & 0xFF);
}

uint32_t wordAt(std::string_view s, std::size_t at) {
    uint32_t v = 0;
    for (int i = 0; i < 4; ++i) v |= static_cast<uint32_t>(static_cast<unsigned char>(s[at + i])) << (8 * i);
    return v;
}

class MachineBackend : public PreferenceBackend {
public:
    void lock() override { lock_.emplace(); }
    void unlock() override { lock_.reset(); }
    std::string read() override { return platform::readPreferenceValue(); }
    void write(std::string_view bytes) override { platform::writePreferenceValue(bytes); }

private:
    std::optional<platform::PreferenceLock> lock_;
};

class Locked {
public:
    explicit Locked(PreferenceBackend& b) : b_(b) { b_.lock(); }
    ~Locked() { b_.unlock(); }

private:
    PreferenceBackend& b_;
};

}  // namespace

std::string encodePreferenceMap(const PreferenceMap& map) {
    std::string body;
    putWord(body, static_cast<uint32_t>(map.size()));
    for (const auto& [key, value] : map) {
        putWord(body, static_cast<uint32_t>(key.size()));
        body += key;
        putWord(body, static_cast<uint32_t>(value.size()));
        body += value;
    }
    std::string out;
    putWord(out, kMagic);
    putWord(out, kVersion);
    putWord(out, crc32(reinterpret_cast<const uint8_t*>(body.data()), body.size()));
    putWord(out, static_cast<uint32_t>(body.size()));
    return out + body;
}

PreferenceMap decodePreferenceMap(std::string_view bytes) {
    PreferenceMap map;
    if (bytes.empty()) return map;
    if (bytes.size() < kHeaderSize || wordAt(bytes, 0) != kMagic || wordAt(bytes, 4) != kVersion)
        throw FormatException();
    const std::string_view body = bytes.substr(kHeaderSize);
    if (wordAt(bytes, 12) != body.size() ||
        wordAt(bytes, 8) != crc32(reinterpret_cast<const uint8_t*>(body.data()), body.size()))
        throw FormatException();
    std::size_t at = 0;
    auto word = [&]() {
        if (body.size() - at < 4) throw FormatException();
        uint32_t v = wordAt(body, at);
        at += 4;
        return v;
    };
    auto text = [&]() {
        uint32_t n = word();
        if (body.size() - at < n) throw FormatException();
        std::string s(body.substr(at, n));
        at += n;
        return s;
    };
    for (uint32_t count = word(); count > 0; --count) {
        std::string key = text();
        map[std::move(key)] = text();
    }
    if (at != body.size()) throw FormatException();
    return map;
}

namespace {
std::atomic<PreferenceBackend*> processBackend{nullptr};
}  // namespace

PreferenceBackend& machineOwnPreferenceBackend() {
    static MachineBackend backend;
    return backend;
}

PreferenceBackend& machinePreferenceBackend() {
    PreferenceBackend* view = processBackend.load(std::memory_order_acquire);
    return view != nullptr ? *view : machineOwnPreferenceBackend();
}

void setProcessPreferenceBackend(PreferenceBackend* view) { processBackend.store(view, std::memory_order_release); }

PreferenceMap readPreferenceMap(PreferenceBackend& backend) {
    Locked lock(backend);
    return decodePreferenceMap(backend.read());
}

void updatePreferenceMap(const std::function<void(PreferenceMap&)>& change, PreferenceBackend& backend) {
    Locked lock(backend);
    PreferenceMap map = decodePreferenceMap(backend.read());
    change(map);
    backend.write(encodePreferenceMap(map));
}
