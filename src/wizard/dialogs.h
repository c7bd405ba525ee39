#pragma once

#include "common/system.h"

#include <QMessageBox>
#include <QString>
#include <QUrl>

namespace kestra {
// Whatever waits for a person, or for a program of the user's desktop.

/// Lets the user choose an existing folder for results files; an empty text when the user cancels.
extern Replaceable<QString()> chooseResultFolder;

/// A question or a message to the user.
struct UserMessage {
    QMessageBox::Icon icon;
    QString title;
    QString text;
    QMessageBox::StandardButtons buttons;
};

/// Shows a modal box over the parent and answers the button that closed it. Events run meanwhile: the parent
/// may be gone afterwards.
extern Replaceable<QMessageBox::StandardButton(QWidget* parent, UserMessage const& message)> showMessage;

/// Opens a document with the program that the user's desktop has for it; false when there is none, or no such
/// document.
extern Replaceable<bool(QUrl const& url)> openDocument;
} // namespace kestra
