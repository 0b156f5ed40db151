#include "patch/PatchBrowser.h"

#include "patch/FactoryPatches.h"
#include "patch/PatchFiles.h"
#include "patch/Preferences.h"
#include "platform/OrlFiles/Files.h"

PatchBrowser::PatchBrowser(OrlFiles::Path defaultFolder) : default_(std::move(defaultFolder)) {}

OrlFiles::Path PatchBrowser::folderFor(const NorvelleProgram& current) {
    if (!current.path.empty()) {
        try {
            return OrlFiles::Path::parse(current.path).parent();
        } catch (const std::exception&) {
            // A path that does not read as one: the other folders serve.
        }
    }
    try {
        if (const std::optional<std::string> chosen = Preferences::read(FOLDER_PREFERENCE)) {
            const OrlFiles::Path folder = OrlFiles::Path::parse(*chosen);
            if (!chosen->empty() && OrlFiles::exists(folder)) return folder;
        }
    } catch (const std::exception&) {
        // Preferences that can't be read leave the default folder.
    }
    offerFactoryPatches();
    return default_;
}

const std::vector<OrlFiles::Path>& PatchBrowser::list(const OrlFiles::Path& folder, bool refresh) {
    if (refresh || !cached_ || !(folder == cachedFolder_)) {
        if (folder == default_) offerFactoryPatches();
        files_ = listPatchFiles(folder);
        cachedFolder_ = folder;
        cached_ = true;
    }
    return files_;
}

std::optional<OrlFiles::Path> PatchBrowser::step(const NorvelleProgram& current, int direction) {
    if (current.path.empty()) return std::nullopt;
    try {
        const OrlFiles::Path file = OrlFiles::Path::parse(current.path);
        return stepPatchFile(list(file.parent()), file, direction);
    } catch (const std::exception&) {
        return std::nullopt;
    }
}

void PatchBrowser::chose(const OrlFiles::Path& file) {
    try {
        Preferences::write(FOLDER_PREFERENCE, file.parent().utf8());
    } catch (const std::exception&) {
        // The folder is a convenience: a store that can't be written loses it.
    }
}

void PatchBrowser::saved(const OrlFiles::Path& file) {
    cached_ = false;
    chose(file);
}

void PatchBrowser::offerFactoryPatches() {
    if (default_.empty() || OrlFiles::exists(default_)) return;
    try {
        // The folders above it too, as a new user's data folder may not exist.
        std::vector<OrlFiles::Path> missing;
        for (OrlFiles::Path p = default_; !p.parts().empty() && !OrlFiles::exists(p); p = p.parent())
            missing.push_back(p);
        for (auto it = missing.rbegin(); it != missing.rend(); ++it) OrlFiles::createFolder(*it);
        for (int i = 0; i < FACTORY_PATCH_COUNT; ++i) {
            const NorvelleProgram factory = factoryProgram(i);
            savePatchFile(factory, default_.child(patchFileName(factory.getName()) + u"." + std::u16string(PATCH_EXTENSION)));
        }
    } catch (const std::exception&) {
        // Without a folder to write in, the dialogs open wherever they can.
    }
    cached_ = false;
}
