#include "simulator/pictures/linear_rows.h"

#include <algorithm>
#include <array>
#include <optional>

namespace pictara {
namespace {
using simulator::CameraDescription;
using simulator::Frame;
using simulator::FrameType;
using Matrix = std::array<float, 9>;

uchar const* rowOf(Frame const& frame, int64_t y) {
    return reinterpret_cast<uchar const*>(frame.pixels.constData()) + y * int64_t(frame.pitch);
}

// Completes the colours of a mosaic. At the borders the picture is mirrored about its outermost samples,
// which keeps the pattern.
class Mosaic {
public:
    /// Borrows the frame.
    Mosaic(Frame const& frame, CameraDescription const& camera, ColourSettings const& settings)
        : m_frame(frame), m_width(frame.width), m_redColumn(camera.bayerPhase & 1),
          m_redRow(camera.bayerPhase >> 1 & 1), m_black(float(camera.blackLevel)),
          m_scale(float(1 / (camera.whiteLevel - camera.blackLevel))), m_redGain(float(settings.redGain)),
          m_blueGain(float(settings.blueGain)) {
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
        uchar const* const row = rowOf(m_frame, y < 0                ? -y
                                                : y < m_frame.height ? y
                                                                     : 2 * m_frame.height - 2 - y);
        if (m_frame.type == FrameType::Raw8)
            std::copy_n(row, m_width, out);
        else
            for (size_t x = 0; x < m_width; ++x)
                out[x] = float(row[2 * x] | row[2 * x + 1] << 8);
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

    Frame const& m_frame;
    size_t m_width;
    int64_t m_redColumn, m_redRow;
    float m_black, m_scale, m_redGain, m_blueGain;
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

bool isWhole(Frame const& frame) {
    uint64_t const needed = uint64_t(frame.width) * (frame.type == FrameType::Raw8 ? 1 : 2);
    return frame.width >= 2 && frame.height >= 2 && frame.pitch >= needed &&
           uint64_t(frame.pixels.size()) >= uint64_t(frame.pitch) * uint64_t(frame.height - 1) + needed;
}
} // namespace

bool readLinear(Frame const& frame, CameraDescription const& camera, ColourSettings const& settings,
                std::function<void(uint32_t y, ColourRow const& row)> const& use) {
    if (!isWhole(frame))
        return false;
    std::optional<Mosaic> mosaic;
    if (frame.type != FrameType::Ycbcr)
        mosaic.emplace(frame, camera, settings);
    bool const isPlain = !settings.colourCorrection && settings.saturation == 1;
    Matrix const matrix = colourMatrix(camera, settings);
    ColourRow row;
    for (auto* plane : {&row.red, &row.green, &row.blue})
        plane->resize(frame.width);
    for (uint32_t y = 0; y < uint32_t(frame.height); ++y) {
        if (mosaic)
            mosaic->fill(y, row);
        else
            fillYcbcr(frame, camera, settings, y, row);
        if (!isPlain)
            multiply(matrix, row);
        use(y, row);
    }
    return true;
}
} // namespace pictara
