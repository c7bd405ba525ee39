#include "wizard/dialogs.h"

#include <QCoreApplication>
#include <QDesktopServices>
#include <QFileDialog>
#include <QPointer>
#include <utility>

namespace {

std::function<QString()>& replacement() {
    static std::function<QString()> chooser;
    return chooser;
}

std::function<QMessageBox::StandardButton(UserMessage const&)>& replacement() {
    static std::function<QMessageBox::StandardButton(UserMessage const&)> answer;
    return answer;
}

std::function<bool(QUrl const&)>& replacement() {
    static std::function<bool(QUrl const&)> opener;
    return opener;
}

} // namespace

QString chooseResultFolder() {
    if (replacement())
        return replacement()();
    // Always starts there, whatever the page shows: users know the chooser so.
    return QFileDialog::getExistingDirectory(
        nullptr,
        QCoreApplication::translate("LensAssist", "Select the folder for saving lens calibration settings."),
        QStringLiteral("/home"), QFileDialog::ShowDirsOnly | QFileDialog::DontResolveSymlinks);
}

void setFolderChooser(std::function<QString()> chooser) {
    replacement() = std::move(chooser);
}

QMessageBox::StandardButton showMessage(QWidget* parent, UserMessage const& message) {
    if (replacement())
        return replacement()(message);
    // On the heap: the parent deletes it with itself when it goes away meanwhile.
    QPointer<QMessageBox> const box(
        new QMessageBox(message.icon, message.title, message.text, message.buttons, parent));
    int const answer = box->exec();
    delete box.data();
    return QMessageBox::StandardButton(answer);
}

void setMessageAnswer(std::function<QMessageBox::StandardButton(UserMessage const&)> answer) {
    replacement() = std::move(answer);
}

bool openDocument(QUrl const& url) {
    return replacement() ? replacement()(url) : QDesktopServices::openUrl(url);
}

void setDocumentOpener(std::function<bool(QUrl const&)> opener) {
    replacement() = std::move(opener);
}
