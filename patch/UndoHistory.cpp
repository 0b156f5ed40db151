#include "patch/UndoHistory.h"

UndoHistory::UndoHistory(UndoHost& host, const int& limit, Translator translate)
    : host_(host), limit_(limit), translate_(std::move(translate)) {}

void UndoHistory::saveUndo(std::string_view label, bool merge) {
    std::string text = translate_ ? translate_(label) : std::string(label);
    if (position_ != entries_.size()) {
        entries_.erase(entries_.begin() + static_cast<std::ptrdiff_t>(position_), entries_.end());
        merge = false;
    }
    if (merge && !entries_.empty() && entries_.back().label == text) return;
    const std::size_t limit = limit_ < 0 ? 0 : static_cast<std::size_t>(limit_);
    while (entries_.size() > limit) {
        entries_.pop_front();
        --position_;
    }
    entries_.push_back(Entry{host_.currentProgram(), std::move(text)});
    ++position_;
    changed();
}

void UndoHistory::clear() {
    if (entries_.empty()) return;
    entries_.clear();
    position_ = 0;
    changed();
}

void UndoHistory::undo() {
    if (position_ == 0) return;
    if (position_ + 1 >= entries_.size()) {
        // Keep the current state for redo.
        entries_.resize(position_ + 1, Entry{NorvelleProgram(), std::string()});
        entries_[position_] = Entry{host_.currentProgram(), std::string()};
    }
    --position_;
    host_.setCurrentProgram(entries_[position_].record);
    changed();
}

void UndoHistory::redo() {
    if (position_ + 1 >= entries_.size()) return;
    ++position_;
    host_.setCurrentProgram(entries_[position_].record);
    changed();
}

std::string UndoHistory::undoLabel() const { return canUndo() ? entries_[position_ - 1].label : std::string(); }

std::string UndoHistory::redoLabel() const { return canRedo() ? entries_[position_].label : std::string(); }
