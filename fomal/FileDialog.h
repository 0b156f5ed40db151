// A request for a file: the open or save dialog the panel's patch actions
// show, as the platform's own dialog or as one the panel draws.
#pragma once

#include <functional>
#include <string>
#include <vector>

namespace Fomal {

struct FileFilter {
    std::string name;                   // "Tendrane Patch"
    std::vector<std::string> patterns;  // "*.tdrn"
};

struct FileDialogRequest {
    bool save = false;
    std::string title;     // "Open Patch", "Save Patch As"
    std::string folder;    // where the dialog opens (UTF-8); empty: where it likes
    std::string fileName;  // the name a save proposes
    // The filters in order; "All Files (*.*)" follows them.
    std::vector<FileFilter> filters;
    // Added to a name saved without one, under the first filter.
    std::string extension;
};

// The chosen file's path (UTF-8). A cancelled dialog calls nothing.
using FileChosen = std::function<void(const std::string& path)>;

// A filter as a dialog lists it: name, " (", the patterns joined by "; ",
// ")".
std::string filterTitle(const FileFilter& filter);

// The filter every dialog ends with.
FileFilter allFilesFilter();

// Whether a file name matches a pattern of the filters ("*.tdrn", "*.*",
// "*"), letters compared without regard to ASCII case.
bool matchesPattern(std::string_view name, std::string_view pattern);

}  // namespace Fomal
