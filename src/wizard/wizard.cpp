#include "wizard/wizard.h"

#include "ui_wizard.h"

#include <QTabWidget>

Wizard::Wizard(QString const& title, QWidget* parent, Qt::WindowFlags flags) : QDialog(parent, flags) {
    Ui::Dialog form;
    form.setupUi(this);
    tabWidget = form.tabWidget;
    setWindowTitle(title);
    pixGray.load(QStringLiteral(":/Icons/circle_gray.png"));
    pixBlue.load(QStringLiteral(":/Icons/circle_blue.png"));
    pixGreen.load(QStringLiteral(":/Icons/circle_green.png"));
    pixYellow.load(QStringLiteral(":/Icons/circle_yellow.png"));
    pixRed.load(QStringLiteral(":/Icons/circle_red.png"));
}

Wizard::~Wizard() {
    if (m_destroyedHook)
        m_destroyedHook();
}

void Wizard::addPage(QWidget* page, QString const& label) {
    tabWidget->addTab(page, label);
    page->activateWindow();
}

int Wizard::pageCount() const { return tabWidget->count(); }
void Wizard::enablePage(int index) { tabWidget->setTabEnabled(index, true); }
