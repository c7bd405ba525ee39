#include "calibration/folder_chooser.h"

#include <QCoreApplication>
#include <QFileDialog>
#include <utility>

namespace {
std::function<QString()>& replacement() {
    static std::function<QString()> chooser;
    return chooser;
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
