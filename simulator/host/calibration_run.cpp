#include "simulator/host/calibration_run.h"

#include "simulator/host/message_log.h"
#include "simulator/host/progress_report.h"
#include "simulator/host/run_summary.h"
#include "simulator/host/session.h"

#include <QDialog>
#include <QDir>
#include <QFile>
#include <QPixmap>
#include <cstdio>

namespace pictara {
namespace {

void complain(QString const& text) {
    std::fprintf(stderr, "pictara-sim: %s\n", text.toLocal8Bit().constData());
}

// The figures with the sensor's correction on or off, all else equal. Nothing when the dialog shows none.
std::optional<Evenness> measure(Session& session, DialogPage& page, RunDriver& driver, bool corrected) {
    // The test of the dialog switches the correction on; it measures with the next frame, so there is still
    // time to switch it off.
    if (!page.press("ColorUniformity"))
        return std::nullopt;
    if (!corrected && page.isChecked("Enable_LC"))
        page.press("Enable_LC");
    if (page.isChecked("Enable_LC") != corrected) {
        qWarning("pictara: the dialog shows the lens correction %s", corrected ? "off" : "on");
        return std::nullopt;
    }
    Evenness result;
    if (!driver.awaitUniformity(&result.uniformity))
        return std::nullopt;
    result.blocks = session.frames().blocks();
    result.picture = session.frames().unmarkedPicture();
    return result;
}

// Writes the run's files and tells their names.
class OutputFolder {
public:
    explicit OutputFolder(QString const& folder) : m_folder(folder) {}

    void savePicture(QString const& name, QImage const& picture) {
        note(name, picture.save(m_folder.filePath(name)));
    }
    void saveText(QString const& name, QString const& text) {
        QFile file(m_folder.filePath(name));
        note(name, file.open(QIODevice::WriteOnly | QIODevice::Text) && file.write(text.toUtf8()) >= 0);
    }
    /// A file that somebody else should have written.
    [[nodiscard]] bool expect(QString const& name) {
        bool const there = QFileInfo(m_folder.filePath(name)).isFile();
        if (there)
            m_written.append(name);
        return there;
    }
    [[nodiscard]] QStringList const& written() const { return m_written; }
    [[nodiscard]] bool failed() const { return m_failed; }

private:
    void note(QString const& name, bool saved) {
        if (saved)
            m_written.append(name);
        else
            complain(QStringLiteral("The file %1 cannot be written.").arg(m_folder.filePath(name)));
        m_failed = m_failed || !saved;
    }

    QDir m_folder;
    QStringList m_written;
    bool m_failed = false;
};

QString causeOf(RunResult const& run) {
    QStringList causes;
    if (run.end == RunEnd::TimedOut)
        causes.append(QStringLiteral("The run did not end in %1 frames.").arg(run.last.frames));
    for (int i = 0; i < run.last.statusTexts.size(); ++i) {
        QString const status = run.last.statusTexts[i].trimmed();
        bool const failed = status.startsWith(QLatin1String("Error")) ||
                            status.startsWith(QLatin1String("Warning")) ||
                            (run.end == RunEnd::TimedOut && status.startsWith(QLatin1String("In progress")));
        if (failed)
            causes.append(QString::fromLatin1(kSteps[i].status) + QLatin1String(": ") + status);
    }
    if (QString const solver = lastSolverMessage(); !solver.isEmpty())
        causes.append(solver);
    return causes.join(QLatin1String(" | "));
}

// Sets the page up as the user wished; false with a message.
bool prepare(DialogPage& page, Options const& options, QString const& folder, QString* error) {
    page.type("Save_Dir", QDir::toNativeSeparators(folder));
    if (!options.falloffPercent)
        return true;
    if (page.choose("FallOff", QString::number(*options.falloffPercent) + QLatin1Char('%')))
        return true;
    *error = QStringLiteral("The dialog offers no falloff of %1 %; it offers %2.")
                 .arg(*options.falloffPercent)
                 .arg(page.choices("FallOff").join(QLatin1String(", ")));
    return false;
}

int exitCodeOf(RunSummary const& summary) {
    if (summary.run.end == RunEnd::TimedOut)
        return kExitTimeout;
    return summary.succeeded ? kExitDone : kExitNotCalibrated;
}

} // namespace

int runCalibration(Session& session, Options const& options) {
    QString error;
    QDialog* const dialog = session.openDialog(nullptr, &error);
    if (!dialog) {
        complain(error);
        return kExitUsage;
    }
    dialog->show();
    DialogPage page = DialogPage::find(dialog);
    if (!page) {
        complain(QStringLiteral("The dialog has no page for this sensor that Run All could work on."));
        return kExitNotCalibrated;
    }
    page.stopTimer();
    if (!prepare(page, options, session.outputFolder(), &error)) {
        complain(error);
        return kExitUsage;
    }

    OutputFolder output(session.outputFolder());
    ProgressReport progress(stdout, page);
    RunDriver driver(
        page, [&] { session.frames().deliverNext(); }, options.framesPerTick, options.maxFrames);
    driver.onProgress([&](RunProgress const& state) { progress.show(state); });

    RunSummary summary;
    summary.camera = session.camera().description();
    summary.shading = options.shadingFile;
    summary.light = session.camera().light();
    summary.seed = options.seed;
    summary.run = driver.runAll();
    summary.solutionRegisters = session.desk().listEntriesWritten();
    summary.registerWrites = session.camera().registerWrites();
    output.savePicture(QStringLiteral("dialog.png"), dialog->grab().toImage());

    QStringList const& steps = summary.run.last.statusTexts;
    bool const stepsDone = summary.run.end == RunEnd::Finished && allStepsDone(steps);
    if (stepsDone) {
        driver.onProgress([](RunProgress const&) {});
        summary.before = measure(session, page, driver, false);
        summary.after = measure(session, page, driver, true); // leaves the correction on
        QString const results = steps[kFileSave].mid(int(qstrlen("Done: ")));
        summary.succeeded = output.expect(results) && summary.before && summary.after;
        if (!summary.succeeded)
            summary.cause =
                QStringLiteral("The results file %1 or the closing measurement is missing.").arg(results);
    } else {
        summary.cause = causeOf(summary.run);
    }
    if (summary.before)
        output.savePicture(QStringLiteral("before.png"),
                           markedPicture(summary.before->picture, summary.before->blocks.worstBlock));
    if (summary.after)
        output.savePicture(QStringLiteral("after.png"),
                           markedPicture(summary.after->picture, summary.after->blocks.worstBlock));
    summary.filesWritten = output.written() + QStringList(QStringLiteral("summary.txt"));
    output.saveText(QStringLiteral("summary.txt"), summaryText(summary));
    progress.say(QLatin1Char('\n') + summaryText(summary));
    if (!summary.cause.isEmpty())
        complain(summary.cause);
    return output.failed() ? int(kExitNotCalibrated) : exitCodeOf(summary);
}

} // namespace pictara
