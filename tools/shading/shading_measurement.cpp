#include "tools/shading/shading_measurement.h"

#include "simulator/files/interruption.h"
#include "simulator/files/whole_file.h"
#include "simulator/host/report/certificate.h"
#include "simulator/host/session/exposure_loop.h"
#include "simulator/host/session/sensor_registers.h"
#include "simulator/pictures/block_report.h"

#include <QBuffer>
#include <QImageReader>
#include <QJsonArray>
#include <QJsonDocument>
#include <QtEndian>
#include <algorithm>
#include <cmath>

namespace pictara {
namespace {
constexpr double kSamples = 8000; // of a cell at one light, against noise
constexpr double kFewestFrames = 8, kMostFrames = 64;
constexpr int kExposureSteps = 20;    // more than any light needs
constexpr double kTarget = 0.7;       // of full scale, for the brightest colour
constexpr double kLeastLight = 0.005; // of full scale, for the darkest cell
constexpr double kClipped = 0.99;
constexpr char kExposureRegister[] = "COARSE_INTEGRATION_TIME";

using simulator::CameraDescription;
using simulator::Frame;
using simulator::FrameType;
using simulator::MeasuredShading;

// Null with a message for the user.
QImage readPng(QString const& name, CameraDescription const& camera, QString* error) {
    constexpr qint64 kMostBytes = 256 << 20;
    constexpr int kLongestSide = 16384; // pixels
    auto bytes = files::read(name, kMostBytes, error);
    if (!bytes)
        return {};
    QBuffer buffer(&*bytes);
    QImageReader reader(&buffer, "png");
    // Asked first: few bytes can tell a picture that no memory holds.
    QSize const size = reader.size();
    bool const isTooLong = size.width() > kLongestSide || size.height() > kLongestSide;
    QImage const picture = isTooLong ? QImage() : reader.read();
    if (isTooLong)
        *error =
            QStringLiteral("The picture %1 has a side of more than %2 pixels.").arg(name).arg(kLongestSide);
    else if (picture.isNull())
        *error = QStringLiteral("The picture %1 cannot be read: %2").arg(name, reader.errorString());
    else if (!picture.isGrayscale() || picture.width() < 2 || picture.height() < 2)
        *error = QStringLiteral("The picture %1 must be a greyscale mosaic.").arg(name);
    else if (camera.rawType == FrameType::Ycbcr)
        *error = QStringLiteral("The profile %1 delivers no mosaic, as a PNG holds one.").arg(camera.profile);
    else
        return picture;
    return {};
}

// Wide words hold the counts of any sensor; 8-bit values come spread over the range of 16 bits.
Frame frameOf(QImage const& picture) {
    int const spread = picture.format() == QImage::Format_Grayscale16 ? 1 : 257;
    QImage const wide = picture.convertToFormat(QImage::Format_Grayscale16);
    uint32_t const pitch = uint32_t(wide.width()) * 2;
    Frame frame{FrameType::Raw12, uint32_t(wide.width()), wide.height(), pitch,
                QByteArray(int(pitch) * wide.height(), '\0')};
    char* sample = frame.pixels.data();
    for (int y = 0; y < frame.height; ++y)
        for (int x = 0; x < wide.width(); ++x, sample += 2)
            qToLittleEndian(quint16(reinterpret_cast<quint16 const*>(wide.constScanLine(y))[x] / spread),
                            sample);
    return frame;
}

std::optional<Frame> readSamples(QString const& name, CameraDescription const& camera, QString* error) {
    uint32_t const pitch = camera.width * (camera.rawType == FrameType::Raw8 ? 1 : 2);
    qint64 const needed = qint64(pitch) * camera.height;
    auto const bytes = files::read(name, std::max(needed, files::kMostText), error);
    if (bytes && bytes->size() == needed)
        return Frame{camera.rawType, camera.width, int32_t(camera.height), pitch, *bytes};
    if (bytes)
        *error = QStringLiteral("The file %1 has %2 bytes; a frame of the profile %3 has %4.")
                     .arg(name)
                     .arg(bytes->size())
                     .arg(camera.profile)
                     .arg(needed);
    return std::nullopt;
}

// A greyscale PNG whose values are the sensor's counts, or, where the name does not end in ".png", the
// samples of one whole frame of the camera's own size and type. Empty with a message for the user.
std::optional<Frame> readRecordedPicture(QString const& file, CameraDescription const& camera,
                                         QString* error) {
    if (!file.endsWith(QLatin1String(".png"), Qt::CaseInsensitive))
        return readSamples(file, camera, error);
    QImage const picture = readPng(file, camera, error);
    return picture.isNull() ? std::nullopt : std::optional(frameOf(picture));
}

using Cells = std::vector<Colour>;

// A table tells the lens as it lies before the pixel array, however that is read out.
Cells asOnTheArray(Cells cells, std::ptrdiff_t columns, uint32_t orientation) {
    if (orientation & 1)
        for (auto row = cells.begin(); row != cells.end(); row += columns)
            std::reverse(row, row + columns);
    if (orientation & 2)
        for (auto upper = cells.begin(), lower = cells.end() - columns; upper < lower;
             upper += columns, lower -= columns)
            std::swap_ranges(upper, upper + columns, lower);
    return cells;
}

// An empty table of that name, and the cells for one light.
struct Measurement {
    MeasuredShading table;
    Cells cells;
};

Measurement cellsOf(QString const& name, Frame const& frame, CameraDescription const& camera) {
    BlockReport const blocks = measureBlocks(frame, camera, {});
    return {{name, uint32_t(blocks.columns), uint32_t(blocks.rows), {}},
            asOnTheArray(blocks.means, blocks.columns, camera.orientation)};
}

// Adds what each plane needs to be as bright as in its brightest cell. False with the cause for a picture of
// no use.
bool addGains(Measurement const& measured, double kelvin, MeasuredShading& table, QString* error) {
    MeasuredShading::Illuminant illuminant{kelvin, {}};
    bool isDark = false, isClipped = false;
    for (size_t colour = 0; colour < 3; ++colour) {
        double brightest = 0;
        for (Colour const& cell : measured.cells)
            brightest = std::max(brightest, cell[colour]);
        isClipped = isClipped || brightest > kClipped;
        for (Colour const& cell : measured.cells) {
            isDark = isDark || cell[colour] < kLeastLight;
            illuminant.gains[colour].push_back(brightest / cell[colour]);
        }
    }
    table.illuminants.push_back(illuminant);
    *error = measured.table.columns < 2 || measured.table.rows < 2 ? QStringLiteral("it is too small")
             : isDark                                              ? QStringLiteral("it is too dark")
             : isClipped                                           ? QStringLiteral("it is clipped")
                                                                   : QString();
    return error->isEmpty();
}

// Until nothing is too bright and the brightest colour near its target, anywhere in the picture.
void expose(simulator::SimulatedCamera& camera) {
    SensorRegisters registers(camera.handle(), [] {});
    for (int step = 0; step < kExposureSteps; ++step) {
        uint32_t const present = registers.read(kExposureRegister, "");
        uint32_t const next =
            nextExposure(present, measureCentre(camera.grab(), camera.description(), 100), kTarget);
        if (next == present || !registers.write(kExposureRegister, "", next))
            return;
    }
}

Measurement meanOfFrames(simulator::SimulatedCamera& camera) {
    CameraDescription const& told = camera.description();
    Measurement sum = cellsOf(told.profile, camera.grab(), told);
    double const cellSize = double(told.width) * told.height / double(std::max<size_t>(sum.cells.size(), 1));
    int const frames = int(std::clamp(std::ceil(kSamples / cellSize), kFewestFrames, kMostFrames));
    for (int i = 1; i < frames && !files::isInterrupted(); ++i) {
        Cells const cells = cellsOf(told.profile, camera.grab(), told).cells;
        for (size_t k = 0; k < cells.size(); ++k)
            for (size_t colour = 0; colour < 3; ++colour)
                sum.cells[k][colour] += cells[k][colour];
    }
    for (Colour& cell : sum.cells)
        for (double& channel : cell)
            channel /= frames;
    return sum;
}
} // namespace

std::optional<MeasuredShading> measureShading(simulator::SimulatedCamera& camera,
                                              std::vector<double> const& lights,
                                              std::function<void(double kelvin)> const& onLight,
                                              QString* error) {
    if (camera.isCorrecting()) {
        *error = QStringLiteral("The sensor's own shading correction is on.");
        return std::nullopt;
    }
    std::optional<MeasuredShading> table;
    for (double const kelvin : lights) {
        simulator::Light light = camera.light();
        light.colourTemperature = kelvin;
        onLight(kelvin);
        camera.setLight(light);
        expose(camera);
        Measurement const measured = meanOfFrames(camera);
        if (files::isInterrupted())
            return std::nullopt;
        if (!table)
            table = measured.table;
        if (!addGains(measured, kelvin, *table, error)) {
            *error = QStringLiteral("The picture at %1 K is of no use: %2.").arg(kelvin).arg(*error);
            return std::nullopt;
        }
    }
    return table;
}

std::optional<MeasuredShading> measureRecordedShading(QString const& file, CameraDescription const& camera,
                                                      double kelvin, QString* error) {
    std::optional<Frame> const frame = readRecordedPicture(file, camera, error);
    if (!frame)
        return std::nullopt;
    Measurement measured = cellsOf(file, *frame, camera);
    if (addGains(measured, kelvin, measured.table, error))
        return measured.table;
    *error = QStringLiteral("The picture %1 is of no use: %2.").arg(file, *error);
    return std::nullopt;
}

bool writeMeasuredShading(QString const& name, MeasuredShading const& shading, QString* error) {
    QJsonArray illuminants;
    for (auto const& illuminant : shading.illuminants) {
        QJsonArray planes[3];
        for (size_t colour = 0; colour < 3; ++colour)
            for (double const gain : illuminant.gains[colour])
                planes[colour].append(rounded(gain));
        illuminants.append(QJsonObject{{"colour_temperature_K", illuminant.temperature},
                                       {"red", planes[0]},
                                       {"green", planes[1]},
                                       {"blue", planes[2]}});
    }
    QJsonObject const root{{"format", "shading-gains-1"},
                           {"name", shading.name},
                           {"columns", int(shading.columns)},
                           {"rows", int(shading.rows)},
                           {"illuminants", illuminants}};
    return files::replace(name, QJsonDocument(root).toJson(QJsonDocument::Compact), error);
}
} // namespace pictara
