#include "patch/StartupBank.h"

#include "patch/Chunk.h"
#include "patch/FactoryPatches.h"
#include "platform/Exceptions.h"

namespace {

void putWord(std::vector<uint8_t>& out, uint32_t v) {
    for (int i = 0; i < 4; ++i) out.push_back(static_cast<uint8_t>(v >> (8 * i)));
}

uint32_t readWord(const uint8_t*& cursor, const uint8_t* end) {
    if (end - cursor < 4) throw EOFException();
    uint32_t v = static_cast<uint32_t>(cursor[0]) | static_cast<uint32_t>(cursor[1]) << 8 |
                 static_cast<uint32_t>(cursor[2]) << 16 | static_cast<uint32_t>(cursor[3]) << 24;
    cursor += 4;
    return v;
}

NorvelleProgram factoryOrInit(const StartupBank::Factory& factory, int slot) {
    try {
        return factory ? factory(slot) : factoryProgram(slot);
    } catch (const std::exception&) {
        return NorvelleProgram();
    }
}

}  // namespace

std::string encodeStartupBank(std::span<const NorvelleProgram> programs, int currentSlot) {
    std::vector<uint8_t> out;
    putWord(out, static_cast<uint32_t>(programs.size()));
    putWord(out, static_cast<uint32_t>(currentSlot));
    for (const NorvelleProgram& p : programs) appendProgramBlock(out, p);
    return std::string(out.begin(), out.end());
}

int decodeStartupBank(std::string_view bytes, std::span<NorvelleProgram> programs, uint32_t& count) {
    const uint8_t* cursor = reinterpret_cast<const uint8_t*>(bytes.data());
    const uint8_t* end = cursor + bytes.size();
    count = std::min<uint32_t>(readWord(cursor, end), static_cast<uint32_t>(programs.size()));
    const uint32_t current = readWord(cursor, end);
    for (uint32_t i = 0; i < count; ++i) programs[i] = readProgramBlock(cursor, end, true);
    return current < PROGRAM_SLOT_COUNT ? static_cast<int>(current) : 0;
}

StartupBank& StartupBank::process() {
    static StartupBank bank(machinePreferenceBackend());
    return bank;
}

StartupBank::StartupBank(PreferenceBackend& backend, Factory factory)
    : backend_(backend), factory_(std::move(factory)) {}

bool StartupBank::loadStartupBank() {
    std::vector<NorvelleProgram> programs(PROGRAM_SLOT_COUNT);
    int current = 0;
    bool stored = false;
    uint32_t count = 0;
    try {
        PreferenceMap map = readPreferenceMap(backend_);
        auto it = map.find(STORE_KEY);
        if (it != map.end()) {
            current = decodeStartupBank(it->second, programs, count);
            stored = true;
        }
    } catch (const std::exception&) {
        stored = false;  // an unreadable bank counts as a missing one
    }
    if (!stored) {
        count = 0;
        current = 0;
    }
    for (uint32_t i = count; i < PROGRAM_SLOT_COUNT; ++i) programs[i] = factoryOrInit(factory_, static_cast<int>(i));
    std::lock_guard<std::mutex> lock(mutex_);
    programs_ = std::move(programs);
    current_ = current;
    loaded_ = true;
    return stored;
}

void StartupBank::saveStartupBank() {
    std::string bytes;
    {
        std::lock_guard<std::mutex> lock(mutex_);
        bytes = encodeStartupBank(programs_, current_);
    }
    updatePreferenceMap([&](PreferenceMap& map) { map[STORE_KEY] = bytes; }, backend_);
}

NorvelleProgram StartupBank::program(int slot) const {
    std::lock_guard<std::mutex> lock(mutex_);
    return programs_.at(static_cast<std::size_t>(slot));
}

int StartupBank::currentSlot() const {
    std::lock_guard<std::mutex> lock(mutex_);
    return current_;
}

bool StartupBank::changed() const {
    std::lock_guard<std::mutex> lock(mutex_);
    return changed_;
}

int StartupBank::links() const {
    std::lock_guard<std::mutex> lock(mutex_);
    return links_;
}

void StartupBank::attach() {
    bool load;
    {
        std::lock_guard<std::mutex> lock(mutex_);
        load = !loaded_;
        ++links_;
    }
    if (load) loadStartupBank();
}

void StartupBank::detach() {
    bool save;
    {
        std::lock_guard<std::mutex> lock(mutex_);
        save = --links_ == 0 && changed_;
    }
    if (!save) return;
    try {
        saveStartupBank();
        std::lock_guard<std::mutex> lock(mutex_);
        changed_ = false;
    } catch (const std::exception&) {
        // Stored at close; nobody is left to tell.
    }
}

StartupBankLink::StartupBankLink(StartupBank& bank, BankSlots& slots, OrlThreads::TimerService* timers)
    : bank_(bank), slots_(slots), timers_(timers) {
    bank_.attach();
}

StartupBankLink::~StartupBankLink() {
    if (timers_) timers_->cancelAll(this);
    bank_.detach();
}

int StartupBankLink::copyInto(std::span<NorvelleProgram> slots) {
    int current;
    {
        std::lock_guard<std::mutex> lock(bank_.mutex_);
        const std::size_t n = std::min(slots.size(), bank_.programs_.size());
        for (std::size_t i = 0; i < n; ++i) {
            slots[i] = bank_.programs_[i];
            remembered_[i].store(slots[i].stamp());
        }
        current = bank_.current_;
    }
    if (timers_ && !scheduled_) {
        scheduled_ = true;
        timers_->schedule(10, this, FIRST_PASS_TASK);
        timers_->schedule(1000, this, PERIODIC_TASK);
    }
    return current;
}

void StartupBankLink::remember(int slot, uint32_t stamp) { remembered_[static_cast<std::size_t>(slot)].store(stamp); }

void StartupBankLink::poll() {
    for (int i = 0; i < PROGRAM_SLOT_COUNT; ++i) {
        const std::size_t s = static_cast<std::size_t>(i);
        if (slots_.slotStamp(i) == remembered_[s].load()) continue;
        NorvelleProgram copy = slots_.slotProgram(i);
        std::lock_guard<std::mutex> lock(bank_.mutex_);
        bank_.programs_[s] = copy;
        remembered_[s].store(copy.stamp());
        bank_.changed_ = true;
    }
    std::lock_guard<std::mutex> lock(bank_.mutex_);
    if (bank_.changed_) bank_.current_ = slots_.currentSlot();
}

void StartupBankLink::timerFired(int id) {
    poll();
    if (id == PERIODIC_TASK && timers_) timers_->schedule(1000, this, PERIODIC_TASK);
}
