#pragma once

#include <QMessageBox>
#include <QString>
#include <QUrl>
#include <functional>

/// Lets the user choose an existing folder for results files; an empty text when the user cancels.
[[nodiscard]] QString chooseResultFolder();

/// Replaces the dialog, for a test that answers it; an empty function restores the real one.
void setFolderChooser(std::function<QString()> chooser);

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

/// Opens a document with the program that the user's desktop has for it; false when there is none, or no such
/// document.
[[nodiscard]] bool openDocument(QUrl const& url);

/// Replaces the desktop, for a test that answers in its place; an empty function restores the real one.
void setDocumentOpener(std::function<bool(QUrl const&)> opener);
