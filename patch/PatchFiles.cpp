#include "patch/PatchFiles.h"

#include <algorithm>

#include "patch/ProgramText.h"
#include "platform/OrlFiles/File.h"
#include "platform/OrlFiles/Files.h"
#include "platform/OrlFiles/SafeFileWriter.h"

void setProgramPath(NorvelleProgram& record, const OrlFiles::Path& path) {
    const std::u16string name = path.stem();
    const std::u16string text = path.text();
    if (name == record.getName() && text == record.path) return;
    record.setName(name);
    record.path = text;
    record.touch(false);
}

NorvelleProgram readPatchFile(const OrlFiles::Path& path) {
    NorvelleProgram record = readProgramText(OrlFiles::readWholeFile(path));
    setProgramPath(record, path);
    return record;
}

NorvelleProgram savePatchFile(NorvelleProgram record, const OrlFiles::Path& path) {
    setProgramPath(record, path);
    record.modified = false;
    record.touch(false);
    OrlFiles::SafeFileWriter writer(path);
    writer.write(withCrLf(writeProgramText(record, true)));
    writer.commit();
    return record;
}

std::vector<OrlFiles::Path> listPatchFiles(const OrlFiles::Path& folder) {
    std::vector<OrlFiles::Path> files;
    try {
        for (const OrlFiles::FolderEntry& e : OrlFiles::listFolder(folder, PATCH_EXTENSION))
            if (!e.isFolder) files.push_back(e.path);
    } catch (const std::exception&) {
        return {};
    }
    std::sort(files.begin(), files.end(),
              [](const OrlFiles::Path& a, const OrlFiles::Path& b) { return a.text() < b.text(); });
    return files;
}

std::optional<OrlFiles::Path> stepPatchFile(const std::vector<OrlFiles::Path>& list, const OrlFiles::Path& current,
                                            int direction) {
    const auto at = std::find(list.begin(), list.end(), current);
    if (at == list.end()) return std::nullopt;
    const std::ptrdiff_t index = (at - list.begin()) + (direction < 0 ? -1 : 1);
    if (index < 0 || index >= std::ptrdiff_t(list.size())) return std::nullopt;
    return list[std::size_t(index)];
}

std::u16string patchFileName(std::u16string_view name) {
    std::u16string out;
    for (char16_t c : name) out += (c < 32 || std::u16string_view(u"\\/:*?\"<>|").find(c) != std::u16string_view::npos) ? u' ' : c;
    while (!out.empty() && (out.back() == u' ' || out.back() == u'.')) out.pop_back();
    while (!out.empty() && out.front() == u' ') out.erase(out.begin());
    return out.empty() ? std::u16string(u"Untitled") : out;
}
