#pragma once

#include <QDialog>

class QLabel;
class QListWidget;

namespace pictara {
/// Lets a person choose one of the installed sensors.
class ProfileChooser : public QDialog {
    Q_OBJECT
public:
    /// `preferred` is the one that is chosen at first.
    explicit ProfileChooser(QString const& preferred, QWidget* parent = nullptr);
    [[nodiscard]] QString profile() const;

private:
    void describe(QString const& profile);

    QListWidget* m_list;
    QLabel* m_description;
};
} // namespace pictara
