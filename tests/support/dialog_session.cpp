#include "tests/support/dialog_session.h"

#include "apga_page/lens_assist_apga.h"
#include "lsc_page/lens_assist.h"
#include "plugin/instance.h"
#include "tests/support/must_hold.h"
#include "tests/support/told_frame.h"
#include "wizard/dialogs.h"

#include <QApplication>
#include <QComboBox>
#include <QLineEdit>
#include <QPointer>

namespace kestra {
namespace {
InputReader* answers = nullptr;

QList<QByteArray> const kButtons =
    QByteArray("OnBnClickedAe OnBnClickedAwb OnBnClickedCalibrate OnBnClickedCU OnBnClickedRunall "
               "OnBnClickedStartover OnBnClickedFilesave OnBnClicked_LensCalibSetup "
               "OnBnClickedIncandescent_Image OnBnClickedFluorescent_Image OnBnClickedDaylight_Image "
               "OnBnClickedGraph OnBnClickedBrowse OnBnClickedEnableLC OnUpdateStatus OnBnClickedPromsave")
        .split(' ');

} // namespace

void DialogSession::prepare() {
    static int argc = 1;
    static char name[] = "fuzz";
    static char* argv[] = {name, nullptr};
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    static auto* const application = new QApplication(argc, argv); // never deleted: Qt's statics go first
    (void)application;
    qInstallMessageHandler([](QtMsgType, QMessageLogContext const&, QString const&) {});
}

DialogSession::DialogSession(InputReader& input) {
    writeIni("[Lens Calibration Setup]\nREG = 1, 2\n[Hidden: Lens Calibration Verify]\n");
    beginAnew(input);
    chooseResultFolder.replace([] { return QString::fromStdString(answers->text()); });
    sensor.variant = 0;
    sensor.camera = libraries.camera();
}

DialogSession::~DialogSession() {
    host.onCall = nullptr;
    QPointer<CalibrationPage> const last = page();
    MUST_HOLD(!last || last->state().updateDepth == 0);
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
    auto* const found = page() ? page()->findChild<QWidget*>(QLatin1String(field)) : nullptr;
    if (auto* const edit = qobject_cast<QLineEdit*>(found))
        edit->setText(text);
    else if (auto* const box = qobject_cast<QComboBox*>(found))
        box->setEditText(text);
}

void DialogSession::pressAny(uint8_t number) { press(kButtons[number % kButtons.size()]); }

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

void DialogSession::deliverFrame(InputReader& input) {
    constexpr uint32_t kTypes[] = {ToldFrame::kRgb32, ToldFrame::kRgb32, ToldFrame::kRaw12,
                                   ToldFrame::kYcbcr, ToldFrame::kRaw8,  0,
                                   0xFFFFFFFF,        ToldFrame::kRgb32};
    ToldFrame frame{.type = input.pick(kTypes)};
    bool const asRgb = input.chance(2), hasPixels = !input.chance(16);
    frame.width = int32_t(input.number());
    frame.height = int32_t(input.number());
    uint32_t const rowBytes = uint32_t(frame.width) * uint32_t(frame.bytesPerPixel()), way = input.byte() % 4;
    frame.pitch = int32_t(way == 0   ? input.number()
                          : way == 1 ? 0U - rowBytes - input.byte()
                                     : rowBytes + input.byte() % 8);
    std::vector<uint8_t> pixels;
    if (hasPixels && frame.holdTogether()) {
        // A host tells the truth about the memory that it hands over, so the sizes have to fit into some.
        constexpr int64_t kMostBytes = 65536;
        if (frame.step() > kMostBytes) {
            frame.width = 1 + int32_t(uint32_t(frame.width) % 1024);
            frame.pitch = int32_t(frame.rowBytes());
        }
        frame.height =
            int32_t(std::min(int64_t{frame.height}, kMostBytes / std::max<int64_t>(frame.step(), 1)));
        // Exactly as many, so that a sanitizer sees a byte before or behind them.
        pixels.resize(size_t(frame.bytes()));
        uint32_t const pattern = input.word();
        for (size_t i = 0; i + 4 <= pixels.size(); i += 4)
            std::memcpy(&pixels[i], &pattern, 4);
        for (int spots = input.byte() % 8; spots > 0; --spots)
            pixels[input.word() % pixels.size()] = input.byte();
    }
    MUST_HOLD(frame.deliver(pixels, asRgb));
}

void DialogSession::deliverGoodFrames(int displayed, int raw) {
    constexpr uint8_t kDisplayed[] = {0, 0, 0, 3, 32, 3, 24, 2, 0, 0x80, 0x90, 0x70, 0};
    constexpr uint8_t kRaw[] = {2, 0, 0, 3, 32, 3, 24, 2, 0, 0x08, 0x09, 0x07, 0};
    for (int i = 0; i < displayed + raw; ++i) {
        InputReader reader(i < displayed ? std::span<uint8_t const>(kDisplayed) : kRaw);
        deliverFrame(reader);
    }
}
} // namespace kestra
