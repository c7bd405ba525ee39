#pragma once

#include <QLabel>
#include <QPointer>
#include <QPushButton>
#include <gtest/gtest.h>
#include <string>

/// A page under test and its widgets by their names; a name that the page lacks fails the test.
template <typename Page>
class PageUnderTest : public ::testing::Test {
protected:
    template <typename Widget>
    [[nodiscard]] Widget* widget(char const* name) const {
        auto* const found = page->template findChild<Widget*>(QLatin1String(name));
        EXPECT_TRUE(found) << name;
        return found;
    }
    [[nodiscard]] std::string text(char const* label) const {
        return widget<QLabel>(label)->text().toStdString();
    }
    [[nodiscard]] bool isEnabled(char const* name) const { return widget<QWidget>(name)->isEnabled(); }
    void click(char const* button) {
        EXPECT_TRUE(isEnabled(button)) << button;
        widget<QPushButton>(button)->click();
    }

    QPointer<Page> page;
};
