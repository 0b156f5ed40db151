// The machine-wide preference store as a map from text keys to byte strings,
// kept in one stored value with an integrity header. Every access takes the
// machine-wide lock for one read, or for one read, change and write: a writer
// always merges with what is stored now.
#pragma once

#include <functional>
#include <map>
#include <string>
#include <string_view>

using PreferenceMap = std::map<std::string, std::string, std::less<>>;

// The stored value as bytes: header (magic, version, CRC-32 and length of the
// body), then the count and each key and value with its length.
std::string encodePreferenceMap(const PreferenceMap& map);
// An empty value is an empty map; a header or body that doesn't check out
// fails with FormatException ("Invalid data format").
PreferenceMap decodePreferenceMap(std::string_view bytes);

// Where the value lives and how it is locked; the machine's own store, or a
// stand-in for tests.
class PreferenceBackend {
public:
    virtual ~PreferenceBackend() = default;
    virtual void lock() = 0;
    virtual void unlock() = 0;
    virtual std::string read() = 0;
    virtual void write(std::string_view bytes) = 0;
};

// The store this process reads and writes: the machine's own
// (platform/PreferenceStorage), unless the process has put a view of it in
// its place.
PreferenceBackend& machinePreferenceBackend();
// The machine's own store, whatever stands in its place.
PreferenceBackend& machineOwnPreferenceBackend();
// Puts `view` in the place of the machine's store for the whole process;
// null puts the machine's own back. The headless panel does this before
// anything reads a preference, so that a run does not depend on the runs
// before it. `view` must outlive its use.
void setProcessPreferenceBackend(PreferenceBackend* view);

// One whole read under the lock.
PreferenceMap readPreferenceMap(PreferenceBackend& backend = machinePreferenceBackend());
// Read, change and write, all under the lock.
void updatePreferenceMap(const std::function<void(PreferenceMap&)>& change,
                         PreferenceBackend& backend = machinePreferenceBackend());
