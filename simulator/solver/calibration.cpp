#include "simulator/solver/calibration.h"

#include "simulator/solver/flatness.h"
#include "simulator/solver/gain_fit.h"

#include <QStringList>
#include <QtDebug>
#include <algorithm>
#include <utility>

namespace solver {
namespace {
constexpr uint32_t kLowestFalloff = 50;
constexpr uint32_t kHighestFalloff = 125;

uint32_t clampedFalloff(uint32_t percent) { return std::clamp(percent, kLowestFalloff, kHighestFalloff); }

// Row by row from the array's top, each as its number and its runs of blocks.
void logRefusedBlocks(BlockMeans const& means, std::vector<bool> const& refused) {
    QStringList rows;
    for (int row = 0; row < means.rows && !refused.empty(); ++row) {
        auto const first = refused.begin() + std::ptrdiff_t(row) * means.columns, end = first + means.columns;
        QStringList runs;
        for (auto from = std::find(first, end, true); from != end;) {
            auto const to = std::find(from, end, false);
            runs << QStringLiteral("%1-%2").arg(from - first).arg(to - first - 1);
            from = std::find(to, end, true);
        }
        if (!runs.isEmpty())
            rows << QStringLiteral("%1:%2").arg(row).arg(runs.join(QLatin1Char(',')));
    }
    if (!rows.isEmpty())
        logCause(QStringLiteral("refused blocks of %1 x %2: %3")
                     .arg(means.columns)
                     .arg(means.rows)
                     .arg(rows.join(QLatin1Char(' '))));
}
} // namespace

void logCause(QString const& cause) { qWarning("shadefit: %s", qPrintable(cause)); }

void Calibration::fail(QString const& cause) {
    m_solution = {};
    logCause(cause);
}

void Calibration::refuse(QString const& cause) {
    m_means.reset();
    m_sizeFits = true;
    fail(cause);
}

bool Calibration::fits(uint32_t width, uint32_t height) {
    m_means.reset();
    m_sizeFits = width == uint32_t(m_array.width) && height == uint32_t(m_array.height);
    m_sizes = QStringLiteral("incompatible image size: %1 x %2 instead of %3 x %4")
                  .arg(width)
                  .arg(height)
                  .arg(m_array.width)
                  .arg(m_array.height);
    return m_sizeFits;
}

bool Calibration::take(BlockMeans means) {
    Inspection inspection;
    QString error;
    if (!inspect(means, m_array, inspection, &error)) {
        logRefusedBlocks(means, inspection.refused);
        refuse(error);
        return false;
    }
    m_means = std::move(means);
    m_trusted = std::move(inspection.trusted);
    return true;
}

bool Calibration::setImage(void const* frame, uint32_t width, uint32_t height, uint32_t bayerPhase,
                           uint32_t orientation) {
    if (m_layout.input == SensorLayout::Input::Ycbcr) {
        refuse(QStringLiteral("the sensor delivers YCbCr, but a raw image was handed over"));
        return false;
    }
    if (!fits(width, height))
        return true;
    return take(readRaw(frame, m_layout, rawSampling(m_layout, bayerPhase, orientation)));
}

bool Calibration::setYcbcrImage(void const* frame, uint32_t width, uint32_t height,
                                sf_YcbcrInput const& input) {
    if (m_layout.input != SensorLayout::Input::Ycbcr) {
        refuse(QStringLiteral("a YCbCr image was handed over, but the sensor delivers none"));
        return false;
    }
    auto const sampling = ycbcrSampling(input);
    if (!sampling || input.lumaHigh <= input.lumaLow || input.chromaHigh == 0) {
        refuse(QStringLiteral("unknown YCbCr coding: luma %1 to %2, chroma span %3")
                   .arg(input.lumaLow)
                   .arg(input.lumaHigh)
                   .arg(input.chromaHigh));
        return false;
    }
    if (!fits(width, height))
        return true;
    return take(readYcbcr(frame, m_layout, input, *sampling));
}

Outcome Calibration::imageOutcome() {
    if (!m_sizeFits) {
        fail(m_sizes);
        return Outcome::WrongImageSize;
    }
    if (!m_means) {
        fail(QStringLiteral("there is no input image"));
        return Outcome::Failed;
    }
    return Outcome::Solved;
}

BankCoefficients Calibration::fit(BlockMeans const& means, uint32_t falloffPercent, uint32_t radius) const {
    Target const target{clampedFalloff(falloffPercent) / 100.0, double(radius)};
    return fitGains(means, m_trusted, m_array, target);
}

Outcome Calibration::findBase(uint32_t falloffPercent, uint32_t radius) {
    m_solution = {};
    if (Outcome const outcome = imageOutcome(); outcome != Outcome::Solved)
        return outcome;
    if (m_layout.bank(0) == nullptr) {
        fail(QStringLiteral("the sensor has no base correction"));
        return Outcome::Failed;
    }
    m_solution.falloffPercent = clampedFalloff(falloffPercent);
    m_solution.base = fit(*m_means, falloffPercent, radius);
    return Outcome::Solved;
}

Outcome Calibration::findTable(sf_ApgaParams const& params) {
    if (params.illuminantSlot == 0)
        return Outcome::Solved;
    if (Outcome const outcome = imageOutcome(); outcome != Outcome::Solved)
        return outcome;
    if (!m_solution.base) {
        fail(QStringLiteral("there is no base solution for the table of slot %1").arg(params.illuminantSlot));
        return Outcome::Failed;
    }
    return addTable(corrected(*m_means, m_array, *m_solution.base), params);
}

Outcome Calibration::findFullTable(sf_ApgaParams const& params) {
    if (Outcome const outcome = imageOutcome(); outcome != Outcome::Solved)
        return outcome;
    if (m_solution.base)
        m_solution = {};
    m_solution.falloffPercent = clampedFalloff(params.falloffPercent);
    return addTable(*m_means, params);
}

Outcome Calibration::addTable(BlockMeans const& means, sf_ApgaParams const& params) {
    uint32_t const slot = params.illuminantSlot;
    if (slot == 0 || m_layout.bank(slot) == nullptr) {
        fail(QStringLiteral("the sensor has no table for illuminant slot %1").arg(slot));
        return Outcome::Failed;
    }
    m_solution.tables[slot] = {params.colourTemperature, fit(means, params.falloffPercent, params.radius)};
    return Outcome::Solved;
}
} // namespace solver
