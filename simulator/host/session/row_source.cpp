#include "simulator/host/session/row_source.h"

#include "simulator/host/session/colour_pipeline.h"
#include "simulator/host/session/linear_picture.h"

#include <algorithm>

namespace pictara {
RowSource linearRows(simulator::Frame const& frame, simulator::CameraDescription const& camera,
                     ColourSettings const& settings) {
    if (!isWhole(frame))
        return {};
    return {int(frame.width), frame.height,
            [&frame, camera, settings](auto const& use) { forEachLinearRow(frame, camera, settings, use); }};
}

RowSource linearRows(simulator::IdealFrame const& frame, simulator::CameraDescription const& camera,
                     ColourSettings const& settings) {
    return {int(frame.width), int(frame.height),
            [&frame, camera, settings](auto const& use) { forEachLinearRow(frame, camera, settings, use); }};
}

RowSource shownRows(RowSource const& linear, ColourSettings const& settings) {
    auto const show = [settings](std::vector<float> const& light, std::vector<float>& shown) {
        shown.resize(light.size());
        std::transform(light.begin(), light.end(), shown.begin(),
                       [&](float value) { return float(255 * shownValue(double(value), settings)); });
    };
    auto const read = [linear, show](RowSource::Use const& use) {
        ColourRow shown;
        linear.read([&](uint32_t y, ColourRow const& row) {
            show(row.red, shown.red);
            show(row.green, shown.green);
            show(row.blue, shown.blue);
            use(y, shown);
        });
    };
    return {linear.width, linear.height, read};
}

RowSource shownRows(QImage const& picture) {
    auto const read = [&picture](RowSource::Use const& use) {
        ColourRow row;
        for (auto* plane : {&row.red, &row.green, &row.blue})
            plane->resize(size_t(picture.width()));
        for (int y = 0; y < picture.height(); ++y) {
            auto const* const pixels = reinterpret_cast<QRgb const*>(picture.constScanLine(y));
            for (size_t x = 0; x < row.red.size(); ++x) {
                row.red[x] = float(qRed(pixels[x]));
                row.green[x] = float(qGreen(pixels[x]));
                row.blue[x] = float(qBlue(pixels[x]));
            }
            use(uint32_t(y), row);
        }
    };
    return {picture.width(), picture.height(), read};
}
} // namespace pictara
