// Patches as files: a patch file read into a record named after its file,
// a record saved with Windows line ends through the safe writer, and the
// patch files of a folder in the order the patch list shows them.
#pragma once

#include <optional>
#include <vector>

#include "patch/NorvelleProgram.h"
#include "platform/OrlFiles/Path.h"

// The extension of patch files, and the name of their kind in file dialogs.
inline constexpr std::u16string_view PATCH_EXTENSION = u"tdrn";
inline constexpr std::string_view PATCH_FILE_KIND = "Tendrane Patch";

// The record takes the file's name without extension as its name, and the
// path, with a fresh stamp, when either differs; `modified` stays as it is.
// A renamed file renames its patch.
void setProgramPath(NorvelleProgram& record, const OrlFiles::Path& path);

// The whole file read and parsed, named after the file. Throws the file's
// and the patch text's failures; nothing is changed by a failure.
NorvelleProgram readPatchFile(const OrlFiles::Path& path);

// Saves record at path: named after the file, not modified, a fresh stamp,
// the file form of the text with "\r\n" line ends, written whole or not at
// all. Returns the record as saved.
NorvelleProgram savePatchFile(NorvelleProgram record, const OrlFiles::Path& path);

// The patch files (".tdrn", in any case) of folder, sorted by full path.
// A folder that can't be listed has none.
std::vector<OrlFiles::Path> listPatchFiles(const OrlFiles::Path& folder);

// The file before (direction -1) or after (+1) current in list; nothing at
// the ends, or when current is not in the list.
std::optional<OrlFiles::Path> stepPatchFile(const std::vector<OrlFiles::Path>& list, const OrlFiles::Path& current,
                                            int direction);

// A patch name as a file name: the characters no file system takes become
// blanks, and an empty name becomes "Untitled".
std::u16string patchFileName(std::u16string_view name);
