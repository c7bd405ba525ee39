#include "tests/support/dialog_session.h"

#include "apga_page/lens_assist_apga.h"
#include "lsc_page/lens_assist.h"
#include "plugin/instance.h"
#include "tests/support/must_hold.h"
#include "wizard/dialogs.h"

#include <QApplication>
#include <QComboBox>
#include <QLineEdit>
#include <QPointer>
#include <QTemporaryDir>
#include <map>

namespace kestra {
namespace {
InputReader* answers = nullptr;
Shadefit fakes;
volatile uint8_t sink = 0;

// The library reads all that it is told of.
void readWhole(void const* frame, uint64_t bytes) {
    auto const* const first = static_cast<uint8_t const*>(frame);
    uint8_t sum = 0;
    for (uint64_t i = 0; i < bytes; ++i)
        sum = uint8_t(sum ^ first[i]);
    sink = sum;
}

// Bytes of a pixel by calibration: only the library knows by the sensor what its page hands over as 8 bits.
std::map<sf_Handle*, uint64_t> bytesPerPixel;

sf_Handle* create(uint32_t kind, uint32_t variant, int32_t minusOne) {
    sf_Handle* const made = fakes.sf_Create(kind, variant, minusOne);
    bytesPerPixel[made] = 2;
    return made;
}

sf_Handle* create2(void const* sensorData, uint32_t kind, uint32_t variant, uint32_t bits) {
    constexpr uint32_t kRgbInputKind = 16;
    sf_Handle* const made = fakes.sf_Create2(sensorData, kind, variant, bits);
    bytesPerPixel[made] = kind == kRgbInputKind ? 4 : 1;
    return made;
}

void destroy(sf_Handle* handle) {
    bytesPerPixel.erase(handle);
    fakes.sf_Destroy(handle);
}

int readBayer(sf_Handle* handle, void const* frame, uint32_t width, uint32_t height, uint32_t bits,
              uint32_t phase, uint32_t orientation, uint32_t zero, int32_t a, int32_t b) {
    readWhole(frame,
              uint64_t{width} * height * std::max<uint64_t>(bytesPerPixel.at(handle), bits > 8 ? 2 : 1));
    return fakes.sf_SetInputImage2(handle, frame, width, height, bits, phase, orientation, zero, a, b);
}

int readYcbcr(sf_Handle* handle, void const* frame, uint32_t width, uint32_t height,
              sf_YcbcrInput const* coding, int32_t a, int32_t b) {
    readWhole(frame, uint64_t{width} * height * 2);
    return fakes.sf_SetInputImageYcbcr(handle, frame, width, height, coding, a, b);
}

// Of all sessions, as a fuzzer makes thousands a minute.
QString sessionFolder() {
    static QTemporaryDir const folder(QDir(QStringLiteral("/dev/shm")).exists()
                                          ? QStringLiteral("/dev/shm/fuzz-XXXXXX")
                                          : QDir::tempPath() + QStringLiteral("/fuzz-XXXXXX"));
    return folder.path();
}

constexpr char const* kButtons[] = {"OnBnClickedAe",
                                    "OnBnClickedAwb",
                                    "OnBnClickedCalibrate",
                                    "OnBnClickedCU",
                                    "OnBnClickedRunall",
                                    "OnBnClickedStartover",
                                    "OnBnClickedFilesave",
                                    "OnBnClicked_LensCalibSetup",
                                    "OnBnClickedIncandescent_Image",
                                    "OnBnClickedFluorescent_Image",
                                    "OnBnClickedDaylight_Image",
                                    "OnBnClickedGraph",
                                    "OnBnClickedBrowse",
                                    "OnBnClickedEnableLC",
                                    "OnUpdateStatus",
                                    "OnBnClickedPromsave"};
} // namespace

void DialogSession::prepare() {
    static int argc = 1;
    static char name[] = "fuzz";
    static char* argv[] = {name, nullptr};
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    static auto* const application = new QApplication(argc, argv); // never deleted: Qt's statics go first
    (void)application;
    FakeBench(sessionFolder())
        .writeIni("[Lens Calibration Setup]\nREG = 1, 2\n[Hidden: Lens Calibration Verify]\n");
    qInstallMessageHandler([](QtMsgType, QMessageLogContext const&, QString const&) {});
}

DialogSession::DialogSession(InputReader& input) : FakeBench(sessionFolder()) {
    fakes = shadefit();
    Shadefit table = fakes;
    table.sf_Create = create;
    table.sf_Create2 = create2;
    table.sf_Destroy = destroy;
    table.sf_SetInputImage2 = readBayer;
    table.sf_SetInputImageYcbcr = readYcbcr;
    installShadefit(table);
    beginAnew(input);
    chooseResultFolder.replace([] { return QString::fromStdString(answers->text()); });
    sensor.variant = 0;
    sensor.camera = libraries.camera();
}

DialogSession::~DialogSession() {
    host.onCall = nullptr;
    QPointer<CalibrationPage> const last = page();
    if (last)
        MUST_HOLD(last->state().updateDepth == 0);
    while (!QApplication::topLevelWidgets().isEmpty())
        delete QApplication::topLevelWidgets().first();
    // Whoever deletes the dialog, the instance does not keep it.
    MUST_HOLD(!last && !page() && !kestraMfr().g_wizard);
    discardEeprom(kestraMfr().g_headboardEeprom);
    kestraMfr().g_parentWidget = nullptr;
    MUST_HOLD(host.isBalanced());
    MUST_HOLD(libraries.handlesAlive == 0);
    chooseResultFolder.replace({});
}

void DialogSession::beginAnew(InputReader& input) {
    answers = &input;
    resetHost();
    libraries.resetAnswers();
    FakeHeadboard& board = libraries.headboard;
    board.registers.clear();
    board.device.fill(0xFF);
    board.deviceAddress = 0xA8;
    board.plan(DeviceFault::None);
    discardEeprom(kestraMfr().g_headboardEeprom);
    for (auto const& [reg, bitfield] :
         {std::pair{"POLY_SC_ENABLE", "ENABLE"}, std::pair{"CAM_PGA_PGA_CONTROL", "CAM_PGA_PGA_ENABLE"}}) {
        board.add(reg, 0, 0, 0x3600, 2);
        board.addBitfield(reg, bitfield, 0x8000);
    }
    libraries.description.imageWidth = 64;
    libraries.description.imageHeight = 48;
}

QDialog* DialogSession::open(uint32_t apiVersion, QWidget* parent) {
    return OpenQtDialog(apiVersion, parent, &sensor, &services);
}

CalibrationPage* DialogSession::page() {
    if (LensAssist* const found = kestraMfr().g_lensAssist)
        return found;
    return kestraMfr().g_lensAssistApga;
}

void DialogSession::press(char const* slot) {
    CalibrationPage* const found = page();
    if (found && found->metaObject()->indexOfSlot((std::string(slot) + "()").c_str()) >= 0)
        QMetaObject::invokeMethod(found, slot);
}

void DialogSession::type(char const* field, QString const& text) {
    CalibrationPage* const found = page();
    if (!found)
        return;
    if (auto* const edit = found->findChild<QLineEdit*>(QLatin1String(field)))
        edit->setText(text);
    else if (auto* const box = found->findChild<QComboBox*>(QLatin1String(field)))
        box->setEditText(text);
}

void DialogSession::pressAny(uint8_t number) { press(kButtons[number % std::size(kButtons)]); }

void DialogSession::changeLibraryAnswers() {
    constexpr int kResults[] = {0, 0, 0, 1, -1, -2, 12, INT32_MIN};
    libraries.createsHandle = !answers->chance(8);
    libraries.inputAnswer = !answers->chance(8);
    libraries.solutionAnswer = answers->pick(kResults);
    libraries.apgaAnswer = answers->pick(kResults);
    libraries.fileAnswer = answers->pick(kResults);
    libraries.hasList = !answers->chance(8);
    libraries.hasDescription = !answers->chance(8);
    libraries.systemOnChip = answers->chance(2);
    libraries.entries.resize(answers->byte() % 32, {answers->word(), answers->word(), answers->word()});
    constexpr int32_t kOddCounts[] = {0, -1, INT32_MIN, 1};
    libraries.list = {int32_t(libraries.entries.size()), libraries.entries.data()};
    if (answers->chance(4))
        libraries.list.count = std::min(libraries.list.count, answers->pick(kOddCounts));
    if (answers->chance(8))
        libraries.list = {int32_t(answers->number()), nullptr};
    m_partName = answers->text();
    libraries.description.name = answers->chance(4) ? nullptr : m_partName.c_str();
    libraries.description.imageWidth = answers->byte();
    libraries.description.imageHeight = answers->byte();
    libraries.description.registerAddressWidth = answers->number();
    libraries.description.registerDataWidth = answers->number();
    libraries.description.secondaryMaps = answers->number();
    libraries.headboard.deviceAddress = answers->chance(4) ? 0 : 0xA8;
}
} // namespace kestra
