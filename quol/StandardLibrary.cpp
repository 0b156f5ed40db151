#include "quol/StandardLibrary.h"

#include "platform/Resources.h"
#include "quol/Evaluator.h"
#include "quol/Exception.h"
#include "quol/Natives.h"

namespace Quol {

void loadStandardLibrary(Frame& frame) {
    const platform::Resource resource = platform::productResources().find("QUOL", "stdlib");
    if (!resource) fail("Could not load text resource");
    // The resource lives as long as the program: the script runs from it.
    evaluate(frame, Value::external(resource.text()));
}

void prepareStandardRoot(Frame& root) {
    installStandardNatives(root);
    loadStandardLibrary(root);
}

}  // namespace Quol
