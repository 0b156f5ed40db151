// What the startup bank sees of one instance: the stamps and copies of its
// sixteen program slots, read from the bank's timer thread.
#pragma once

#include "patch/StartupBank.h"
#include "plugin/PluginCore.h"

class PluginBankSlots : public BankSlots {
public:
    explicit PluginBankSlots(PluginCore& core) : core_(core) {}

    uint32_t slotStamp(int slot) const override {
        VersionedCell<NorvelleProgram>& cell = core_.programSlot(slot);
        NorvelleProgram* record = cell.acquire();
        const uint32_t stamp = record->stamp();
        cell.release(record);
        return stamp;
    }

    NorvelleProgram slotProgram(int slot) const override {
        VersionedCell<NorvelleProgram>& cell = core_.programSlot(slot);
        NorvelleProgram* record = cell.acquire();
        NorvelleProgram copy(*record);
        cell.release(record);
        return copy;
    }

    int currentSlot() const override { return core_.currentProgram(); }

private:
    PluginCore& core_;
};
