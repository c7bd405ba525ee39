#include "simulator/host/session/sample_rows.h"

#include <array>

namespace pictara {
namespace {
uchar const* rowOf(simulator::Frame const& frame, int64_t y) {
    return reinterpret_cast<uchar const*>(frame.pixels.constData()) + y * int64_t(frame.pitch);
}

void prepare(ColourRow& row, size_t width) {
    for (auto* plane : {&row.red, &row.green, &row.blue})
        plane->resize(width);
}
} // namespace

BayerRows::BayerRows(uint32_t width, int64_t height, simulator::CameraDescription const& camera,
                     float redGain, float blueGain)
    : m_width(width), m_height(height), m_redColumn(camera.bayerPhase & 1),
      m_redRow(camera.bayerPhase >> 1 & 1), m_black(float(camera.blackLevel)),
      m_scale(float(1 / (camera.whiteLevel - camera.blackLevel))), m_redGain(redGain), m_blueGain(blueGain) {
    size_t const padded = m_width + 2;
    for (auto* row : {&m_above, &m_present, &m_below, &m_isGreen})
        row->resize(padded);
    for (size_t i = 0; i < padded; ++i)
        m_isGreen[i] = float((int64_t(i) - 1 - m_redColumn) & 1);
}

BayerRows::BayerRows(simulator::Frame const& frame, simulator::CameraDescription const& camera, float redGain,
                     float blueGain)
    : BayerRows(frame.width, frame.height, camera, redGain, blueGain) {
    m_frame = &frame;
}

BayerRows::BayerRows(simulator::IdealFrame const& frame, simulator::CameraDescription const& camera,
                     float redGain, float blueGain)
    : BayerRows(frame.width, frame.height, camera, redGain, blueGain) {
    m_ideal = &frame;
    m_black = 0;
    m_scale = 1;
}

int64_t BayerRows::mirrored(int64_t y) const {
    if (y < 0)
        return -y;
    return y < m_height ? y : 2 * m_height - 2 - y;
}

void BayerRows::load(int64_t y, std::vector<float>& samples) const {
    size_t const width = m_width;
    float const colourGain = isRedRow(y) ? m_redGain : m_blueGain;
    bool const colourAtEven = (m_redColumn == 0) == isRedRow(y);
    std::array<float, 2> const scale = {m_scale * (colourAtEven ? colourGain : 1),
                                        m_scale * (colourAtEven ? 1 : colourGain)};
    float* const out = samples.data() + 1;
    uchar const* const row = m_frame ? rowOf(*m_frame, mirrored(y)) : nullptr;
    if (m_ideal) {
        float const* const ideal = m_ideal->samples.data() + size_t(mirrored(y)) * width;
        for (size_t x = 0; x < width; ++x)
            out[x] = ideal[x] * scale[x & 1];
    } else if (m_frame->type == simulator::FrameType::Raw12) {
        for (size_t x = 0; x < width; ++x)
            out[x] = (float(row[2 * x] | row[2 * x + 1] << 8) - m_black) * scale[x & 1];
    } else {
        for (size_t x = 0; x < width; ++x)
            out[x] = (float(row[x]) - m_black) * scale[x & 1];
    }
    samples[0] = samples[2];
    samples[width + 1] = samples[width - 1];
}

void BayerRows::read(uint32_t y, ColourRow& out) {
    if (m_started) {
        std::swap(m_above, m_present);
        std::swap(m_present, m_below);
    } else {
        load(int64_t(y) - 1, m_above);
        load(y, m_present);
        m_started = true;
    }
    load(int64_t(y) + 1, m_below);

    size_t const width = m_width;
    prepare(out, width);
    // A red row holds red and green, a blue row blue and green, with the roles of the columns exchanged.
    bool const redRow = isRedRow(y);
    float* const own = redRow ? out.red.data() : out.blue.data();
    float* const other = redRow ? out.blue.data() : out.red.data();
    float* const green = out.green.data();
    float const *const above = m_above.data(), *const present = m_present.data(),
                       *const below = m_below.data();
    float const* const isGreen = m_isGreen.data() + (redRow ? 1 : 0);
    for (size_t x = 0; x < width; ++x) {
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

YcbcrRows::YcbcrRows(simulator::Frame const& frame, simulator::CameraDescription const& camera, float redGain,
                     float blueGain)
    : m_frame(frame), m_lumaLow(float(camera.blackLevel)),
      m_lumaScale(float(1 / (camera.whiteLevel - camera.blackLevel))),
      m_chromaScale(1.0F / (camera.whiteLevel >= 255 ? 255.0F : 224.0F)), m_redGain(redGain),
      m_blueGain(blueGain) {}

void YcbcrRows::read(uint32_t y, ColourRow& out) const {
    size_t const width = m_frame.width;
    prepare(out, width);
    uchar const* const row = rowOf(m_frame, y);
    for (size_t x = 0; x < width; ++x) {
        uchar const* const pair = row + (x & ~size_t(1)) * 2;
        bool const whole = (x | 1) < width; // an odd last column has no Cr of its own
        float const luma = (float(row[2 * x]) - m_lumaLow) * m_lumaScale;
        float const cb = (float(pair[1]) - 128) * m_chromaScale;
        float const cr = whole ? (float(pair[3]) - 128) * m_chromaScale : 0;
        // ITU-R BT.601: luma weights 0.299, 0.587, 0.114.
        out.red[x] = (luma + 1.402F * cr) * m_redGain;
        out.green[x] = luma - 0.344136F * cb - 0.714136F * cr;
        out.blue[x] = (luma + 1.772F * cb) * m_blueGain;
    }
}

void readRgb32Row(simulator::Frame const& frame, uint32_t y, float redGain, float blueGain, ColourRow& out) {
    prepare(out, frame.width);
    uchar const* const row = rowOf(frame, y);
    for (size_t x = 0; x < frame.width; ++x) {
        out.blue[x] = float(row[4 * x]) / 255 * blueGain;
        out.green[x] = float(row[4 * x + 1]) / 255;
        out.red[x] = float(row[4 * x + 2]) / 255 * redGain;
    }
}
} // namespace pictara
