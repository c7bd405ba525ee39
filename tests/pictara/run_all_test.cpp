#include "simulator/host/run/run_all.h"

#include <QDialog>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <gtest/gtest.h>

namespace pictara {
namespace {
// The page is found by its tick.
class TickingPage : public QWidget {
    Q_OBJECT
public:
    using QWidget::QWidget;

    template <typename Widget>
    Widget* add(QByteArray const& name, char const* text) {
        auto* const widget = new Widget(this);
        widget->setObjectName(QLatin1String(name));
        widget->setText(QLatin1String(text));
        return widget;
    }
public slots:
    void start() {}
};

struct Page : testing::Test {
    QDialog dialog;
    TickingPage page{&dialog};
    QPushButton* const runAll = page.add<QPushButton>("Run_All", "Run All Steps");
    DialogPage found = DialogPage::find(&dialog);
};

TEST_F(Page, LightIsNotChangedWhileAPictureIsTaken) {
    auto const addRow = [&](QByteArray const& light, char const* kelvin, char const* status) {
        (void)page.add<QPushButton>(light + "_Image", light);
        (void)page.add<QLineEdit>(light + "_Temp", kelvin);
        return page.add<QLabel>(light + "_Status", status);
    };
    QLabel* const first = addRow("Incandescent", "2800", "In progress...");
    (void)addRow("Fluorescent", "4000", "Waiting for you...");
    QStringList served;
    QObject::connect(page.findChild<QPushButton*>("Fluorescent_Image"), &QPushButton::clicked,
                     [&] { served << "pressed"; });
    for (char const* const status : {"In progress...", "Done."}) {
        EXPECT_TRUE(served.isEmpty());
        first->setText(status);
        serveCaptureRows(found, [&](CaptureRow const& row) { served << QString::number(row.kelvin); });
    }
    EXPECT_EQ(served, QStringList({"4000", "pressed"}));
}

// One that works for ever is given up at the bound, one that shows an error long before; both are cancelled.
TEST_F(Page, ARunThatDoesNotEndIsGivenUp) {
    QLabel* const status = page.add<QLabel>("AE_Status", "In progress...");
    QObject::connect(runAll, &QPushButton::clicked,
                     [&] { runAll->setText(runAll->text() == "Cancel" ? "Run All Steps" : "Cancel"); });
    for (auto const& [text, end, frames] : {std::tuple("In progress...", RunEnd::TimedOut, 1998),
                                            std::tuple("Error. No light.", RunEnd::Cancelled, 33)}) {
        status->setText(text);
        int delivered = 0;
        RunResult const result = RunDriver(found, [&] { ++delivered; }).runAll();
        EXPECT_EQ(result.end, end) << text;
        EXPECT_TRUE(delivered == frames && result.last.frames == frames) << delivered;
        EXPECT_EQ(runAll->text(), "Run All Steps") << text;
    }
}

TEST(Verdict, EveryStepHasItsSay) {
    QStringList const done = QString("Done.|Done.|Done.|YCbCr calibration. Bypass mode recommended.|"
                                     " 0.52   (Lower is better.)|Done: POLY.ini|No EEPROM.")
                                 .split('|');
    EXPECT_TRUE(isCalibrated(done) && isSaved(done, false));
    EXPECT_FALSE(isSaved(done, true)) << "an EEPROM that is there was not found";
    for (int i = 0; i < done.size(); ++i) {
        QStringList texts = done;
        texts[i] = i == kUniformity ? QStringLiteral(" --   (Lower is better)") : QStringLiteral("Error");
        bool const isOfTheSaves = i == kFileSave || i == kEepromSave;
        EXPECT_EQ(isCalibrated(texts), isOfTheSaves) << i;
        EXPECT_EQ(isSaved(texts, false), !isOfTheSaves) << i;
    }
}
} // namespace
} // namespace pictara

#include "run_all_test.moc"
