// The two functions a host looks up in the plug-in binary. Both create an
// instance; main also turns on flush-to-zero for the calling thread, as old
// hosts that enter there expect.
#include <memory>

#include "platform/Exceptions.h"
#include "plugin/PluginCore.h"

#if defined(__SSE__) || defined(__x86_64__) || defined(_M_X64)
#include <xmmintrin.h>
#define TENDRANE_HAS_SSE 1
#endif

// On Windows the module definition file names the exports: a dllexport
// would carry main's assembler name, decorated twice on 32-bit.
#if defined(_WIN32)
#define TENDRANE_EXPORT extern "C"
#else
#define TENDRANE_EXPORT extern "C" __attribute__((visibility("default")))
#endif

namespace {

AEffect* createEffect(audioMasterCallback audioMaster) {
    try {
        if (!audioMaster || audioMaster(nullptr, audioMasterVersion, 0, 0, nullptr, 0.0f) == 0)
            throw Exception("audioMaster returned 0");
        auto core = std::make_unique<PluginCore>(audioMaster);
        core->lateConstruction();
        return core.release()->getAeffect();
    } catch (...) {
        // No plug-in: the host sees a null record.
        return nullptr;
    }
}

}  // namespace

TENDRANE_EXPORT AEffect* VST_CALL VSTPluginMain(audioMasterCallback audioMaster) { return createEffect(audioMaster); }

// C++ reserves the name main for the program's entry, so the symbol gets its
// name from the assembler label.
#if defined(_WIN32) && !defined(_WIN64)
#define TENDRANE_MAIN_SYMBOL "_main"
#else
#define TENDRANE_MAIN_SYMBOL "main"
#endif

TENDRANE_EXPORT AEffect* VST_CALL tendraneLegacyMain(audioMasterCallback audioMaster) __asm__(TENDRANE_MAIN_SYMBOL);

AEffect* VST_CALL tendraneLegacyMain(audioMasterCallback audioMaster) {
#ifdef TENDRANE_HAS_SSE
    _mm_setcsr(_mm_getcsr() | 0x8000);
#endif
    return createEffect(audioMaster);
}
