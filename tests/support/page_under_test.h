#pragma once

#include "tests/support/page_bench.h"

#include <QApplication>
#include <QEvent>
#include <QLabel>
#include <QPointer>
#include <QProgressBar>
#include <QPushButton>
#include <gtest/gtest.h>
#include <string>

namespace kestra {
/// What a label or progress bar showed when it was last painted.
class PaintWatch : public QObject {
public:
    explicit PaintWatch(QWidget* widget) : m_widget(widget) { widget->installEventFilter(this); }

    /// Whether it shows what it should, in the place that a changed text needs.
    [[nodiscard]] bool isPainted() const {
        QApplication::sendPostedEvents(nullptr, QEvent::LayoutRequest);
        return m_painted == look() && m_place == m_widget->geometry();
    }

private:
    [[nodiscard]] QString look() const {
        if (auto const* const label = qobject_cast<QLabel const*>(m_widget))
            return label->text() + QString::number(label->pixmap(Qt::ReturnByValue).cacheKey());
        return qobject_cast<QProgressBar const*>(m_widget)->text();
    }
    bool eventFilter(QObject*, QEvent* event) override {
        if (event->type() != QEvent::Paint)
            return false;
        m_painted = look();
        m_place = m_widget->geometry();
        return false;
    }

    QWidget* m_widget;
    QString m_painted;
    QRect m_place;
};

/// A page under test and its widgets by their names; a name that the page lacks fails the test.
template <typename Page>
class PageUnderTest : public ::testing::Test, protected PageBench {
protected:
    ~PageUnderTest() override { delete page.data(); }
    template <typename Widget>
    [[nodiscard]] Widget* widget(char const* name) const {
        auto* const found = page->template findChild<Widget*>(QLatin1String(name));
        EXPECT_TRUE(found) << name;
        return found;
    }
    /// Of a label, a button or a line to write in.
    [[nodiscard]] std::string text(char const* name) const {
        return widget<QWidget>(name)->property("text").toString().toStdString();
    }
    [[nodiscard]] bool isEnabled(char const* name) const { return widget<QWidget>(name)->isEnabled(); }
    void click(char const* button) {
        EXPECT_TRUE(isEnabled(button)) << button;
        widget<QPushButton>(button)->click();
    }

    QPointer<Page> page;
};
} // namespace kestra
