// The patch list an editor browses: the patch folder worked out from the
// current patch's file, the folder last chosen in a dialog and the default
// folder; the folder's patch files, cached until the folder changes, a
// refresh is asked for or a save may have added one; and the steps to the
// previous and next file. The default folder is made on first use with the
// factory patches in it as files, so a new user has patches to browse.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "patch/NorvelleProgram.h"
#include "platform/OrlFiles/Path.h"

class PatchBrowser {
public:
    // The preference that keeps the folder of the last dialog.
    static constexpr std::string_view FOLDER_PREFERENCE = "currentProgramDir";

    explicit PatchBrowser(OrlFiles::Path defaultFolder);

    // The folder of the current patch's file; else the folder last chosen,
    // if it still exists; else the default folder.
    OrlFiles::Path folderFor(const NorvelleProgram& current);
    // The patch files of folder, sorted by full path.
    const std::vector<OrlFiles::Path>& list(const OrlFiles::Path& folder, bool refresh = false);
    // The file before or after the current patch's in its folder; nothing at
    // the ends and for a patch without a file.
    std::optional<OrlFiles::Path> step(const NorvelleProgram& current, int direction);

    // A dialog chose a file: its folder is remembered.
    void chose(const OrlFiles::Path& file);
    // A file was saved: the list is read again next time.
    void saved(const OrlFiles::Path& file);

    const OrlFiles::Path& defaultFolder() const { return default_; }

private:
    // Makes the default folder, with the factory patches in it, the first
    // time it is needed and missing.
    void offerFactoryPatches();

    OrlFiles::Path default_;
    bool cached_ = false;
    OrlFiles::Path cachedFolder_;
    std::vector<OrlFiles::Path> files_;
};
