#include "simulator/host/session/dialog_page.h"

#include "simulator/host/recording/recorded_input.h"
#include "simulator/host/session/boundary.h"

#include <QAbstractButton>
#include <QComboBox>
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
    Boundary::instance().doing(pressInput(name));
    button->click();
    return true;
}

bool DialogPage::type(char const* name, QString const& text) {
    auto* const edit = widget<QLineEdit>(name);
    auto* const box = widget<QComboBox>(name);
    bool const isEditable = (edit && edit->isEnabled()) || (box && box->isEditable() && box->isEnabled());
    if (!isEditable)
        return false;
    Boundary::instance().doing(typeInput(name, text));
    if (edit)
        edit->setText(text);
    else
        box->setEditText(text);
    return true;
}

bool DialogPage::choose(char const* name, QString const& text) {
    auto* const box = widget<QComboBox>(name);
    int const index = box ? box->findText(text) : -1;
    if (index < 0 || !box->isEnabled())
        return false;
    Boundary::instance().doing(chooseInput(name, text));
    box->setCurrentIndex(index);
    return true;
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

void DialogPage::tick() {
    if (!m_page)
        return;
    Boundary::instance().doing(QStringLiteral("tick"));
    QMetaObject::invokeMethod(m_page, "start", Qt::DirectConnection);
}

bool DialogPage::isRunning() const { return m_page && text(kRunAll) != QLatin1String(kIdleText); }
} // namespace pictara
