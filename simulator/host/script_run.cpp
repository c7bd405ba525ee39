#include "simulator/host/script_run.h"

#include "simulator/files/interruption.h"
#include "simulator/host/headless_dialog.h"
#include "simulator/host/message_log.h"
#include "simulator/host/output_folder.h"
#include "simulator/host/progress_report.h"
#include "simulator/host/script.h"
#include "simulator/host/script_report.h"
#include "simulator/host/session.h"

#include <QCoreApplication>
#include <QDialog>
#include <QDir>
#include <QFileInfo>
#include <QPixmap>

namespace pictara {
namespace {

/// How a command ended: the cause of a failure, and the exit code that tells it.
struct Outcome {
    QString cause;
    int code = kExitNotCalibrated;
};

class ScriptRun {
public:
    ScriptRun(Session& session, Options const& options, HeadlessDialog const& dialog)
        : m_session(session), m_options(options), m_dialog(dialog.dialog), m_page(dialog.page),
          m_progress(stdout, dialog.page) {}

    [[nodiscard]] Outcome run(ScriptCommand const& command);
    void say(QString const& text) { m_progress.say(text); }
    [[nodiscard]] RunProgress const& state() const { return m_state; }

private:
    [[nodiscard]] Outcome press(QStringList const& words);
    [[nodiscard]] Outcome set(QStringList const& words);
    [[nodiscard]] Outcome setLight(QStringList const& words);
    [[nodiscard]] Outcome plan(QString const& fault);
    [[nodiscard]] Outcome expect(QStringList const& words);
    [[nodiscard]] Outcome await(QStringList const& words);
    [[nodiscard]] Outcome savePicture(QString const& file);
    [[nodiscard]] Outcome deliverFrames(int count);
    [[nodiscard]] Outcome tick(int count);
    void frame();

