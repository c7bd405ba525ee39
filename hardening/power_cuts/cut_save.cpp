#include "hardening/power_cuts/cut_save.h"

#include "headboard/eeprom_chain.h"
#include "headboard/headboard_eeprom.h"
#include "tests/support/fake_headboard.h"

using namespace kestra;

namespace power_cuts {
namespace {

using simulator::EepromContents;

class CutSave {
public:
    explicit CutSave(uint32_t number) : m_number(number), m_scene(randomScene(number)) {
        FakeHeadboard board(m_scene.before);
        int32_t const status = store(HeadboardEepromCreate(board.camera()), m_scene.save);
        m_length = board.eeprom.bytesWritten();
        m_before = report(m_scene.before).records;
        m_after = report(board.device).records;
        expect(status == kEepromOk && holds(board.device, m_scene.save),
               "without a cut the save stores what it should", m_length);
    }

    Tally run() {
        bool breaks = false;
        for (uint64_t cut = 1; cut < m_length; ++cut)
            breaks = tryCut(cut) == Remains::BrokenChain || breaks;
        m_tally.saves = m_length > 1 ? 1 : 0;
        m_tally.savesWithBreak = breaks ? 1 : 0;
        return m_tally;
    }

private:
    void expect(bool isKept, char const* promise, uint64_t cut) {
        if (!isKept)
            m_tally.failures.push_back("scene " + std::to_string(m_number) + ", cut after byte " +
                                       std::to_string(cut) + ": not so: " + promise);
    }

    EepromContents contentsAfterCut(uint64_t cut) {
        FakeHeadboard board(m_scene.before);
        board.eeprom.plan({DeviceFault::PowerCut, cut, true});
        EepromShare const eeprom = HeadboardEepromCreate(board.camera());
        int32_t const status = store(eeprom, m_scene.save);
        expect(status < 0, "the save reports its failure", cut);
        expect(board.eeprom.bytesWritten() == cut, "the power fails at this byte", cut);
        EepromContents const left = board.device;
        // Only the headboard lost its power: the program still has the image, and in it what was not written.
        board.plan(DeviceFault::None);
        bool const isStored = store(eeprom, m_scene.save) == kEepromOk;
        expect(isStored && report(board.device).records == m_after,
               "the same program, asked to save again, stores everything", cut);
        return left;
    }

    Remains tryCut(uint64_t cut) {
        EepromContents const left = contentsAfterCut(cut);
        Report const told = report(left);
        Remains const remains = classify(told, m_before, m_after);
        expect(told.isTruthful, "list and check say what is left", cut);
        expect(remains != Remains::BrokenChain || (!told.listIsClean && !told.checkIsClean),
               "list and check name a broken chain", cut);
        expectPresence(left, cut);
        Row& row = m_tally.rows[size_t(remains)];
        ++row.cuts;
        row.listNames += told.listIsClean ? 0 : 1;
        row.checkNames += told.checkIsClean ? 0 : 1;
        row.othersHarmed += harmsOthers(left, m_before, m_scene.save) ? 1 : 0;
        saveAgain(left, cut, row);
        startAnew(left, cut);
        return remains;
    }

    // A board with a broken chain is not taken for a blank one, which would be formatted in silence.
    void expectPresence(EepromContents const& left, uint64_t cut) {
        FakeHeadboard board(left);
        EepromState const presence = probeEeprom(*HeadboardEepromCreate(board.camera()));
        expect(presence == EepromState::Present && board.eeprom.bytesWritten() == 0,
               "a test for presence leaves the board as it is", cut);
    }

    // The power is back, the program starts again, and somebody presses the same button.
    void saveAgain(EepromContents const& left, uint64_t cut, Row& row) {
        FakeHeadboard board(left);
        int32_t const status = store(HeadboardEepromCreate(board.camera()), m_scene.save);
        if (status != kEepromOk) {
            expect(board.eeprom.bytesWritten() == 0, "a save that fails on what is left writes nothing", cut);
            return;
        }
        Report const told = report(board.device);
        ++row.nextSaves;
        row.mended += told.checkIsClean ? 1 : 0;
        expect(told.isWhole, "a successful save leaves a whole chain", cut);
        expect(holds(board.device, m_scene.save), "what a successful save stored is found", cut);
    }

    void startAnew(EepromContents const& left, uint64_t cut) {
        FakeHeadboard board(left);
        EepromShare const eeprom = HeadboardEepromCreate(board.camera());
        bool const done = EepromFormat(*eeprom, -1) == kEepromOk && store(eeprom, m_scene.save) == kEepromOk;
        Report const told = report(board.device);
        expect(done && told.checkIsClean && told.records.size() == m_scene.save.size() &&
                   holds(board.device, m_scene.save),
               "a format mends everything", cut);
    }

    uint32_t m_number;
    Scene m_scene;
    uint64_t m_length = 0; ///< bytes that the uncut save writes
    Records m_before, m_after;
    Tally m_tally;
};

} // namespace

Tally cutEverywhere(uint32_t sceneNumber) {
    return CutSave(sceneNumber).run();
}

} // namespace power_cuts
