// Failures of reading or writing audio files. Each carries one fixed text.
#pragma once

#include "platform/Exceptions.h"

namespace OrlAudioFiles {

class Exception : public ::Exception {
public:
    using ::Exception::Exception;
};

}  // namespace OrlAudioFiles
