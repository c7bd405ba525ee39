#include "config_page/message_box.h"

#include <QPointer>
#include <utility>

namespace {
std::function<QMessageBox::StandardButton(UserMessage const&)>& replacement() {
    static std::function<QMessageBox::StandardButton(UserMessage const&)> answer;
    return answer;
}
} // namespace

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
