#include "engine/VoiceManager.h"

#include "engine/Voice.h"

VoiceManager::VoiceManager() = default;

void VoiceManager::resetSlots() {
    for (auto& s : slots_) {
        Voice* v = s.voice;
        s = VoiceSlot{};
        s.voice = v;
    }
    for (auto& c : channels_) c = ChannelState{};
    stateCounts_[Free] = VOICE_COUNT;
    stateCounts_[Released] = stateCounts_[Sustained] = stateCounts_[Held] = 0;
    age_ = 0;
    lowestStale_ = false;
}

void VoiceManager::setState(VoiceSlot& s, uint8_t state) {
    --stateCounts_[s.state];
    s.state = state;
    ++stateCounts_[state];
}

void VoiceManager::dropHeld(const VoiceSlot& s) {
    ChannelState& c = channels_[s.channel];
    if (c.held[s.note] > 0) --c.held[s.note];
    if (s.note == c.lowestNote) lowestStale_ = true;
}

void VoiceManager::recomputeLowest() {
    for (auto& c : channels_) {
        c.lowestNote = NO_NOTE;
        for (int n = 0; n < 128; ++n) {
            if (c.held[n] > 0) {
                c.lowestNote = static_cast<uint8_t>(n);
                break;
            }
        }
    }
    lowestStale_ = false;
}

int VoiceManager::lowestNote(int channel) {
    if (lowestStale_) recomputeLowest();
    return channels_[channel].lowestNote;
}

bool VoiceManager::better(int a, int b) {
    if (lowestStale_) recomputeLowest();
    const VoiceSlot& sa = slots_[a];
    const VoiceSlot& sb = slots_[b];
    const int pa = sa.voice->priority();
    const int pb = sb.voice->priority();
    if (pa != pb) return pa < pb;
    if (sa.state != sb.state) return sa.state < sb.state;
    const int ha = channels_[sa.channel].held[sa.note];
    const int hb = channels_[sb.channel].held[sb.note];
    if (ha != hb) return ha > hb;
    const bool la = sa.note == channels_[sa.channel].lowestNote;
    const bool lb = sb.note == channels_[sb.channel].lowestNote;
    if (la != lb) return !la;
    // Older is better; the difference keeps its sign across the wrap of age.
    return static_cast<int32_t>(sa.stamp - sb.stamp) < 0;
}

void VoiceManager::noteOn(int32_t time, int channel, int note, int velocity) {
    ChannelState& c = channels_[channel];
    if (c.held[note] < 255) ++c.held[note];
    if (note < c.lowestNote) c.lowestNote = static_cast<uint8_t>(note);

    int best = 0;
    for (int i = 1; i < VOICE_COUNT; ++i)
        if (better(i, best)) best = i;

    VoiceSlot& s = slots_[best];
    if (s.state != Free) dropHeld(s);
    s.voice->start(time, channel, note, velocity);
    setState(s, Held);
    s.channel = static_cast<uint8_t>(channel);
    s.note = static_cast<uint8_t>(note);
    s.stamp = age_++;

    while (stateCounts_[Free] < RESERVE) {
        int victim = -1;
        for (int i = 0; i < VOICE_COUNT; ++i) {
            if (slots_[i].state == Free) continue;
            if (victim < 0 || better(i, victim)) victim = i;
        }
        VoiceSlot& v = slots_[victim];
        v.voice->kill();
        setState(v, Free);
        v.stamp = age_++;
        dropHeld(v);
    }
}

void VoiceManager::releaseSlot(VoiceSlot& s, int32_t time, int velocity) {
    s.voice->release(time, velocity);
    setState(s, Released);
}

void VoiceManager::noteOff(int32_t time, int channel, int note, int velocity) {
    VoiceSlot* found = nullptr;
    for (auto& s : slots_) {
        if (s.state != Held || s.channel != channel || s.note != note) continue;
        if (!found || static_cast<int32_t>(s.stamp - found->stamp) < 0) found = &s;
    }
    if (!found) return;
    if (channels_[channel].controllers[64] != 0)
        setState(*found, Sustained);
    else
        releaseSlot(*found, time, velocity);
    found->stamp = age_++;
}

void VoiceManager::controller(int32_t time, int channel, int number, int value) {
    ChannelState& c = channels_[channel];
    switch (number) {
    case 64:
        if (c.controllers[64] != 0 && value == 0) {
            for (auto& s : slots_) {
                if (s.state != Sustained || s.channel != channel) continue;
                releaseSlot(s, time, 64);
                s.stamp = age_;
            }
            ++age_;
        }
        break;
    case 120:
        for (auto& s : slots_) {
            if (s.state == Free || s.channel != channel) continue;
            s.voice->kill();
            setState(s, Free);
            s.stamp = age_;
            dropHeld(s);
        }
        ++age_;
        break;
    case 121:
        for (int n = 0; n < 120; ++n)
            if (c.controllers[n] != 0) controller(time, channel, n, 0);
        break;
    case 122:
        for (auto& s : slots_) {
            if (s.state != Held || s.channel != channel) continue;
            if (c.controllers[64] != 0)
                setState(s, Sustained);
            else
                releaseSlot(s, time, 64);
            s.stamp = age_;
        }
        ++age_;
        break;
    default:
        // 123, the usual all-notes-off, deliberately does nothing here.
        break;
    }
    c.controllers[number] = static_cast<uint8_t>(value);
    for (auto& s : slots_)
        if (s.state != Free && s.channel == channel) s.voice->controller(time, number, value);
}

void VoiceManager::pitchBend(int32_t time, int channel, int value) {
    channels_[channel].pitchBend = static_cast<int16_t>(value);
    for (auto& s : slots_)
        if (s.state != Free && s.channel == channel) s.voice->pitchBend(time, value);
}

void VoiceManager::programChange(int32_t time, int channel, int program) {
    channels_[channel].program = static_cast<uint8_t>(program);
    for (auto& s : slots_)
        if (s.state != Free && s.channel == channel) s.voice->programChange(time, program);
}
