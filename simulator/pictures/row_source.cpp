#include "simulator/pictures/row_source.h"

#include <algorithm>
#include <array>
#include <memory>

namespace pictara {
namespace {
using simulator::CameraDescription;
using simulator::Frame;
using simulator::FrameType;
using Matrix = std::array<float, 9>;
using FillRow = std::function<void(uint32_t y, ColourRow& row)>;

// Luminance weights of linear sRGB (IEC 61966-2-1).
constexpr double kLuminance[3] = {0.2126, 0.7152, 0.0722};

uchar const* rowOf(Frame const& frame, int64_t y) {
    return reinterpret_cast<uchar const*>(frame.pixels.constData()) + y * int64_t(frame.pitch);
}

// Completes the colours of a mosaic. At the borders the picture is mirrored about its outermost samples,
// which keeps the pattern.
class Mosaic {
public:
    /// Writes one row of samples.
    using Load = std::function<void(int64_t y, float* samples)>;

    Mosaic(uint32_t width, int64_t height, uint32_t phase, double black, double white,
           ColourSettings const& settings, Load load)
        : m_width(width), m_height(height), m_redColumn(phase & 1), m_redRow(phase >> 1 & 1),
          m_black(float(black)), m_scale(float(1 / (white - black))), m_redGain(float(settings.redGain)),
          m_blueGain(float(settings.blueGain)), m_load(std::move(load)) {
        size_t const padded = m_width + 2;
        for (auto* row : {&m_above, &m_present, &m_below, &m_isGreen})
            row->resize(padded);
        for (size_t i = 0; i < padded; ++i)
            m_isGreen[i] = float((int64_t(i) - 1 - m_redColumn) & 1);
    }

    /// Rows are asked for from the top down.
    void fill(uint32_t y, ColourRow& out) {
        if (y == 0) {
            load(-1, m_above);
            load(0, m_present);
        } else {
            std::swap(m_above, m_present);
            std::swap(m_present, m_below);
        }
        load(int64_t(y) + 1, m_below);
        complete(isRedRow(y), out);
    }

private:
    [[nodiscard]] bool isRedRow(int64_t y) const { return ((y ^ m_redRow) & 1) == 0; }

    void load(int64_t y, std::vector<float>& samples) const {
        float const colourGain = isRedRow(y) ? m_redGain : m_blueGain;
        bool const colourAtEven = (m_redColumn == 0) == isRedRow(y);
        std::array<float, 2> const scale = {m_scale * (colourAtEven ? colourGain : 1),
                                            m_scale * (colourAtEven ? 1 : colourGain)};
        float* const out = samples.data() + 1;
        m_load(y < 0 ? -y : y < m_height ? y : 2 * m_height - 2 - y, out);
        for (size_t x = 0; x < m_width; ++x)
            out[x] = (out[x] - m_black) * scale[x & 1];
        samples[0] = samples[2];
        samples[m_width + 1] = samples[m_width - 1];
    }

    // A red row holds red and green, a blue row blue and green, with the roles of the columns exchanged.
    void complete(bool redRow, ColourRow& out) const {
        float* const own = redRow ? out.red.data() : out.blue.data();
        float* const other = redRow ? out.blue.data() : out.red.data();
        float* const green = out.green.data();
        float const *const above = m_above.data(), *const present = m_present.data(),
                           *const below = m_below.data();
        float const* const isGreen = m_isGreen.data() + (redRow ? 1 : 0);
        for (size_t x = 0; x < m_width; ++x) {
            float const beside = present[x] + present[x + 2];
            float const stacked = above[x + 1] + below[x + 1];
            float const diagonal = above[x] + above[x + 2] + below[x] + below[x + 2];
            float const site = present[x + 1];
            bool const greenSite = isGreen[x] != 0;
            own[x] = greenSite ? 0.5F * beside : site;
            green[x] = greenSite ? site : 0.25F * (beside + stacked);
            other[x] = greenSite ? 0.5F * stacked : 0.25F * diagonal;
        }
    }

