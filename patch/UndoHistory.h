// Undo and redo of the patch an editor shows. The history keeps whole
// records, not differences, so that undo cannot drift from what was heard.
//
// Entries below position can be undone into; when position equals the entry
// count, the current state is not stored in the history. The history can hold
// limit + 1 entries.
#pragma once

#include <deque>
#include <functional>
#include <string>
#include <string_view>

#include "patch/NorvelleProgram.h"

// The plug-in, through which the history reads and writes the current record.
class UndoHost {
public:
    virtual ~UndoHost() = default;
    virtual NorvelleProgram currentProgram() const = 0;
    virtual void setCurrentProgram(const NorvelleProgram& record) = 0;
};

class UndoHistory {
public:
    using Translator = std::function<std::string(std::string_view)>;

    // limit is read at every save (the script constant undoHistory). Labels
    // pass through translate (the string catalogue) when it is given.
    UndoHistory(UndoHost& host, const int& limit, Translator translate = {});

    // Call before making the change: records the current record under label.
    // With merge, a save right after one with the same label is dropped, so a
    // slider drag makes one step. After an undo the redo branch goes and no
    // merge happens.
    void saveUndo(std::string_view label, bool merge = false);

    // Forgets every step (the editor shows another program).
    void clear();

    bool canUndo() const { return position_ > 0; }
    bool canRedo() const { return position_ + 1 < entries_.size(); }
    void undo();
    void redo();

    // The labels the next undo and redo would show.
    std::string undoLabel() const;
    std::string redoLabel() const;

    std::size_t size() const { return entries_.size(); }
    std::size_t position() const { return position_; }
    const std::string& labelAt(std::size_t index) const { return entries_[index].label; }
    const NorvelleProgram& recordAt(std::size_t index) const { return entries_[index].record; }

    // Called whenever the history changed.
    std::function<void()> onChanged;

private:
    struct Entry {
        NorvelleProgram record;
        std::string label;
    };

    void changed() {
        if (onChanged) onChanged();
    }

    UndoHost& host_;
    const int& limit_;
    Translator translate_;
    std::deque<Entry> entries_;
    std::size_t position_ = 0;
};
