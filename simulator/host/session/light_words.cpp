#include "simulator/host/session/light_words.h"

#include "simulator/host/session/light_ranges.h"
#include "simulator/host/session/words.h"

namespace pictara {
namespace {
constexpr double kDefaultLamp = 5000; // kelvin
}

simulator::Light lightOf(Options const& options) {
    return {options.lightKelvin.value_or(kDefaultLamp), options.lightLevel, options.lightGradient,
            options.objectInPicture};
}

QStringList lightWords(simulator::Light const& light) {
    QStringList words{"light", exactly(light.colourTemperature), exactly(light.level),
                      exactly(light.gradient)};
    return light.objectInPicture ? words << "object" : words;
}

bool readLight(QStringList const& words, simulator::Light& light) {
    struct {
        Range const& range;
        double simulator::Light::*quantity;
    } constexpr kQuantities[] = {{kColourTemperatures, &simulator::Light::colourTemperature},
                                 {kLevels, &simulator::Light::level},
                                 {kGradients, &simulator::Light::gradient}};
    for (int i = 0; i < words.size() && i < 3; ++i) {
        auto const number = numberIn(kQuantities[i].range, words[i]);
        if (!number)
            return false;
        light.*kQuantities[i].quantity = *number;
    }
    if (words.size() >= 3)
        light.objectInPicture = words.size() > 3;
    return words.size() < 4 || words[3] == QLatin1String("object");
}
} // namespace pictara
