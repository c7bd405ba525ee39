#include "simulator/host/run/capture_rows.h"

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
public slots:
    void start() {}
};

TEST(CaptureRows, LightIsNotChangedWhileAPictureIsTaken) {
    QDialog dialog;
    TickingPage page(&dialog);
    auto const add = [&](auto* widget, QByteArray const& name, char const* text) {
        widget->setParent(&page);
        widget->setObjectName(QLatin1String(name));
        widget->setText(QLatin1String(text));
        return widget;
    };
    (void)add(new QPushButton, "Run_All", "Run All Steps");
    auto const addRow = [&](QByteArray const& light, char const* kelvin, char const* status) {
        (void)add(new QPushButton, light + "_Image", light);
        (void)add(new QLineEdit, light + "_Temp", kelvin);
        return add(new QLabel, light + "_Status", status);
    };
    QLabel* const first = addRow("Incandescent", "2800", "In progress...");
    (void)addRow("Fluorescent", "4000", "Waiting for you...");
    CaptureRows rows(DialogPage::find(&dialog));
    QStringList served;
    QObject::connect(page.findChild<QPushButton*>("Fluorescent_Image"), &QPushButton::clicked,
                     [&] { served << "pressed"; });
    auto const serve = [&] {
        rows.serve([&](CaptureRow const& row) { served << QStringLiteral("%1 K").arg(row.kelvin); });
    };
    serve();
    EXPECT_TRUE(served.isEmpty());
    first->setText("Done.");
    serve();
    EXPECT_EQ(served, QStringList({"4000 K", "pressed"}));
}
} // namespace
} // namespace pictara

#include "capture_rows_test.moc"
