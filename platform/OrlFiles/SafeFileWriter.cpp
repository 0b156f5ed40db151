#include "platform/OrlFiles/SafeFileWriter.h"

#include "platform/OrlFiles/Files.h"

namespace OrlFiles {

Path SafeFileWriter::temporaryFolderFor(const Path& destination) {
    if (exists(destination) && fileInfo(destination).isFolder)
        return destination;
    return destination.parent();
}

SafeFileWriter::~SafeFileWriter() {
    try {
        abandon();
    } catch (...) {
        // A destructor must not throw; the temporary file stays.
    }
}

}  // namespace OrlFiles
