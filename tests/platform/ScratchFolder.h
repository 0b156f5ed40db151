// A fresh folder for one test, removed with everything in it afterwards.
#pragma once

#include <cstdlib>
#include <filesystem>
#include <string>

namespace testsupport {

class ScratchFolder {
public:
    ScratchFolder() {
        const char* base = std::getenv("TMPDIR");
        std::string pattern = std::string(base && *base ? base : "/tmp") + "/tendrane-platform-XXXXXX";
        if (!mkdtemp(pattern.data()))
            throw std::runtime_error("cannot make a scratch folder");
        path_ = pattern;
    }
    ~ScratchFolder() {
        std::error_code ignored;
        std::filesystem::permissions(path_, std::filesystem::perms::owner_all,
                                     std::filesystem::perm_options::add, ignored);
        std::filesystem::remove_all(path_, ignored);
    }
    ScratchFolder(const ScratchFolder&) = delete;
    ScratchFolder& operator=(const ScratchFolder&) = delete;

    const std::string& path() const { return path_; }
    std::string file(const std::string& name) const { return path_ + "/" + name; }

private:
    std::string path_;
};

}  // namespace testsupport
