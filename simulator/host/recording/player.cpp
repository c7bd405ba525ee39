#include "simulator/host/recording/player.h"

#include "simulator/files/interruption.h"
#include "simulator/host/session/session.h"

#include <QCoreApplication>

namespace pictara {
Player::Player(Session& session, Options const& options)
    : m_session(session), m_placeholders(placeholdersOf(options)) {}

bool Player::perform(Command const& command, QString* error) {
    QStringList words;
    for (QString const& word : command.words)
        words << QString::fromUtf8(m_placeholders.reveal(word.toUtf8()));
    error->clear();
    if (command.verb->perform(*this, words, error))
        return true;
    if (error->isEmpty())
        *error = QStringLiteral("it cannot be done now");
    return false;
}

void Player::say(QString const& text) {
    if (m_report)
        m_report->say(text);
    else
        std::printf("%s\n", text.toLocal8Bit().constData());
}

bool Player::open(QString* error) { return !m_dialog.dialog && m_dialog.make(m_session, error); }

bool Player::show(QString* error) {
    if (!m_dialog.dialog || m_dialog.page || !m_dialog.show(error))
        return false;
    m_report.emplace(stdout, m_dialog.page);
    return true;
}

bool Player::hasPage(QString* error) {
    if (m_dialog.dialog || !open(error) || !show(error))
        return bool(m_dialog.page);
    m_dialog.page.saveInto(m_session.outputFolder());
    return true;
}

bool Player::hasWidget(QString const& name, QString* error) {
    if (!hasPage(error))
        return false;
    bool const isThere = m_dialog.page.has(name.toLatin1().constData());
    if (!isThere)
        *error = QStringLiteral("the dialog has no \"%1\"").arg(name);
    return isThere;
}

void Player::deliverFrame() {
    m_session.frames().deliverNext();
    QCoreApplication::processEvents();
    ++m_progress.frames;
}

void Player::tick() {
    m_dialog.page.stopTimer(); // showing the page again starts its timer again
    m_dialog.page.tick();
    QCoreApplication::processEvents();
    ++m_progress.ticks;
    m_progress.statusTexts = m_dialog.page.statusTexts();
    m_report->show(m_progress);
}
} // namespace pictara
