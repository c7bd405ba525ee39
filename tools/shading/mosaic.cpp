#include "tools/shading/mosaic.h"

#include "simulator/camera/optics.h"
#include "simulator/files/whole_file.h"

#include <QBuffer>
#include <QFileInfo>
#include <QImageReader>
#include <QtEndian>
#include <algorithm>
#include <bit>
#include <cmath>
#include <cstring>
#include <iterator>
#include <libraw/libraw.h>
#include <memory>
#include <tiffio.h>

namespace shading {
namespace {
using simulator::CameraDescription;
using simulator::FrameType;
using simulator::Plane;

constexpr uint32_t kShortestSide = 48, kLongestSide = 16384; // pixels
constexpr qint64 kMostBytes = 512 << 20;
constexpr char const* kPhases[] = {"RGGB", "GRBG", "GBRG", "BGGR"};

std::nullopt_t fail(QString const& file, QString const& cause, QString* error) {
    *error = QStringLiteral("%1: %2").arg(file, cause);
    return std::nullopt;
}

QString sizeText(uint32_t width, uint32_t height) {
    return QStringLiteral("%1 x %2 pixels").arg(width).arg(height);
}

// Empty for a picture of a size that can be worked with.
QString sizeFault(uint32_t width, uint32_t height) {
    if (std::min(width, height) >= kShortestSide && std::max(width, height) <= kLongestSide)
        return {};
    return QStringLiteral("it has %1; a side has %2 to %3")
        .arg(sizeText(width, height))
        .arg(kShortestSide)
        .arg(kLongestSide);
}

// What a file tells; the coding is laid over it.
struct Told {
    Mosaic mosaic{};
    std::optional<uint32_t> phase{};
    std::optional<simulator::PerPlane<double>> black{};
    std::optional<double> white{};
};

Told toldOf(QString const& file, uint32_t width, uint32_t height) {
    Told told;
    told.mosaic.file = file;
    told.mosaic.width = width;
    told.mosaic.height = height;
    told.mosaic.samples.resize(size_t(width) * height);
    return told;
}

std::optional<Told> readPng(QString const& file, QByteArray& bytes, QString* error) {
    QBuffer buffer(&bytes);
    QImageReader reader(&buffer, "png");
    // Asked first: few bytes can tell a picture that no memory holds.
    QSize const size = reader.size();
    QString const fault = size.isValid() ? sizeFault(uint32_t(size.width()), uint32_t(size.height())) : "";
    if (!fault.isEmpty())
        return fail(file, fault, error);
    QImage const picture = reader.read();
    if (picture.isNull())
        return fail(file, "cannot be read as a PNG: " + reader.errorString(), error);
    if (picture.format() != QImage::Format_Grayscale16)
        return fail(file, "it is no greyscale picture of 16 bits, as a mosaic is", error);
    Told told = toldOf(file, uint32_t(picture.width()), uint32_t(picture.height()));
    for (int y = 0; y < picture.height(); ++y)
        std::memcpy(told.mosaic.samples.data() + size_t(y) * told.mosaic.width, picture.constScanLine(y),
                    size_t(told.mosaic.width) * 2);
    return told;
}

// The library reads what has been read already, so that the rules for users' files hold.
TIFF* openTiff(QBuffer& buffer) {
    auto const move = [](thandle_t handle, toff_t offset, int from) -> toff_t {
        auto* const at = static_cast<QBuffer*>(handle);
        qint64 const base = from == SEEK_CUR ? at->pos() : from == SEEK_END ? at->size() : 0;
        return at->seek(base + qint64(offset)) ? toff_t(at->pos()) : toff_t(-1);
    };
    TIFFSetErrorHandler(nullptr);
    TIFFSetWarningHandler(nullptr);
    return TIFFClientOpen(
        "picture", "rm", &buffer,
        [](thandle_t handle, void* to, tmsize_t count) -> tmsize_t {
            return static_cast<QBuffer*>(handle)->read(static_cast<char*>(to), count);
        },
        [](thandle_t, void*, tmsize_t) -> tmsize_t { return -1; }, move, [](thandle_t) { return 0; },
        [](thandle_t handle) { return toff_t(static_cast<QBuffer*>(handle)->size()); }, nullptr, nullptr);
}

std::optional<Told> readTiff(QString const& file, QByteArray& bytes, QString* error) {
    QBuffer buffer(&bytes);
    (void)buffer.open(QIODevice::ReadOnly);
    std::unique_ptr<TIFF, void (*)(TIFF*)> const tiff(openTiff(buffer), TIFFClose);
    uint32_t width = 0, height = 0;
    uint16_t bits = 0, channels = 0;
    if (!tiff || TIFFGetField(tiff.get(), TIFFTAG_IMAGEWIDTH, &width) == 0 ||
        TIFFGetField(tiff.get(), TIFFTAG_IMAGELENGTH, &height) == 0)
        return fail(file, "cannot be read as a TIFF", error);
    (void)TIFFGetFieldDefaulted(tiff.get(), TIFFTAG_BITSPERSAMPLE, &bits);
    (void)TIFFGetFieldDefaulted(tiff.get(), TIFFTAG_SAMPLESPERPIXEL, &channels);
    if (channels != 1 || bits != 16 || TIFFIsTiled(tiff.get()) != 0)
        return fail(file, "it is no greyscale picture of 16 bits in strips, as a mosaic is", error);
    if (QString const fault = sizeFault(width, height); !fault.isEmpty())
        return fail(file, fault, error);
    Told told = toldOf(file, width, height);
    bool isWhole = TIFFScanlineSize(tiff.get()) == tmsize_t(width) * 2;
    for (uint32_t y = 0; y < height && isWhole; ++y)
        isWhole = TIFFReadScanline(tiff.get(), told.mosaic.samples.data() + size_t(y) * width, y) == 1;
    return isWhole ? std::optional(std::move(told)) : fail(file, "it is cut off, or damaged", error);
}

std::optional<Told> readBare(QString const& file, Coding::Bare const& bare, QByteArray const& bytes,
                             QString* error) {
    size_t const sampleBytes = bare.bits > 8 ? 2 : 1, needed = sampleBytes * bare.width * bare.height;
    if (size_t(bytes.size()) != needed)
        return fail(file,
                    QStringLiteral("it has %1 bytes; a picture of %2 at %3 bits has %4")
                        .arg(bytes.size())
                        .arg(sizeText(bare.width, bare.height))
                        .arg(bare.bits)
                        .arg(needed),
                    error);
    Told told = toldOf(file, bare.width, bare.height);
    if (sampleBytes == 2)
        qFromLittleEndian<quint16>(bytes.constData(), qsizetype(needed / 2), told.mosaic.samples.data());
    else
        std::transform(bytes.begin(), bytes.end(), told.mosaic.samples.begin(),
                       [](char sample) { return uint8_t(sample); });
    told.white = double((1U << bare.bits) - 1);
    return told;
}

// The phase, when the four pixels hold red, blue and two greens on a diagonal.
std::optional<uint32_t> phaseOf(LibRaw& raw) {
    if (raw.imgdata.idata.colors != 3 || raw.imgdata.idata.filters < 1000) // below are other patterns
        return std::nullopt;
    QByteArray pattern;
    for (int y = 0; y < 8; ++y) // the pattern of the word's sixteen places must repeat after 2 x 2
        for (int x = 0; x < 2; ++x)
            pattern += raw.imgdata.idata.cdesc[raw.COLOR(y, x) & 3];
    return pattern == pattern.left(4).repeated(4) ? phaseNamed(QString::fromLatin1(pattern.left(4)))
                                                  : std::nullopt;
}

// Of the planes in the visible picture; none where nobody tells it.
std::optional<simulator::PerPlane<double>> blackOf(LibRaw& raw, uint32_t phase) {
    auto const& colour = raw.imgdata.color;
    simulator::PerPlane<double> black{};
    auto const rows = std::max(1U, colour.cblack[4]), columns = std::max(1U, colour.cblack[5]);
    for (uint32_t i = 0; i < 4; ++i) {
        uint32_t const y = i >> 1, x = i & 1;
        Plane const plane =
            simulator::SensorArray{.width = 2, .height = 2, .bayerPhase = phase}.planeAt(x, y);
        black[plane] = colour.black + colour.cblack[raw.COLOR(int(y), int(x)) & 3];
        if (colour.cblack[4] != 0 && colour.cblack[5] != 0)
            black[plane] += colour.cblack[6 + y % rows * columns + x % columns];
    }
    bool const isTold = (colour.dng_levels.parsedfields & LIBRAW_DNGFM_BLACK) != 0 ||
                        std::any_of(black.begin(), black.end(), [](double level) { return level > 0; });
    return isTold ? std::optional(black) : std::nullopt;
}

std::optional<Told> readRawFile(QString const& file, QByteArray& bytes, QString* error) {
    auto const raw = std::make_unique<LibRaw>(); // large
    bool isDamaged = false;
    raw->set_dataerror_handler([](void* damaged, char const*, auto) { *static_cast<bool*>(damaged) = true; },
                               &isDamaged);
    int code = raw->open_buffer(bytes.data(), size_t(bytes.size()));
    auto const& sizes = raw->imgdata.sizes;
    if (code == LIBRAW_SUCCESS) {
        if (QString const fault = sizeFault(sizes.width, sizes.height); !fault.isEmpty())
            return fail(file, fault, error);
        code = raw->unpack();
    }
    if (code != LIBRAW_SUCCESS)
        return fail(file, "cannot be read as a raw picture: " + QString(LibRaw::strerror(code)), error);
    if (isDamaged)
        return fail(file, "it is cut off, or damaged", error);
    std::optional<uint32_t> const phase = phaseOf(*raw);
    if (!raw->imgdata.rawdata.raw_image || !phase)
        return fail(file, "it holds no mosaic of a Bayer pattern in red, green and blue", error);
    Told told = toldOf(file, sizes.width, sizes.height);
    size_t const pitch = sizes.raw_pitch / 2;
    for (size_t y = 0; y < sizes.height; ++y)
        std::copy_n(raw->imgdata.rawdata.raw_image + (y + sizes.top_margin) * pitch + sizes.left_margin,
                    sizes.width, told.mosaic.samples.data() + y * sizes.width);
    told.phase = phase;
    told.black = blackOf(*raw, *phase);
    told.white = raw->imgdata.color.maximum;
    return told;
}

std::optional<Told> readTold(QString const& file, Coding const& coding, QString* error) {
    auto bytes = files::read(file, kMostBytes, error);
    if (!bytes)
        return std::nullopt;
    QString const kind = QFileInfo(file).suffix().toLower();
    if (kind == QLatin1String("png"))
        return readPng(file, *bytes, error);
    if (kind == QLatin1String("tif") || kind == QLatin1String("tiff"))
        return readTiff(file, *bytes, error);
    return coding.bare && kind != QLatin1String("dng") ? readBare(file, *coding.bare, *bytes, error)
                                                       : readRawFile(file, *bytes, error);
}

void dropRows(Mosaic& mosaic, uint32_t count) {
    mosaic.samples.erase(mosaic.samples.begin(),
                         mosaic.samples.begin() + std::ptrdiff_t(size_t(count) * mosaic.width));
    mosaic.height -= count;
    mosaic.bayerPhase ^= (count & 1) << 1;
}
} // namespace

std::optional<uint32_t> phaseNamed(QString const& name) {
    auto const* const found = std::find_if(std::begin(kPhases), std::end(kPhases), [&](char const* phase) {
        return name.toUpper() == QLatin1String(phase);
    });
    return found == std::end(kPhases) ? std::nullopt : std::optional(uint32_t(found - std::begin(kPhases)));
}

std::optional<Coding> codingOf(QString const& profile, QString* error) {
    auto const camera = simulator::SimulatedCamera::open(profile, error);
    if (!camera)
        return std::nullopt;
    CameraDescription const& told = camera->description();
    if (told.rawType != FrameType::Raw8 && told.rawType != FrameType::Raw12)
        return fail(profile, "the sensor delivers no mosaic, as a picture holds one", error);
    uint32_t const bits = told.rawType == FrameType::Raw8 ? 8 : 16;
    return Coding{.bare = Coding::Bare{told.width, told.height, bits},
                  .phase = told.bayerPhase,
                  .black = told.blackLevel,
                  .white = told.whiteLevel,
                  .blackSource = QStringLiteral("--sensor ") + profile,
                  .orientation = told.orientation,
                  .unusableRows = told.unusableRows};
}

simulator::Frame Mosaic::frame() const {
    static_assert(std::endian::native == std::endian::little, "a frame holds little-endian words");
    return {FrameType::Raw12, width, int32_t(height), width * 2,
            QByteArray::fromRawData(reinterpret_cast<char const*>(samples.data()), int(samples.size() * 2))};
}

CameraDescription Mosaic::description() const {
    CameraDescription camera;
    camera.width = width;
    camera.height = height;
    camera.rawType = FrameType::Raw12;
    camera.bayerPhase = bayerPhase;
    camera.orientation = orientation;
    camera.blackLevel = (blackLevel[0] + blackLevel[1] + blackLevel[2] + blackLevel[3]) / 4;
    camera.whiteLevel = whiteLevel;
    return camera;
}

std::optional<Mosaic> readMosaic(QString const& file, Coding const& coding, QString* error) {
    std::optional<Told> told = readTold(file, coding, error);
    if (!told)
        return std::nullopt;
    std::optional<uint32_t> const phase = coding.phase ? coding.phase : told->phase;
    std::optional<double> const white = coding.white ? coding.white : told->white;
    if (!phase)
        return fail(file, "it does not tell its pattern; --phase tells it, such as RGGB", error);
    if (!coding.black && !told->black)
        return fail(file, "it tells no black level; --black tells it, in counts", error);
    if (!white)
        return fail(file, "it tells no white level; --white tells it, in counts", error);
    Mosaic& mosaic = told->mosaic;
    mosaic.bayerPhase = *phase;
    mosaic.blackSource = coding.black ? coding.blackSource : QStringLiteral("the file");
    mosaic.blackLevel = told->black.value_or(simulator::PerPlane<double>{});
    if (coding.black)
        mosaic.blackLevel.fill(*coding.black);
    mosaic.whiteLevel = *white;
    mosaic.orientation = coding.orientation;
    if (*std::max_element(mosaic.blackLevel.begin(), mosaic.blackLevel.end()) >= mosaic.whiteLevel)
        return fail(file, "its white level is not above its black level", error);
    dropRows(mosaic, coding.unusableRows);
    return std::move(told->mosaic);
}
} // namespace shading
