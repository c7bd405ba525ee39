#include "benchmarks/noise_picture.h"

#include <map>
#include <random>
#include <utility>

using namespace kestra;

NoisePicture const& noisePicture(FrameSize size) {
    static std::map<std::pair<int32_t, int32_t>, NoisePicture> pictures;
    NoisePicture& picture = pictures[{size.width, size.height}];
    if (picture.pixels.empty()) {
        std::mt19937 random(1);
        picture.size = size;
        picture.pixels.resize(size_t(size.width) * size_t(size.height));
        for (uint32_t& pixel : picture.pixels)
            pixel = uint32_t(random());
    }
    return picture;
}
