// Calibrations and saves, while both libraries answer null, short and absurd results that change from call to
// call, and frames of any type, size, pitch and sequence come in every phase. What the page reports as done
// has been done, and nothing around the pixels of a frame is touched.

#include "apga_page/lens_assist_apga.h"
#include "hardening/fuzz/fuzz_target.h"
#include "headboard/eeprom_chain.h"
#include "headboard/record_format.h"
#include "lsc_page/lens_assist.h"
#include "plugin/instance.h"
#include "tests/support/dialog_session.h"

#include <QComboBox>
#include <utility>

using namespace kestra;

namespace {
constexpr int kMostSteps = 24;

/// Dialogs of several kinds of sensor that stay for all runs, each of which begins with one that is started
/// over: opening takes longer than a run.
struct OpenDialogs {
    explicit OpenDialogs(InputReader& input) : session(input) {
        for (uint32_t const kind : {200, 16, 72, 68, 76, 33}) {
            session.sensor.sensorKind = kind;
            session.open();
            pages.push_back({kind, std::exchange(kestraMfr().g_lensAssist, nullptr),
                             std::exchange(kestraMfr().g_lensAssistApga, nullptr)});
        }
    }
    /// Makes one of them the plug-in's dialog, with the host, the libraries and the headboard of the
    /// beginning.
    void choose(InputReader& input) {
        Page const& page = pages[input.byte() % pages.size()];
        session.sensor.sensorKind = page.kind;
        kestraMfr().g_lensAssist = page.lensAssist;
        kestraMfr().g_lensAssistApga = page.lensAssistApga;
        session.beginAnew(input);
        DialogSession::press("OnBnClickedStartover");
        session.host.log.clear();
    }

    struct Page {
        uint32_t kind;
        LensAssist* lensAssist;
        LensAssistApga* lensAssistApga;
    };
    DialogSession session;
    std::vector<Page> pages;
};

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

// The saves into the EEPROM take longer than all else, so there is one at most.
void step(DialogSession& session, InputReader& input, bool& isSaved) {
    uint8_t const next = input.byte();
    switch (next % 8) {
    case 0:
        return session.changeLibraryAnswers();
    case 1:
        return saveToFile(session);
    case 2:
        if (next > 192 && !std::exchange(isSaved, true))
            saveToEeprom(session, input);
        return;
    case 3:
        return DialogSession::pressAny(next / 8 % 15);
    case 4:
        // Everything that a calibration waits for.
        for (int const button : {8, 9, 10, 2}) {
            DialogSession::pressAny(uint8_t(button));
            DialogSession::deliverGoodFrames(0, 1);
        }
        return DialogSession::deliverGoodFrames(session.sensor.sensorKind == 16 ? 1 : 0, 1);
    case 5:
        return DialogSession::deliverFrame(input);
    case 6:
        DialogSession::deliverGoodFrames(6, 1);
        return tick(session);
    default:
        return tick(session);
    }
}
} // namespace

int LLVMFuzzerInitialize(int*, char***) {
    DialogSession::prepare();
    return 0;
}

int LLVMFuzzerTestOneInput(uint8_t const* data, size_t size) {
    InputReader input({data, size});
    static auto* const dialogs = new OpenDialogs(input);
    dialogs->choose(input);
    DialogSession& session = dialogs->session;
    uint8_t const choice = input.byte();
    session.sensor.variant = choice % 4;
    // Low limits, so that rings are painted.
    DialogSession::type("GoodCU", QString::number(choice / 4 % 4));
    if (input.chance(2))
        session.changeLibraryAnswers();
    addRegisters(session.libraries.headboard, input);
    bool isSaved = false;
    for (int i = 0; i < kMostSteps && !input.isUsedUp(); ++i) {
        step(session, input, isSaved);
        // A step leaves no bracket open, and only its own calls are of interest: a save has thousands.
        MUST_HOLD(session.host.isBalanced());
        session.host.log.clear();
    }
    MUST_HOLD(DialogSession::page() && DialogSession::page()->state().updateDepth == 0);
    // A page keeps at most the calibration that it shows, and lets go of it when it starts over.
    MUST_HOLD(session.libraries.handlesAlive <= 1);
    DialogSession::press("OnBnClickedStartover");
    MUST_HOLD(session.libraries.handlesAlive == 0);
    return 0;
}
