#include "patch/FactoryPatches.h"

#include <string>

#include "patch/ProgramText.h"
#include "platform/Exceptions.h"
#include "platform/Resources.h"

NorvelleProgram factoryProgram(int index) {
    if (index < 0 || index >= FACTORY_PATCH_COUNT)
        throw Exception("No factory patch " + std::to_string(index) + " (0 to 15)");
    const std::string name = "Factory" + std::to_string(index);
    const platform::Resource resource = platform::productResources().find("TDRN", name);
    if (!resource) throw Exception("Could not obtain factory patch : " + name);
    return readProgramText(resource.text());
}

std::vector<NorvelleProgram> factoryBank() {
    std::vector<NorvelleProgram> bank;
    bank.reserve(FACTORY_PATCH_COUNT);
    for (int i = 0; i < FACTORY_PATCH_COUNT; ++i) bank.push_back(factoryProgram(i));
    return bank;
}