    size_t m_width;
    int64_t m_height, m_redColumn, m_redRow;
    float m_black, m_scale, m_redGain, m_blueGain;
    Load m_load;
    std::vector<float> m_above, m_present, m_below; // each with one mirrored sample at either end
    std::vector<float> m_isGreen;                   // 1 at the green sites of a red row, padded alike
};

// The sensor does its colours, not its gamma, so the tone is linear. Chroma of a pair holds for both pixels.
void fillYcbcr(Frame const& frame, CameraDescription const& camera, ColourSettings const& settings,
               uint32_t y, ColourRow& out) {
    auto const lumaLow = float(camera.blackLevel), redGain = float(settings.redGain),
               blueGain = float(settings.blueGain);
    auto const lumaScale = float(1 / (camera.whiteLevel - camera.blackLevel));
    float const chromaScale = 1.0F / (camera.whiteLevel >= 255 ? 255.0F : 224.0F);
    uchar const* const row = rowOf(frame, y);
    for (size_t x = 0; x < frame.width; ++x) {
        uchar const* const pair = row + (x & ~size_t(1)) * 2;
        bool const whole = (x | 1) < frame.width; // an odd last column has no Cr of its own
        float const luma = (float(row[2 * x]) - lumaLow) * lumaScale;
        float const cb = (float(pair[1]) - 128) * chromaScale;
        float const cr = whole ? (float(pair[3]) - 128) * chromaScale : 0;
        // ITU-R BT.601: luma weights 0.299, 0.587, 0.114.
        out.red[x] = (luma + 1.402F * cr) * redGain;
        out.green[x] = luma - 0.344136F * cb - 0.714136F * cr;
        out.blue[x] = (luma + 1.772F * cb) * blueGain;
    }
}

// Saturation moves each colour away from its luminance; it acts after the colour matrix.
Matrix colourMatrix(CameraDescription const& camera, ColourSettings const& settings) {
    Matrix result{};
    for (size_t row = 0; row < 3; ++row)
        for (size_t column = 0; column < 3; ++column) {
            double sum = 0;
            for (size_t k = 0; k < 3; ++k) {
                double const own = row == k ? settings.saturation : 0;
                double const saturation = own + (1 - settings.saturation) * kLuminance[k];
                double const unity = k == column ? 1 : 0;
                sum += saturation * (settings.colourCorrection ? camera.colourMatrix[3 * k + column] : unity);
            }
            result[3 * row + column] = float(sum);
        }
    return result;
}

void multiply(Matrix const& m, ColourRow& row) {
    float *const red = row.red.data(), *const green = row.green.data(), *const blue = row.blue.data();
    for (size_t x = 0; x < row.red.size(); ++x) {
        float const r = red[x], g = green[x], b = blue[x];
        red[x] = m[0] * r + m[1] * g + m[2] * b;
        green[x] = m[3] * r + m[4] * g + m[5] * b;
        blue[x] = m[6] * r + m[7] * g + m[8] * b;
    }
}

RowSource rows(uint32_t width, int64_t height, CameraDescription const& camera,
               ColourSettings const& settings, FillRow fill) {
    bool const plain = !settings.colourCorrection && settings.saturation == 1;
    auto const read = [=, matrix = colourMatrix(camera, settings)](RowSource::Use const& use) {
        ColourRow row;
        for (auto* plane : {&row.red, &row.green, &row.blue})
            plane->resize(width);
        for (uint32_t y = 0; y < uint32_t(height); ++y) {
            fill(y, row);
            if (!plain)
                multiply(matrix, row);
            use(y, row);
        }
    };
    return {int(width), int(height), read};
}

bool isWhole(Frame const& frame) {
    uint64_t const needed = uint64_t(frame.width) * (frame.type == FrameType::Raw8 ? 1 : 2);
    return frame.width >= 2 && frame.height >= 2 && frame.pitch >= needed &&
           uint64_t(frame.pixels.size()) >= uint64_t(frame.pitch) * uint64_t(frame.height - 1) + needed;
}

// Shared, as a function to be kept must be one to be copied.
FillRow fillMosaic(Mosaic mosaic) {
    return [shared = std::make_shared<Mosaic>(std::move(mosaic))](uint32_t y, ColourRow& row) {
        shared->fill(y, row);
    };
}
} // namespace

RowSource linearRows(Frame const& frame, CameraDescription const& camera, ColourSettings const& settings) {
    if (!isWhole(frame))
        return {};
    if (frame.type == FrameType::Ycbcr)
        return rows(frame.width, frame.height, camera, settings,
                    [&frame, camera, settings](uint32_t y, ColourRow& row) {
                        fillYcbcr(frame, camera, settings, y, row);
                    });
    auto const load = [&frame](int64_t y, float* samples) {
        uchar const* const row = rowOf(frame, y);
        if (frame.type == FrameType::Raw8)
            std::copy_n(row, frame.width, samples);
        else
            for (size_t x = 0; x < frame.width; ++x)
                samples[x] = float(row[2 * x] | row[2 * x + 1] << 8);
    };
    return rows(frame.width, frame.height, camera, settings,
                fillMosaic({frame.width, frame.height, camera.bayerPhase, camera.blackLevel,
                            camera.whiteLevel, settings, load}));
}

RowSource linearRows(simulator::IdealFrame const& frame, CameraDescription const& camera,
                     ColourSettings const& settings) {
    if (frame.width < 2 || frame.height < 2 || frame.samples.size() != size_t(frame.width) * frame.height)
        return {};
    auto const load = [&frame](int64_t y, float* samples) {
        std::copy_n(frame.samples.data() + size_t(y) * frame.width, frame.width, samples);
    };
    return rows(frame.width, frame.height, camera, settings,
                fillMosaic({frame.width, frame.height, camera.bayerPhase, 0, 1, settings, load}));
}
} // namespace pictara
