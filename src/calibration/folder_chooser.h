#pragma once

#include <QString>
#include <functional>

/// Lets the user choose an existing folder for results files; an empty text when the user cancels.
[[nodiscard]] QString chooseResultFolder();

/// Replaces the dialog, for a test that answers it; an empty function restores the real one.
void setFolderChooser(std::function<QString()> chooser);
