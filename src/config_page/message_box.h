#pragma once

#include <QMessageBox>
#include <QString>
#include <functional>

/// A question or a message to the user.
struct UserMessage {
    QMessageBox::Icon icon;
    QString title;
    QString text;
    QMessageBox::StandardButtons buttons;
};

/// Shows a modal box over the parent and answers the button that closed it. Events run meanwhile: the parent
/// may be gone afterwards.
QMessageBox::StandardButton showMessage(QWidget* parent, UserMessage const& message);

/// Replaces the box, for a test that answers it; an empty function restores the real one.
void setMessageAnswer(std::function<QMessageBox::StandardButton(UserMessage const&)> answer);
