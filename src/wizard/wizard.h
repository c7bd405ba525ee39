#pragma once

#include <QDialog>
#include <QPixmap>
#include <functional>
#include <utility>

class QTabWidget;

/// The one dialog that the plug-in hands to the host: a frame of tabs that hold the pages, and the owner of
/// the status bullets that every page shows beside its steps.
class Wizard : public QDialog {
    Q_OBJECT

public:
    explicit Wizard(QString const& title, QWidget* parent, Qt::WindowFlags flags = {});
    ~Wizard() override;

    /// Only hides the dialog.
    virtual void hideWizard() { hide(); }

    /// Appends a page, which the tab widget then owns, as a new tab.
    void addPage(QWidget* page, QString const& label);
    [[nodiscard]] int pageCount() const;
    /// Marks a tab enabled; an index without a tab is ignored.
    void enablePage(int index);

    /// Called once when the dialog goes away, before anything of it is gone.
    void setDestroyedHook(std::function<void()> hook) { m_destroyedHook = std::move(hook); }

    QTabWidget* tabWidget = nullptr; ///< owned by Qt's parent chain
    QPixmap pixGray;                 ///< step not done yet, or state unknown
    QPixmap pixBlue;                 ///< step in progress
    QPixmap pixGreen;                ///< step done
    QPixmap pixYellow;               ///< warning, or waiting for the user
    QPixmap pixRed;                  ///< error

private:
    std::function<void()> m_destroyedHook;
};
