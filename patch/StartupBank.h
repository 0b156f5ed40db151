// The startup bank: the sixteen programs last in use, kept once per process
// and stored on the machine under the preference key TendraneStartupBank. A
// new instance starts from it when the host gives it nothing else.
//
// Each instance links to the process's bank. A periodic task of the link
// compares each of the instance's slot stamps with the one it remembers and
// copies a changed slot into the bank, so the last instance to change a slot
// wins, slot by slot. When the last link of the process goes and something
// changed, the bank is stored.
#pragma once

#include <array>
#include <atomic>
#include <cstdint>
#include <functional>
#include <mutex>
#include <span>
#include <string>
#include <vector>

#include "patch/NorvelleProgram.h"
#include "patch/PreferencesStore.h"
#include "platform/OrlThreads/TimerService.h"

// The stored value: count, current slot, then that many program blocks.
std::string encodeStartupBank(std::span<const NorvelleProgram> programs, int currentSlot);
// Reads the stored programs (as many as programs holds at most) into
// programs, paths kept, and yields the current slot; count gets the number
// read. Throws the chunk's failures.
int decodeStartupBank(std::string_view bytes, std::span<NorvelleProgram> programs, uint32_t& count);

class StartupBank {
public:
    static constexpr const char* STORE_KEY = "TendraneStartupBank";
    using Factory = std::function<NorvelleProgram(int)>;

    // The bank of this process, on the machine's preference store.
    static StartupBank& process();

    explicit StartupBank(PreferenceBackend& backend, Factory factory = {});

    // Reads the stored bank; false (and the factory patches) when it is
    // missing or unreadable. Slots a short stored bank lacks come from the
    // factory patches too. Done once, by the first link.
    bool loadStartupBank();
    // Stores count 16, the current slot and the sixteen programs; failures
    // are the store's.
    void saveStartupBank();

    NorvelleProgram program(int slot) const;
    int currentSlot() const;
    bool changed() const;
    int links() const;

private:
    friend class StartupBankLink;

    void attach();
    void detach();

    PreferenceBackend& backend_;
    Factory factory_;
    mutable std::mutex mutex_;
    std::vector<NorvelleProgram> programs_;
    int current_ = 0;
    bool loaded_ = false;
    bool changed_ = false;
    int links_ = 0;
};

// What an instance shows the bank: its slots. slotStamp and slotProgram are
// called on the timer service's thread; slotProgram must give a whole copy.
class BankSlots {
public:
    virtual ~BankSlots() = default;
    virtual uint32_t slotStamp(int slot) const = 0;
    virtual NorvelleProgram slotProgram(int slot) const = 0;
    virtual int currentSlot() const = 0;
};

class StartupBankLink : private OrlThreads::TimerClient {
public:
    static constexpr int FIRST_PASS_TASK = 1010;  // once, 10 ms after the link is made
    static constexpr int PERIODIC_TASK = 1011;    // every 1000 ms

    // Attaches to the bank (the first link of a process loads it). The
    // periodic task starts with copyInto; without timers, call poll().
    StartupBankLink(StartupBank& bank, BankSlots& slots,
                    OrlThreads::TimerService* timers = &OrlThreads::TimerService::process());
    // Cancels the tasks; the last link of a bank that changed stores it.
    ~StartupBankLink();
    StartupBankLink(const StartupBankLink&) = delete;
    StartupBankLink& operator=(const StartupBankLink&) = delete;

    // Copies the bank's sixteen records into the instance's slots, remembers
    // their stamps, starts the periodic task and yields the bank's current
    // slot.
    int copyInto(std::span<NorvelleProgram> slots);

    // The slot holds a record that counts as unchanged (a song's bank
    // chunk). Call before the record becomes visible in the slot.
    void remember(int slot, uint32_t stamp);

    // One pass of the periodic task.
    void poll();

private:
    void timerFired(int id) override;

    StartupBank& bank_;
    BankSlots& slots_;
    OrlThreads::TimerService* timers_;
    bool scheduled_ = false;
    std::array<std::atomic<uint32_t>, PROGRAM_SLOT_COUNT> remembered_{};
};
