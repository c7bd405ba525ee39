#include "simulator/host/run/script_run.h"

#include "simulator/files/interruption.h"
#include "simulator/host/recording/script.h"
#include "simulator/host/report/output_folder.h"
#include "simulator/host/run/progress_report.h"
#include "simulator/host/run/script_report.h"
#include "simulator/host/session/headless_dialog.h"
#include "simulator/host/session/message_log.h"
#include "simulator/host/session/session.h"

#include <QCoreApplication>
#include <QDialog>
#include <QDir>
#include <QFileInfo>
#include <QPixmap>

namespace pictara {
namespace {
class ScriptRun {
public:
    ScriptRun(Session& session, Options const& options, HeadlessDialog const& dialog)
        : m_session(session), m_options(options), m_dialog(dialog.dialog), m_page(dialog.page),
          m_progress(stdout, dialog.page) {}

    /// False with the cause in `error`.
    [[nodiscard]] bool run(ScriptCommand const& command, QString* error);
    void say(QString const& text) { m_progress.say(text); }
    [[nodiscard]] RunProgress const& state() const { return m_state; }
    /// A wait ended in vain.
    [[nodiscard]] bool hasTimedOut() const { return m_hasTimedOut; }

private:
    [[nodiscard]] bool press(QStringList const& words, QString* error);
    [[nodiscard]] bool set(QStringList const& words, QString* error);
    void setLight(QStringList const& words);
    [[nodiscard]] bool plan(QString const& fault, QString* error);
    [[nodiscard]] bool expect(QStringList const& words, QString* error);
    [[nodiscard]] bool await(QStringList const& words, QString* error);
    [[nodiscard]] bool savePicture(QString const& file, QString* error);
    void deliverFrames(int count);
    void tick(int count);
    void frame();

