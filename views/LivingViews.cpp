#include "views/LivingViews.h"

#include <iterator>
#include <memory>
#include <mutex>

#include "fomal/ViewFactory.h"
#include "views/BubbleView.h"
#include "views/DnaView.h"
#include "views/JugglerView.h"
#include "views/KeyRingView.h"
#include "views/MarkerView.h"
#include "views/MidiCCView.h"
#include "views/PlantView.h"
#include "views/StaticPlantView.h"

namespace views {

namespace {

template <class T>
std::unique_ptr<Fomal::View> make(const Fomal::ViewBuild& build) {
    return std::make_unique<T>(build);
}

constexpr Fomal::ViewType LIVING_TYPES[] = {
    {"midiCC", make<MidiCCView>},
    {"plant", make<PlantView>},
    {"keyRing", make<KeyRingView>},
    {"staticPlant", make<StaticPlantView>},
    {"juggler", make<JugglerView>},
    {"ring", make<MarkerView>},
    {"dna", make<DnaView>},
    {"bubble", make<BubbleView>},
};

}  // namespace

void registerLivingViews() {
    static std::once_flag once;
    std::call_once(once, [] { Fomal::addViewTypes(LIVING_TYPES, std::size(LIVING_TYPES)); });
}

}  // namespace views
