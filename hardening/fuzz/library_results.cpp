// Results of library calls: null, short and absurd ones, changing from call to call, while a page calibrates
// and saves. What the page reports as done has been done.

#include "calibration/calibration_page.h"
#include "hardening/fuzz/fuzz_frames.h"
#include "hardening/fuzz/fuzz_target.h"
#include "hardening/fuzz/open_dialogs.h"
#include "headboard/eeprom_chain.h"
#include "headboard/record_format.h"
#include "plugin/instance.h"

#include <QComboBox>
#include <utility>

using namespace kestra;

namespace {
constexpr int kMostSteps = 10;

// The registers that a tick wrote are those of the library's list, all of them or none.
void tick(DialogSession& session) {
    size_t const before = session.host.calls("writeListEntry").size();
    DialogSession::press("start");
    size_t const written = session.host.calls("writeListEntry").size() - before;
    size_t const select = kestraMfr().g_lensAssistApga ? 1 : 0;
    MUST_HOLD(written == 0 || written == size_t(session.libraries.list.count) + select);
}

// Saves, and reads the device as the next start would.
void saveToEeprom(DialogSession& session, InputReader& input) {
    constexpr DeviceFault kFaults[] = {DeviceFault::None, DeviceFault::None, DeviceFault::NoAcknowledge,
                                       DeviceFault::TransportFailed};
    CalibrationPage* const page = DialogSession::page();
    FakeHeadboard& board = session.libraries.headboard;
    DeviceFault const fault = input.pick(kFaults);
    uint8_t const ahead = input.byte();
    board.plan(fault, ahead, input.chance(2));
    StepState const before = page->state().promState;
    DialogSession::press("OnBnClickedPromsave");
    board.plan(DeviceFault::None);
    if (page->state().promState != kDone || before == kDone)
        return;
    QByteArray const label =
        page->findChild<QComboBox*>(QStringLiteral("Prom_Label"))->currentText().toLatin1();
    EepromShare const eeprom = HeadboardEepromCreate(session.libraries.camera());
    MUST_HOLD(EepromFindRecord(*eeprom, kRecordPga, label.left(8).constData(), 0) > 0);
}

void saveToFile(DialogSession& session) {
    CalibrationPage* const page = DialogSession::page();
    StepState const before = page->state().fileState;
    DialogSession::press("OnBnClickedFilesave");
    if (page->state().fileState == kDone && before != kDone)
        MUST_HOLD(session.libraries.fileAnswer == 0);
}

// The registers that the sensor's map has, of odd sizes.
void addRegisters(FakeHeadboard& board, InputReader& input) {
    for (char const* const name : {"P_GR_P0Q0", "P_RD_P0Q0", "PGA_CURRENT_ZONE", "CENTER_ROW"})
        if (!input.chance(4))
            board.add(name, input.byte() % 10, input.number(), input.number(), input.number(), input.word());
}
} // namespace

int LLVMFuzzerInitialize(int*, char***) {
    DialogSession::prepare();
    return 0;
}

int LLVMFuzzerTestOneInput(uint8_t const* data, size_t size) {
    InputReader input({data, size});
    static auto* const dialogs = new OpenDialogs(input, {200, 16, 72, 68, 76});
    dialogs->choose(input);
    DialogSession& session = dialogs->session;
    session.sensor.variant = input.byte() % 4;
    if (input.chance(2))
        session.changeLibraryAnswers();
    addRegisters(session.libraries.headboard, input);
    bool isSaved = false; // once, as it takes longer than all else
    for (int i = 0; i < kMostSteps && !input.isUsedUp(); ++i) {
        // A step leaves no bracket open, and only its own calls are of interest: a save has thousands.
        MUST_HOLD(session.host.isBalanced());
        session.host.log.clear();
        uint8_t const next = input.byte();
        switch (next % 8) {
        case 0:
            session.changeLibraryAnswers();
            break;
        case 1:
            saveToFile(session);
            break;
        case 2:
            if (next > 192 && !std::exchange(isSaved, true))
                saveToEeprom(session, input);
            break;
        case 3:
            DialogSession::pressAny(next / 8 % 15);
            break;
        case 4:
            // Everything that a calibration waits for.
            for (int const button : {8, 9, 10, 2}) {
                DialogSession::pressAny(uint8_t(button));
                deliverGoodFrames(0, 1);
            }
            deliverGoodFrames(session.sensor.sensorKind == 16 ? 1 : 0, 1);
            break;
        case 5:
            deliverFrame(input);
            break;
        default:
            deliverGoodFrames(6, 1);
            tick(session);
            break;
        }
    }
    dialogs->checkBalance();
    return 0;
}