    Session& m_session;
    Options const& m_options;
    QDialog* m_dialog;
    DialogPage m_page;
    ProgressReport m_progress;
    RunProgress m_state;
    bool m_hasTimedOut = false;
};

bool has(DialogPage const& page, QString const& name, QString* error) {
    bool const isThere = page.has(name.toLatin1().constData());
    if (!isThere)
        *error = QStringLiteral("the dialog has no \"%1\"").arg(name);
    return isThere;
}

bool ScriptRun::run(ScriptCommand const& command, QString* error) {
    QStringList const& words = command.arguments;
    switch (command.verb) {
    case ScriptVerb::Press:
        return press(words, error);
    case ScriptVerb::Set:
        return set(words, error);
    case ScriptVerb::Light:
        setLight(words);
        return true;
    case ScriptVerb::Frames:
        deliverFrames(words[0].toInt());
        return true;
    case ScriptVerb::Tick:
        tick(words.isEmpty() ? 1 : words[0].toInt());
        return true;
    case ScriptVerb::Fault:
        return plan(words[0], error);
    case ScriptVerb::Expect:
        return expect(words, error);
    case ScriptVerb::Wait:
        return await(words, error);
    case ScriptVerb::Screenshot:
        return savePicture(words[0], error);
    }
    return true;
}

bool ScriptRun::press(QStringList const& words, QString* error) {
    QByteArray const name = words[0].toLatin1();
    if (!has(m_page, words[0], error))
        return false;
    bool const isPressed = m_page.press(name.constData());
    if (!isPressed)
        *error = QStringLiteral("\"%1\" cannot be pressed now").arg(words[0]);
    return isPressed;
}

bool ScriptRun::set(QStringList const& words, QString* error) {
    QByteArray const name = words[0].toLatin1();
    if (!has(m_page, words[0], error))
        return false;
    if (m_page.choose(name.constData(), words[1]) || m_page.type(name.constData(), words[1]))
        return true;
    bool const isSwitch = words[1] == QLatin1String("on") || words[1] == QLatin1String("off");
    bool const isWanted = words[1] == QLatin1String("on");
    if (isSwitch && m_page.choices(name.constData()).isEmpty() &&
        (m_page.isChecked(name.constData()) == isWanted || m_page.press(name.constData())))
        return true;
    QStringList const choices = m_page.choices(name.constData());
    QString const offered =
        choices.isEmpty() ? QString() : QStringLiteral("; it offers ") + choices.join(QLatin1String(", "));
    *error = QStringLiteral("\"%1\" cannot be set to \"%2\" now%3").arg(words[0], words[1], offered);
    return false;
}

void ScriptRun::setLight(QStringList const& words) {
    simulator::Light light = m_session.camera().light();
    light.colourTemperature = words[0].toDouble();
    if (words.size() > 1)
        light.level = words[1].toDouble();
    m_session.setLight(light);
}

bool ScriptRun::plan(QString const& fault, QString* error) {
    if (!m_session.camera().hasEeprom()) {
        *error = QStringLiteral("the camera has no EEPROM");
        return false;
    }
    auto const wish = parseFaultWish(fault);
    if (wish && m_session.injectFault(*wish))
        return true;
    *error = QStringLiteral("there is no fault \"%1\"; known are %2")
                 .arg(fault, simulator::SimulatedCamera::faultNames().join(QLatin1String(", ")));
    return false;
}

bool ScriptRun::expect(QStringList const& words, QString* error) {
    bool const isWanted = words[0] == QLatin1String("enabled");
    bool const isOfEnabling = isWanted || words[0] == QLatin1String("disabled");
    QString const& name = isOfEnabling ? words[1] : words[0];
    QByteArray const widget = name.toLatin1();
    if (!has(m_page, name, error))
        return false;
    QString const text = m_page.text(widget.constData());
    bool const isSo =
        isOfEnabling ? m_page.isEnabled(widget.constData()) == isWanted : matches(text, words[1]);
    if (!isSo)
        *error = isOfEnabling ? QStringLiteral("\"%1\" is not %2").arg(name, words[0])
                              : QStringLiteral("\"%1\" shows \"%2\", not \"%3\"").arg(name, text, words[1]);
    return isSo;
}

bool ScriptRun::await(QStringList const& words, QString* error) {
    QByteArray const name = words[0].toLatin1();
    if (!has(m_page, words[0], error))
        return false;
    int const bound = words.size() > 2 ? words[2].toInt() : m_options.maxFrames;
    for (int frames = 0; !matches(m_page.text(name.constData()), words[1]); ++frames) {
        if (files::isInterrupted())
            return true;
        if (frames == bound) {
            *error = QStringLiteral("after %1 frames \"%2\" shows \"%3\", not \"%4\"")
                         .arg(QString::number(bound), words[0], m_page.text(name.constData()), words[1]);
            m_hasTimedOut = true;
            return false;
        }
        frame();
    }
    return true;
}

bool ScriptRun::savePicture(QString const& file, QString* error) {
    QFileInfo const info(QDir(m_session.outputFolder()), file);
    OutputFolder folder(info.absolutePath());
    folder.savePicture(info.fileName(), m_dialog->grab().toImage());
    if (folder.failed())
        *error = QStringLiteral("the picture cannot be saved");
    return !folder.failed();
}

void ScriptRun::deliverFrames(int count) {
    for (int i = 0; i < count && !files::isInterrupted(); ++i)
        frame();
}

void ScriptRun::frame() {
    m_session.frames().deliverNext();
    QCoreApplication::processEvents();
    if (++m_state.frames % m_options.framesPerTick == 0)
        tick(1);
}

void ScriptRun::tick(int count) {
    for (int i = 0; i < count && !files::isInterrupted(); ++i) {
        m_page.stopTimer(); // showing the page again starts its timer again
        m_page.tick();
        QCoreApplication::processEvents();
        ++m_state.ticks;
        m_state.statusTexts = m_page.statusTexts();
        m_progress.show(m_state);
    }
}
} // namespace

int runScript(Session& session, Options const& options) {
    QString error;
    auto const commands = readScript(options.scriptFile, &error);
    if (!commands) {
        complain(error);
        return kExitUsage;
    }
    HeadlessDialog opened;
    if (ExitCode const code = openHeadless(session, options, opened); code != kExitDone)
        return code;
    ScriptRun run(session, options, opened);
    ScriptEnd end{.commands = commands->size(), .done = 0, .cause = {}, .state = {}};
    int code = kExitDone;
    for (ScriptCommand const& command : *commands) {
        bool const isDone = run.run(command, &error);
        if (files::isInterrupted())
            return kExitInterrupted;
        if (!isDone) {
            end.cause = QStringLiteral("%1:%2: %3").arg(options.scriptFile).arg(command.line).arg(error);
            code = run.hasTimedOut() ? kExitTimeout : kExitNotCalibrated;
            break;
        }
        ++end.done;
    }
    end.state = run.state();
    OutputFolder output(session.outputFolder());
    QString const page = reportScript(session, opened.page, options, end, output);
    if (files::isInterrupted())
        return kExitInterrupted;
    if (!end.cause.isEmpty())
        complain(end.cause);
    else
        run.say(QStringLiteral("%1: done, %2 commands.").arg(options.scriptFile).arg(commands->size()));
    if (!output.failed())
        run.say(QStringLiteral("The report is %1.").arg(page));
    return code == kExitDone && output.failed() ? int(kExitNotCalibrated) : code;
}
} // namespace pictara
