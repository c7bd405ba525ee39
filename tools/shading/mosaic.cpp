#include "tools/shading/mosaic.h"

#include "simulator/camera/optics.h"
#include "simulator/files/whole_file.h"
#include "tools/shading/telling.h"

#include <QBuffer>
#include <QFileInfo>
#include <QImageReader>
#include <QtEndian>
#include <algorithm>
#include <bit>
#include <cstring>
#include <fcntl.h>
#include <libraw/libraw.h>
#include <memory>
#include <tiffio.h>
#include <unistd.h>

namespace shading {
namespace {
using simulator::CameraDescription;
using simulator::FrameType;

constexpr int kTail = 1024; // bytes, in which a whole JPEG file tells its end
constexpr char kNoMosaic[] = "it is no greyscale picture of 16 bits, as a mosaic is";

// While it lives nothing is printed as an error. Libraries do so, that of PNG past every handler.
struct Silence {
    Silence() {
        if (int const nowhere = open("/dev/null", O_WRONLY); nowhere >= 0) {
            dup2(nowhere, STDERR_FILENO);
            close(nowhere);
        }
    }
    ~Silence() {
        dup2(kept, STDERR_FILENO);
        close(kept);
    }
    int const kept = dup(STDERR_FILENO);
};

// A picture, and what its file tells of it.
struct Told {
    Mosaic mosaic{};
    std::optional<uint32_t> phase{};
    std::optional<simulator::PerPlane<double>> black{};
    std::optional<double> white{};
};

// Room for a picture of a size that can be worked with.
std::optional<Told> roomFor(QString const& file, uint32_t width, uint32_t height, QString* error) {
    auto const [shorter, longer] = std::minmax(width, height);
    if (shorter < kShortestSide || longer > kLongestSide || longer / kLongestRatio > shorter)
        return fail(file,
                    QString::asprintf(
                        "it has %u x %u pixels; sides have %u to %u, and one at most %u times the other",
                        width, height, kShortestSide, kLongestSide, kLongestRatio),
                    error);
    Told told;
    told.mosaic.file = file;
    told.mosaic.width = width;
    told.mosaic.height = height;
    told.mosaic.samples.resize(size_t(width) * height);
    return told;
}

std::optional<Told> readPng(QString const& file, QByteArray const& bytes, QString* error) {
    QImage const picture = shownPicture(bytes);
    if (picture.isNull())
        return fail(file, "cannot be read as a PNG, or is cut off or too large", error);
    if (picture.format() != QImage::Format_Grayscale16)
        return fail(file, kNoMosaic, error);
    auto told = roomFor(file, uint32_t(picture.width()), uint32_t(picture.height()), error);
    for (int y = 0; told && y < picture.height(); ++y)
        std::memcpy(told->mosaic.samples.data() + size_t(y) * told->mosaic.width, picture.constScanLine(y),
                    size_t(told->mosaic.width) * 2);
    return told;
}

std::optional<Told> readTiff(QString const& file, QString* error) {
    std::unique_ptr<TIFF, void (*)(TIFF*)> const tiff(TIFFOpen(QFile::encodeName(file), "r"), TIFFClose);
    uint32_t width = 0, height = 0;
    uint16_t bits = 0, channels = 0, format = 0, meaning = 0;
    if (!tiff || TIFFGetField(tiff.get(), TIFFTAG_IMAGEWIDTH, &width) == 0 ||
        TIFFGetField(tiff.get(), TIFFTAG_IMAGELENGTH, &height) == 0)
        return fail(file, "cannot be read as a TIFF", error);
    (void)TIFFGetFieldDefaulted(tiff.get(), TIFFTAG_BITSPERSAMPLE, &bits);
    (void)TIFFGetFieldDefaulted(tiff.get(), TIFFTAG_SAMPLESPERPIXEL, &channels);
    (void)TIFFGetFieldDefaulted(tiff.get(), TIFFTAG_SAMPLEFORMAT, &format);
    (void)TIFFGetField(tiff.get(), TIFFTAG_PHOTOMETRIC, &meaning);
    if (channels != 1 || bits != 16 || format != SAMPLEFORMAT_UINT || meaning == PHOTOMETRIC_MINISWHITE ||
        TIFFScanlineSize(tiff.get()) != tmsize_t(width) * 2)
        return fail(file, kNoMosaic, error);
    std::optional<Told> told = roomFor(file, width, height, error);
    for (uint32_t y = 0; told && y < height; ++y)
        if (TIFFReadScanline(tiff.get(), told->mosaic.samples.data() + size_t(y) * width, y) != 1)
            return fail(file, "it is cut off, or not in strips", error);
    return told;
}

std::optional<Told> readBare(QString const& file, Coding::Bare const& bare, QByteArray const& bytes,
                             QString* error) {
    bool const isWide = bare.bits > 8;
    size_t const needed = size_t(bare.width) * bare.height * (isWide ? 2 : 1);
    if (size_t(bytes.size()) != needed)
        return fail(file,
                    QString::asprintf("it has %d bytes; a picture of %u x %u pixels at %u bits has %zu",
                                      bytes.size(), bare.width, bare.height, bare.bits, needed),
                    error);
    std::optional<Told> told = roomFor(file, bare.width, bare.height, error);
    if (told && isWide)
        qFromLittleEndian<quint16>(bytes.constData(), qsizetype(needed / 2), told->mosaic.samples.data());
    else if (told)
        std::transform(bytes.begin(), bytes.end(), told->mosaic.samples.begin(),
                       [](char sample) { return uint8_t(sample); });
    if (told)
        told->white = double((1U << bare.bits) - 1);
    return told;
}

// The phase, when all that the library knows of the pattern repeats two by two, with one red and one blue.
std::optional<uint32_t> phaseOf(LibRaw& raw) {
    constexpr int kRows = 8; // of two columns in the library's word
    QByteArray pattern;
    for (int i = 0; i < 2 * kRows; ++i)
        pattern += raw.imgdata.idata.cdesc[raw.COLOR(i / 2, i % 2) & 3];
    bool const isBayer = raw.imgdata.idata.colors == 3 && raw.imgdata.idata.filters >= 1000 && // less: others
                         !raw.is_fuji_rotated() && pattern == pattern.left(4).repeated(kRows / 2);
    return isBayer ? phaseNamed(QString::fromLatin1(pattern.left(4))) : std::nullopt;
}

// Of each plane, in the visible picture; none where nobody tells it.
std::optional<simulator::PerPlane<double>> blackOf(LibRaw& raw, uint32_t phase) {
    auto const& colour = raw.imgdata.color;
    simulator::PerPlane<double> black{};
    uint32_t const rows = colour.cblack[4], columns = colour.cblack[5]; // of a pattern of its own
    for (uint32_t y = 0; y < 2; ++y)
        for (uint32_t x = 0; x < 2; ++x)
            black[simulator::SensorArray{.bayerPhase = phase}.planeAt(x, y)] =
                colour.black + colour.cblack[raw.COLOR(int(y), int(x)) & 3] +
                (rows != 0 && columns != 0 ? colour.cblack[6 + y % rows * columns + x % columns] : 0);
    bool const isTold = (colour.dng_levels.parsedfields & LIBRAW_DNGFM_BLACK) != 0 ||
                        *std::max_element(black.begin(), black.end()) > 0;
    return isTold ? std::optional(black) : std::nullopt;
}

std::optional<Told> readRawFile(QString const& file, QByteArray& bytes, QString* error) {
    auto const raw = std::make_unique<LibRaw>(); // large
    bool isDamaged = false;
    raw->set_dataerror_handler([](void* damaged, char const*, auto) { *static_cast<bool*>(damaged) = true; },
                               &isDamaged);
    auto const& sizes = raw->imgdata.sizes;
    int code = raw->open_buffer(bytes.data(), size_t(bytes.size()));
    std::optional<Told> told;
    if (code == LIBRAW_SUCCESS) {
        // Asked first, as above.
        if (told = roomFor(file, sizes.width, sizes.height, error); !told)
            return std::nullopt;
        code = raw->unpack();
    }
    if (code != LIBRAW_SUCCESS || isDamaged)
        return fail(file,
                    QStringLiteral("cannot be read as a raw picture: %1")
                        .arg(isDamaged ? "it is cut off, or damaged" : LibRaw::strerror(code)),
                    error);
    told->phase = phaseOf(*raw);
    if (!raw->imgdata.rawdata.raw_image || !told->phase)
        return fail(file, "it holds no mosaic of a Bayer pattern in red, green and blue", error);
    size_t const pitch = sizes.raw_pitch / 2;
    for (size_t y = 0; y < sizes.height; ++y)
        std::copy_n(raw->imgdata.rawdata.raw_image + (y + sizes.top_margin) * pitch + sizes.left_margin,
                    sizes.width, told->mosaic.samples.data() + y * sizes.width);
    told->black = blackOf(*raw, *told->phase);
    told->white = raw->imgdata.color.maximum;
    return told;
}

} // namespace

QImage shownPicture(QByteArray bytes) {
    Silence const silence;
    QBuffer buffer(&bytes);
    QImageReader reader(&buffer);
    // Asked first: few bytes can tell a picture that no memory holds, and half of a JPEG is shown.
    QSize const size = reader.size();
    bool const isTooLong = std::max(size.width(), size.height()) > int(kLongestSide);
    bool const isCut = reader.format() == "jpeg" && !bytes.right(kTail).contains("\xFF\xD9");
    return isTooLong || isCut || reader.format() == "tiff" ? QImage() : reader.read();
}

std::optional<uint32_t> phaseNamed(QString const& name) {
    int const phase = QStringList{"RGGB", "GRBG", "GBRG", "BGGR"}.indexOf(name.toUpper());
    return phase < 0 ? std::nullopt : std::optional(uint32_t(phase));
}

bool fillCoding(Coding& coding, QString const& profile, QString* error) {
    auto const camera = simulator::SimulatedCamera::open(profile, error);
    if (!camera)
        return false;
    CameraDescription const& told = camera->description();
    if (told.rawType != FrameType::Raw8 && told.rawType != FrameType::Raw12)
        return *error = profile + ": the sensor delivers no mosaic, as a picture holds one", false;
    if (!coding.black)
        coding.blackSource = QStringLiteral("--sensor ") + profile;
    Coding::Bare const bare{told.width, told.height, told.rawType == FrameType::Raw8 ? 8U : 16U};
    coding.bare = coding.bare.value_or(bare);
    coding.phase = coding.phase.value_or(told.bayerPhase);
    coding.black = coding.black.value_or(told.blackLevel);
    coding.white = coding.white.value_or(told.whiteLevel);
    coding.orientation = told.orientation;
    coding.unusableRows = told.unusableRows;
    return true;
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
    Silence const silence;
    auto bytes = files::read(file, kMostBytes, error);
    if (!bytes)
        return std::nullopt;
    QString const kind = QFileInfo(file).suffix().toLower();
    std::optional<Told> told = kind == "png"                     ? readPng(file, *bytes, error)
                               : kind == "tif" || kind == "tiff" ? readTiff(file, error)
                               : coding.bare && kind != "dng"    ? readBare(file, *coding.bare, *bytes, error)
                                                                 : readRawFile(file, *bytes, error);
    if (!told)
        return std::nullopt;
    Mosaic& mosaic = told->mosaic;
    auto const phase = coding.phase ? coding.phase : told->phase;
    auto const white = coding.white ? coding.white : told->white;
    if (coding.black)
        told->black.emplace().fill(*coding.black);
    if (!phase)
        return fail(file, "it does not tell its pattern; --phase tells it, such as RGGB", error);
    if (!told->black)
        return fail(file, "it tells no black level; --black tells it, in counts", error);
    if (!white)
        return fail(file, "it tells no white level; --white tells it, in counts", error);
    if (*std::max_element(told->black->begin(), told->black->end()) >= *white)
        return fail(file, "its white level is not above its black level", error);
    mosaic.bayerPhase = *phase ^ (coding.unusableRows & 1) << 1;
    mosaic.blackLevel = *told->black;
    mosaic.blackSource = coding.black ? coding.blackSource : QStringLiteral("the file");
    mosaic.whiteLevel = *white;
    mosaic.orientation = coding.orientation;
    mosaic.height -= coding.unusableRows;
    mosaic.samples.erase(mosaic.samples.begin(),
                         mosaic.samples.end() - std::ptrdiff_t(mosaic.height) * mosaic.width);
    return std::move(mosaic);
}
} // namespace shading
