#include "simulator/host/session/dialog_page.h"

#include "simulator/boundary/boundary.h"
#include "simulator/host/session/message_log.h"
#include "simulator/host/session/session.h"

#include <QAbstractButton>
#include <QComboBox>
#include <QDialog>
#include <QDir>
#include <QLabel>
#include <QLineEdit>
#include <QPixmap>
#include <QTimer>
#include <algorithm>
#include <iterator>

namespace pictara {
namespace {
constexpr char kRunAll[] = "Run_All";
constexpr char kIdleText[] = "Run All Steps";
} // namespace

DialogPage DialogPage::find(QWidget* dialog) {
    DialogPage result;
    auto const* const button = dialog ? dialog->findChild<QAbstractButton*>(QLatin1String(kRunAll)) : nullptr;
    // The button may stand in a frame of the page; the page is what has the tick.
    for (QWidget* widget = button ? button->parentWidget() : nullptr; widget; widget = widget->parentWidget())
        if (widget->metaObject()->indexOfSlot("start()") >= 0) {
            result.m_page = widget;
            break;
        }
    return result;
}

template <typename Widget>
Widget* DialogPage::widget(char const* name) const {
    return m_page ? m_page->findChild<Widget*>(QLatin1String(name)) : nullptr;
}

QString DialogPage::text(char const* name) const {
    if (auto const* const label = widget<QLabel>(name))
        return label->text();
    if (auto const* const edit = widget<QLineEdit>(name))
        return edit->text();
    if (auto const* const box = widget<QComboBox>(name))
        return box->currentText();
    auto const* const button = widget<QAbstractButton>(name);
    return button ? button->text() : QString();
}

QString DialogPage::version() const {
    for (auto const* const label : m_page ? m_page->findChildren<QLabel*>() : QList<QLabel*>())
        if (label->text().startsWith(QLatin1String("Version: ")))
            return label->text().simplified();
    return {};
}

QStringList DialogPage::statusTexts() const {
    QStringList texts;
    for (StepWidgets const& step : kSteps)
        texts.append(text(step.status));
    return texts;
}

QString DialogPage::colour(char const* name) const {
    auto const* const label = widget<QLabel>(name);
    QPixmap const pixmap = label ? label->pixmap(Qt::ReturnByValue) : QPixmap();
    if (pixmap.isNull())
        return {};
    QImage const middle = pixmap.toImage().scaled(1, 1, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
    QColor const mean = middle.pixelColor(0, 0);
    constexpr int kPale = 50; // of 255
    if (mean.hsvSaturation() < kPale)
        return QStringLiteral("gray");
    constexpr struct {
        int endsAt; ///< hue in degrees
        char const* name;
    } kHues[] = {{20, "red"}, {75, "yellow"}, {165, "green"}, {300, "blue"}, {360, "red"}};
    return QString::fromLatin1(std::find_if(std::begin(kHues), std::end(kHues), [&](auto const& hue) {
                                   return mean.hsvHue() < hue.endsAt;
                               })->name);
}

bool DialogPage::has(char const* name) const { return widget<QWidget>(name) != nullptr; }

bool DialogPage::isChecked(char const* name) const {
    auto const* const button = widget<QAbstractButton>(name);
    return button && button->isChecked();
}

bool DialogPage::isEnabled(char const* name) const {
    auto const* const control = widget<QWidget>(name);
    return control && control->isEnabled();
}

bool DialogPage::press(char const* name) {
    auto* const button = widget<QAbstractButton>(name);
    if (!button || !button->isEnabled())
        return false;
    Boundary::instance().doing({"press", name});
    button->click();
    return true;
}

bool DialogPage::set(char const* name, QString const& text) {
    if (!isEnabled(name))
        return false;
    auto* const edit = widget<QLineEdit>(name);
    auto* const box = widget<QComboBox>(name);
    int const entry = box ? box->findText(text) : -1;
    if (edit || entry >= 0 || (box && box->isEditable())) {
        Boundary::instance().doing({"set", name, text});
        if (edit)
            edit->setText(text);
        else if (entry >= 0)
            box->setCurrentIndex(entry);
        else
            box->setEditText(text);
        return true;
    }
    auto const* const button = widget<QAbstractButton>(name);
    bool const isWanted = text == QLatin1String("on");
    if (!button || !button->isCheckable() || (!isWanted && text != QLatin1String("off")))
        return false;
    return button->isChecked() == isWanted || press(name);
}

void DialogPage::prepare(Session const& session) {
    set("Save_Dir", QDir::toNativeSeparators(session.outputFolder()));
    if (auto const& limit = session.options().uniformityLimit)
        set("GoodCU", QString::number(*limit, 'f', 2));
}

QStringList DialogPage::choices(char const* name) const {
    QStringList texts;
    auto const* const box = widget<QComboBox>(name);
    for (int i = 0; box && i < box->count(); ++i)
        texts.append(box->itemText(i));
    return texts;
}

void DialogPage::stopTimer() {
    if (!m_page)
        return;
    for (auto* const timer : m_page->findChildren<QTimer*>(QString(), Qt::FindDirectChildrenOnly))
        timer->stop();
}

void DialogPage::resumeTimer() {
    if (!m_page || !m_page->isVisible()) // a closed one rests
        return;
    for (auto* const timer : m_page->findChildren<QTimer*>(QString(), Qt::FindDirectChildrenOnly))
        timer->start();
}

void DialogPage::tick() {
    if (!m_page)
        return;
    stopTimer(); // showing the page again starts its timer again
    Boundary::instance().doing({"tick"});
    QMetaObject::invokeMethod(m_page, "start", Qt::DirectConnection);
}

bool DialogPage::isRunning() const { return m_page && text(kRunAll) != QLatin1String(kIdleText); }

bool HeadlessDialog::make(Session& session, QString* error) {
    dialog = session.openDialog(nullptr, error);
    return dialog != nullptr;
}

bool HeadlessDialog::show(QString* error) {
    Boundary::instance().doing({"show"});
    dialog->show();
    page = DialogPage::find(dialog);
    page.stopTimer();
    if (!page)
        *error = QStringLiteral("The dialog has no page for this sensor that Run All could work on.");
    return bool(page);
}

ExitCode openHeadless(Session& session, HeadlessDialog& opened) {
    QString error;
    if (!opened.make(session, &error))
        return refuse(error);
    if (!opened.show(&error)) {
        complain(error);
        return kExitNotCalibrated;
    }
    opened.page.prepare(session);
    return kExitDone;
}
} // namespace pictara
