// Whole call sequences over the five entries, with hostile services: they answer garbage, they are missing,
// and they call back into the plug-in or delete its dialog, its page or the dialog's parent. A short input is
// played again until a sequence has its calls.

#include "calibration/calibration_page.h"
#include "hardening/fuzz/fuzz_target.h"
#include "published/entries.h"
#include "tests/support/dialog_session.h"

#include <QDialog>
#include <QPointer>
#include <cstring>

using namespace kestra;

namespace {
constexpr int kCallsOfASequence = 100;
constexpr int kDeepest = 2; // of calls from inside services

uint64_t calls = 0;
uint64_t sequences = 0;

InputReader* answers = nullptr;
HostServices fakeServices;
bool isHostile = false;

template <typename Value>
Value orGarbage(Value value) {
    return isHostile ? Value(answers->number()) : value;
}

// Reads that answer what the input says; the fake host is asked too, so that its log and its hook see them.
void answerGarbage(HostServices& table) {
    table.readRegister = [](char const* reg, char const* bitfield, uint32_t one) {
        return orGarbage(fakeServices.readRegister(reg, bitfield, one));
    };
    table.readState = [](char const* variable) { return orGarbage(fakeServices.readState(variable)); };
    table.readIntSetting = [](char const* key, int32_t fallback) {
        return orGarbage(fakeServices.readIntSetting(key, fallback));
    };
    table.readTextSetting = [](char const* key, char* buffer, uint32_t size, char const* fallback) {
        fakeServices.readTextSetting(key, buffer, size, fallback);
        // Anything up to the last byte of the buffer, without an end; mostly not where the ini file is told.
        if (isHostile && (std::strcmp(key, "IniFileName") != 0 || answers->chance(16)))
            for (uint32_t i = 0; i < size; ++i)
                buffer[i] = char(answers->byte());
    };
}

class Sequence {
public:
    Sequence(DialogSession& session, InputReader& input) : m_session(session), m_input(input) {}

    void play() {
        fakeServices = m_session.services;
        answers = &m_input;
        m_session.host.onCall = [this](std::string const&) { insideService(); };
        for (open(); m_left > 0;) {
            if (!(m_dialog && DialogSession::page()) && m_input.chance(4))
                open();
            call();
        }
        m_session.host.onCall = nullptr;
        delete m_parent.data();
    }

private:
    void chooseServices() {
        HostServices table = fakeServices;
        answerGarbage(table);
        isHostile = m_input.chance(2);
        for (int missing = m_input.byte() % 4; missing > 0; --missing) {
            size_t const slot = m_input.byte() % (sizeof table / sizeof(void*));
            std::memset(reinterpret_cast<unsigned char*>(&table) + slot * sizeof(void*), 0, sizeof(void*));
        }
        if (!table.beginChanges || !table.endChanges) // half a bracket could not be counted
            table.beginChanges = table.endChanges = nullptr;
        m_session.services = table;
        constexpr uint32_t kKinds[] = {200, 72, 68, 76, 97, 36, 16, 33, 154};
        m_session.sensor.sensorKind = m_input.pick(kKinds);
        m_session.sensor.variant = m_input.byte() % 3;
        m_session.sensor.name = m_input.chance(4) ? nullptr : "%1 %2";
        m_session.sensor.camera = m_input.chance(4) ? nullptr : m_session.libraries.camera();
    }

    // Qt cannot bear that a widget goes while it is being built or shown, or its parent while the widget
    // goes.
    [[nodiscard]] bool mayDelete() const {
        if (m_isDeleting)
            return false;
        CalibrationPage const* const page = DialogSession::page();
        return m_opening == 0 || (m_opening == 1 && page && page->state().active == 0);
    }

    void open() {
        if (m_opening > 0)
            return;
        ++m_opening;
        if (!m_parent && m_input.chance(2))
            m_parent = new QWidget;
        chooseServices();
        uint32_t const version = m_input.chance(8) ? m_input.number() : 5;
        m_dialog = m_session.open(version, m_parent);
        --m_opening;
    }

    void remove() {
        if (!mayDelete())
            return;
        m_isDeleting = true;
        QObject* const doomed[] = {m_parent, m_dialog, DialogSession::page()};
        delete m_input.pick(doomed);
        m_isDeleting = false;
    }

    void call() {
        --m_left;
        ++calls;
        uint8_t const what = m_input.byte();
        switch (what % 16) {
        case 0:
            return what > 128 ? open() : CloseDialog();
        case 1:
            return what > 160 ? remove() : m_session.changeLibraryAnswers();
        case 2:
            return RegisterChanged(m_input.number(), m_input.number());
        case 3: {
            constexpr char const* kFields[] = {"GoodCU", "Save_Dir", "Prom_Label", "FallOff"};
            return DialogSession::type(m_input.pick(kFields), QString::fromLatin1(m_input.text().c_str()));
        }
        case 4:
        case 5:
        case 6:
            return DialogSession::pressAny(what / 16);
        case 7:
        case 8:
            return DialogSession::press("start");
        case 9:
        case 10:
            return DialogSession::deliverGoodFrames(5, 1);
        case 11:
            // A calibration as far as the host's side can bring it.
            for (uint8_t const button : std::initializer_list<uint8_t>{8, 9, 10, 2})
                DialogSession::pressAny(button);
            return;
        default:
            return DialogSession::deliverFrame(m_input);
        }
    }

    void insideService() {
        if (m_depth >= kDeepest || m_left <= 0 || !m_input.chance(64))
            return;
        ++m_depth;
        if (m_input.chance(4))
            remove();
        else
            call();
        --m_depth;
    }

    DialogSession& m_session;
    InputReader& m_input;
    QPointer<QWidget> m_parent;
    QPointer<QDialog> m_dialog;
    int m_depth = 0;
    int m_left = kCallsOfASequence;
    int m_opening = 0;
    bool m_isDeleting = false;
};
} // namespace

int LLVMFuzzerInitialize(int*, char***) {
    DialogSession::prepare();
    std::atexit([] {
        std::fprintf(stderr, "calls: %llu in %llu sequences\n", static_cast<unsigned long long>(calls),
                     static_cast<unsigned long long>(sequences));
    });
    return 0;
}

int LLVMFuzzerTestOneInput(uint8_t const* data, size_t size) {
    InputReader input({data, size}, InputReader::AtEnd::Repeat);
    DialogSession session(input);
    ++sequences;
    Sequence(session, input).play();
    return 0;
}
