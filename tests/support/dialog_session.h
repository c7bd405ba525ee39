#pragma once

#include "tests/support/fake_bench.h"
#include "tests/support/fake_libraries.h"
#include "tests/support/input_reader.h"

#include <QString>

class QDialog;
class QWidget;

namespace kestra {
class CalibrationPage;

/// The plug-in with a host and libraries whose answers come from a fuzz input. At its end everything is
/// deleted, and what must be balanced by then is checked. One lives at a time.
class DialogSession : public FakeBench {
public:
    explicit DialogSession(InputReader& answers);
    ~DialogSession();

    /// Makes the one application object; called before the first session.
    static void prepare();

    QDialog* open(uint32_t apiVersion = 5, QWidget* parent = nullptr);
    /// The page that frames go to; null when there is none.
    [[nodiscard]] static CalibrationPage* page();
    /// Runs one of the page's slots, when there is a page that has it.
    static void press(char const* slot);
    /// Types into a field of the page.
    static void type(char const* field, QString const& text);
    /// Runs one of the page's buttons, all told by number; the saves into the EEPROM are slow and the last.
    static void pressAny(uint8_t number);
    /// Delivers a frame whose type, sizes, pitch and pixels come from a fuzz input. When they hold together
    /// the pixels are really there and nothing around them may be touched; when they do not, nothing at all
    /// may be.
    static void deliverFrame(InputReader& input);
    /// Delivers displayed frames and raw ones, as good ones are.
    static void deliverGoodFrames(int displayed, int raw);
    /// Another input's answers from here on, with the host, the libraries and the headboard of the beginning.
    void beginAnew(InputReader& answers);
    /// New answers of the libraries: null, short and absurd ones among them.
    void changeLibraryAnswers();

    FakeLibraries libraries;

private:
    std::string m_partName;
};
} // namespace kestra
