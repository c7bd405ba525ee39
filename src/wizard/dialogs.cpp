#include "wizard/dialogs.h"

#include <QCoreApplication>
#include <QDesktopServices>
#include <QFileDialog>
#include <QPointer>

namespace kestra {
namespace {
QString chooseByDialog() {
    // Always starts there, whatever the page shows: users know the chooser so.
    return QFileDialog::getExistingDirectory(
        nullptr,
        QCoreApplication::translate("LensAssist", "Select the folder for saving lens calibration settings."),
        QStringLiteral("/home"), QFileDialog::ShowDirsOnly | QFileDialog::DontResolveSymlinks);
}

QMessageBox::StandardButton showBox(QWidget* parent, UserMessage const& message) {
    // On the heap: the parent deletes it with itself when it goes away meanwhile.
    QPointer<QMessageBox> const box(
        new QMessageBox(message.icon, message.title, message.text, message.buttons, parent));
    int const answer = box->exec();
    delete box.data();
    return QMessageBox::StandardButton(answer);
}
} // namespace

Replaceable<QString()> chooseResultFolder(chooseByDialog);

Replaceable<QMessageBox::StandardButton(QWidget*, UserMessage const&)> showMessage(showBox);

Replaceable<bool(QUrl const&)> openDocument(QDesktopServices::openUrl);
} // namespace kestra
