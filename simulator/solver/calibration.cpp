#include "simulator/solver/calibration.h"

#include <QStringList>
#include <QtDebug>
#include <bit>
#include <cmath>

namespace solver {
namespace {
using simulator::kBaseSlot;
using Registers = std::vector<sf_RegEntry>;

uint32_t clampedFalloff(uint32_t percent) { return std::clamp(percent, 50u, 125u); }

// Row by row from the array's top, each as its number and its runs of blocks.
void logRefusedBlocks(BlockMeans const& means, BlockMask const& refused) {
    QStringList rows;
    for (int row = 0; row < means.rows && refused.size() != 0; ++row) {
        auto const first = refused.begin() + Eigen::Index{row} * means.columns, end = first + means.columns;
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

void append(Registers& list, simulator::RegisterPlace const& place, uint32_t value) {
    list.push_back({place.id, place.address, value});
}

void append(Registers& list, SensorLayout::Origin const& origin, SensorLayout const& layout) {
    append(list, origin.column, originIn(layout.width));
    append(list, origin.row, originIn(layout.height));
}

void append(Registers& list, SensorLayout::Bank const& bank, BankCoefficients const& coefficients) {
    for (size_t plane = 0; plane < kPlaneCount; ++plane)
        for (int i = 0; i < kTerms; ++i)
            append(list, bank.planes[plane].place(uint32_t(i)),
                   std::bit_cast<uint16_t>(coefficients[plane](i)));
}

QString lines(Registers const& entries) {
    QString text;
    for (sf_RegEntry const& entry : entries)
        text += QString::asprintf("REG = 0x%04X, 0x%04X, 0x%04X\n", entry.first, entry.second, entry.third);
    return text;
}
} // namespace

void logCause(QString const& cause) { qWarning("shadefit: %s", qPrintable(cause)); }

void Calibration::drop() {
    m_falloffPercent = 100;
    m_banks.clear();
}

Outcome Calibration::fail(QString const& cause) {
    drop();
    logCause(cause);
    return Outcome::Failed;
}

bool Calibration::refuse(QString const& cause) {
    m_means.reset();
    m_misfit.clear();
    fail(cause);
    return false;
}

bool Calibration::fits(uint32_t width, uint32_t height) {
    m_means.reset();
    m_misfit.clear();
    if (width == m_layout.width && height == m_layout.height)
        return true;
    m_misfit = QStringLiteral("incompatible image size: %1 x %2 instead of %3 x %4")
                   .arg(width)
                   .arg(height)
                   .arg(m_layout.width)
                   .arg(m_layout.height);
    return false;
}

bool Calibration::take(BlockMeans means) {
    Inspection inspection = inspect(means, m_layout);
    if (inspection.flaw != Flaw::None) {
        logRefusedBlocks(means, inspection.refused);
        return refuse(inspection.fault);
    }
    m_means = std::move(means);
    m_trusted = std::move(inspection.trusted);
    return true;
}

bool Calibration::setImage(void const* frame, uint32_t width, uint32_t height, uint32_t bayerPhase,
                           uint32_t orientation) {
    if (m_layout.input == SensorLayout::Input::Ycbcr)
        return refuse(QStringLiteral("the sensor delivers YCbCr, but a raw image was handed over"));
    return !fits(width, height) || take(readRaw(frame, m_layout, bayerPhase, orientation));
}

bool Calibration::setYcbcrImage(void const* frame, uint32_t width, uint32_t height,
                                sf_YcbcrInput const& input) {
    constexpr uint32_t kComponentOrder[] = {0, 1, 2, 3}; // no sensor delivers any other one
    if (m_layout.input != SensorLayout::Input::Ycbcr)
        return refuse(QStringLiteral("a YCbCr image was handed over, but the sensor delivers none"));
    if (!std::equal(std::begin(kComponentOrder), std::end(kComponentOrder), input.componentOrder) ||
        input.lumaHigh <= input.lumaLow || input.chromaHigh == 0)
        return refuse(QStringLiteral("unknown YCbCr coding: luma %1 to %2, chroma span %3")
                          .arg(input.lumaLow)
                          .arg(input.lumaHigh)
                          .arg(input.chromaHigh));
    return !fits(width, height) || take(readYcbcr(frame, m_layout, input));
}

Outcome Calibration::imageOutcome() {
    if (!m_misfit.isEmpty()) {
        fail(m_misfit);
        return Outcome::WrongImageSize;
    }
    return m_means ? Outcome::Solved : fail(QStringLiteral("there is no input image"));
}

BankCoefficients Calibration::fit(BlockMeans const& means, uint32_t falloffPercent, uint32_t radius) const {
    Target target{clampedFalloff(falloffPercent) / 100.0};
    if (radius != 0)
        target.radius = radius / (0.5 * std::hypot(m_layout.width, m_layout.height));
    return fitGains(means, m_trusted, target);
}

Outcome Calibration::findBase(sf_SolutionParams const& params) {
    drop();
    if (Outcome const outcome = imageOutcome(); outcome != Outcome::Solved)
        return outcome;
    if (m_layout.bank(kBaseSlot) == nullptr)
        return fail(QStringLiteral("the sensor has no base correction"));
    m_falloffPercent = clampedFalloff(params.falloffPercent);
    m_banks[kBaseSlot].coefficients = fit(*m_means, params.falloffPercent, params.radius);
    return Outcome::Solved;
}

Outcome Calibration::findTable(sf_ApgaParams const& params) {
    if (params.illuminantSlot == 0)
        return Outcome::Solved;
    if (Outcome const outcome = imageOutcome(); outcome != Outcome::Solved)
        return outcome;
    auto const base = m_banks.find(kBaseSlot);
    if (base == m_banks.end())
        return fail(
            QStringLiteral("there is no base solution for the table of slot %1").arg(params.illuminantSlot));
    return addTable(corrected(*m_means, base->second.coefficients), params);
}

Outcome Calibration::findFullTable(sf_ApgaParams const& params) {
    if (Outcome const outcome = imageOutcome(); outcome != Outcome::Solved)
        return outcome;
    if (m_banks.count(kBaseSlot) != 0)
        drop();
    m_falloffPercent = clampedFalloff(params.falloffPercent);
    return addTable(*m_means, params);
}

Outcome Calibration::addTable(BlockMeans const& means, sf_ApgaParams const& params) {
    uint32_t const slot = params.illuminantSlot;
    if (slot == kBaseSlot || m_layout.bank(slot) == nullptr)
        return fail(QStringLiteral("the sensor has no table for illuminant slot %1").arg(slot));
    m_banks[slot] = {params.colourTemperature, fit(means, params.falloffPercent, params.radius)};
    return Outcome::Solved;
}

Registers Calibration::registersOf(uint32_t slot, Bank const& bank) const {
    Registers list;
    SensorLayout::Bank const& place = *m_layout.bank(slot);
    if (place.origin)
        append(list, *place.origin, m_layout);
    append(list, place, bank.coefficients);
    if (place.colourTemperature)
        append(list, *place.colourTemperature, bank.colourTemperature);
    return list;
}

Registers Calibration::registers() const {
    Registers list;
    append(list, m_layout.origin, m_layout);
    for (auto const& [slot, bank] : m_banks)
        for (sf_RegEntry const& entry : registersOf(slot, bank))
            list.push_back(entry);
    return list;
}

QByteArray Calibration::presetText(bool tellsTablesApart) const {
    QString text = QStringLiteral("[Lens Correction]\n"
                                  "; sensor kind %1, variant %2\n"
                                  "; corners at %3 % of the centre\n")
                       .arg(m_layout.kind)
                       .arg(m_layout.variant)
                       .arg(m_falloffPercent);
    Registers origin;
    append(origin, m_layout.origin, m_layout);
    text += lines(origin);
    for (auto const& [slot, bank] : m_banks) {
        if (tellsTablesApart && slot != kBaseSlot)
            text += QStringLiteral("; illuminant slot %1, %2 K\n").arg(slot).arg(bank.colourTemperature);
        text += lines(registersOf(slot, bank));
    }
    return text.toLatin1();
}
} // namespace solver