    Session& m_session;
    Options const& m_options;
    QDialog* m_dialog;
    DialogPage m_page;
    ProgressReport m_progress;
    RunProgress m_state;
};

QString missing(QString const& name) {
    return QStringLiteral("the dialog has no \"%1\"").arg(name);
}

Outcome ScriptRun::run(ScriptCommand const& command) {
    QStringList const& words = command.arguments;
    switch (command.verb) {
    case ScriptVerb::Press:
        return press(words);
    case ScriptVerb::Set:
        return set(words);
    case ScriptVerb::Light:
        return setLight(words);
    case ScriptVerb::Frames:
        return deliverFrames(words[0].toInt());
    case ScriptVerb::Tick:
        return tick(words.isEmpty() ? 1 : words[0].toInt());
    case ScriptVerb::Fault:
        return plan(words[0]);
    case ScriptVerb::Expect:
        return expect(words);
    case ScriptVerb::Wait:
        return await(words);
    case ScriptVerb::Screenshot:
        return savePicture(words[0]);
    }
    return {};
}

Outcome ScriptRun::press(QStringList const& words) {
    QByteArray const name = words[0].toLatin1();
    if (!m_page.has(name.constData()))
        return {missing(words[0])};
    return m_page.press(name.constData())
               ? Outcome{}
               : Outcome{QStringLiteral("\"%1\" cannot be pressed now").arg(words[0])};
}

Outcome ScriptRun::set(QStringList const& words) {
    QByteArray const name = words[0].toLatin1();
    if (!m_page.has(name.constData()))
        return {missing(words[0])};
    if (m_page.choose(name.constData(), words[1]) || m_page.type(name.constData(), words[1]))
        return {};
    bool const isSwitch = words[1] == QLatin1String("on") || words[1] == QLatin1String("off");
    bool const isWanted = words[1] == QLatin1String("on");
    if (isSwitch && m_page.choices(name.constData()).isEmpty() &&
        (m_page.isChecked(name.constData()) == isWanted || m_page.press(name.constData())))
        return {};
    QStringList const choices = m_page.choices(name.constData());
    QString const offered =
        choices.isEmpty() ? QString() : QStringLiteral("; it offers ") + choices.join(QLatin1String(", "));
    return {QStringLiteral("\"%1\" cannot be set to \"%2\" now%3").arg(words[0], words[1], offered)};
}

Outcome ScriptRun::setLight(QStringList const& words) {
    simulator::Light light = m_session.camera().light();
    light.colourTemperature = words[0].toDouble();
    if (words.size() > 1)
        light.level = words[1].toDouble();
    m_session.setLight(light);
    return {};
}

Outcome ScriptRun::plan(QString const& fault) {
    if (!m_session.camera().hasEeprom())
        return {QStringLiteral("the camera has no EEPROM")};
    auto const wish = parseFaultWish(fault);
    if (wish && m_session.injectFault(*wish))
        return {};
    return {QStringLiteral("there is no fault \"%1\"; known are %2")
                .arg(fault, simulator::SimulatedCamera::faultNames().join(QLatin1String(", ")))};
}

Outcome ScriptRun::expect(QStringList const& words) {
    bool const isWanted = words[0] == QLatin1String("enabled");
    bool const isOfEnabling = isWanted || words[0] == QLatin1String("disabled");
    QString const& name = isOfEnabling ? words[1] : words[0];
    QByteArray const widget = name.toLatin1();
    if (!m_page.has(widget.constData()))
        return {missing(name)};
    if (isOfEnabling)
        return m_page.isEnabled(widget.constData()) == isWanted
                   ? Outcome{}
                   : Outcome{QStringLiteral("\"%1\" is not %2").arg(name, words[0])};
    QString const text = m_page.text(widget.constData());
    return matches(text, words[1])
               ? Outcome{}
               : Outcome{QStringLiteral("\"%1\" shows \"%2\", not \"%3\"").arg(name, text, words[1])};
}

Outcome ScriptRun::await(QStringList const& words) {
    QByteArray const name = words[0].toLatin1();
    if (!m_page.has(name.constData()))
        return {missing(words[0])};
    int const bound = words.size() > 2 ? words[2].toInt() : m_options.maxFrames;
    for (int frames = 0; !matches(m_page.text(name.constData()), words[1]); ++frames) {
        if (files::isInterrupted())
            return {};
        if (frames == bound)
            return {QStringLiteral("after %1 frames \"%2\" shows \"%3\", not \"%4\"")
                        .arg(QString::number(bound), words[0], m_page.text(name.constData()), words[1]),
                    kExitTimeout};
        frame();
    }
    return {};
}

Outcome ScriptRun::savePicture(QString const& file) {
    QFileInfo const info(QDir(m_session.outputFolder()), file);
    OutputFolder folder(info.absolutePath());
    folder.savePicture(info.fileName(), m_dialog->grab().toImage());
    return folder.failed() ? Outcome{QStringLiteral("the picture cannot be saved")} : Outcome{};
}

Outcome ScriptRun::deliverFrames(int count) {
    for (int i = 0; i < count && !files::isInterrupted(); ++i)
        frame();
    return {};
}

void ScriptRun::frame() {
    m_session.frames().deliverNext();
    QCoreApplication::processEvents();
    if (++m_state.frames % m_options.framesPerTick == 0)
        (void)tick(1);
}

Outcome ScriptRun::tick(int count) {
    for (int i = 0; i < count && !files::isInterrupted(); ++i) {
        m_page.stopTimer(); // showing the page again starts its timer again
        m_page.tick();
        QCoreApplication::processEvents();
        ++m_state.ticks;
        m_state.statusTexts = m_page.statusTexts();
        m_progress.show(m_state);
    }
    return {};
}

} // namespace

int runScript(Session& session, Options const& options) {
    QString error;
    std::vector<ScriptCommand> commands;
    if (!readScript(options.scriptFile, commands, &error)) {
        complain(error);
        return kExitUsage;
    }
    HeadlessDialog opened;
    if (ExitCode const code = openHeadless(session, options, opened); code != kExitDone)
        return code;
    ScriptRun run(session, options, opened);
    ScriptEnd end{.commands = commands.size(), .done = 0, .cause = {}, .state = {}};
    int code = kExitDone;
    for (ScriptCommand const& command : commands) {
        Outcome const outcome = run.run(command);
        if (files::isInterrupted())
            return kExitInterrupted;
        if (!outcome.cause.isEmpty()) {
            end.cause =
                QStringLiteral("%1:%2: %3").arg(options.scriptFile).arg(command.line).arg(outcome.cause);
            code = outcome.code;
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
        run.say(QStringLiteral("%1: done, %2 commands.").arg(options.scriptFile).arg(commands.size()));
    if (!output.failed())
        run.say(QStringLiteral("The report is %1.").arg(page));
    return code == kExitDone && output.failed() ? int(kExitNotCalibrated) : code;
}

} // namespace pictara
