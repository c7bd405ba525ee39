#include "simulator/host/recording/player.h"

#include "simulator/files/interruption.h"
#include "simulator/files/whole_file.h"
#include "simulator/host/report/charts.h"
#include "simulator/host/session/session.h"

#include <QCoreApplication>
#include <QDialog>
#include <QDir>
#include <QRegularExpression>
#include <algorithm>
#include <utility>

namespace pictara {
namespace {
constexpr int kMostFrames = 1'000'000;
constexpr int kFramesOfAWait = 2000;
constexpr int kFramesPerTick = 3;

template <int Index>
bool isCount(QStringList const& words) {
    bool ok = false;
    int const number = words.value(Index).toInt(&ok);
    return words.size() <= Index || (ok && number >= 1 && number <= kMostFrames);
}

// True when the whole text is the pattern's, in which "*" stands for any text.
bool matches(QString const& text, QString const& pattern) {
    QStringList parts = pattern.split(QLatin1Char('*'));
    std::transform(parts.begin(), parts.end(), parts.begin(),
                   [](QString const& part) { return QRegularExpression::escape(part); });
    QRegularExpression const whole(QRegularExpression::anchoredPattern(parts.join(QLatin1String(".*"))),
                                   QRegularExpression::DotMatchesEverythingOption);
    return whole.match(text).hasMatch();
}

bool beginLight(QStringList const& words, Script& script) {
    simulator::Light light = lightOf(script.options);
    bool const isGood = readLight(words, light);
    script.options.lightKelvin = light.colourTemperature;
    script.options.lightLevel = light.level;
    script.options.lightGradient = light.gradient;
    script.options.objectInPicture = light.objectInPicture;
    return isGood;
}

bool beginSeed(QStringList const& words, Script& script) {
    bool ok = false;
    script.options.seed = words[0].toULongLong(&ok);
    return ok;
}

bool beginSetting(QStringList const& words, Script& script) {
    script.settings.push_back(words[0].toUtf8());
    return true;
}

bool beginEeprom(QStringList const& words, Script& script) {
    constexpr int kSize = 8192;
    QByteArray& eeprom = script.eeprom;
    if (words.size() == 1) {
        eeprom = QByteArray(kSize, '\xFF');
        return words[0] == QLatin1String("blank");
    }
    bool ok = false;
    int const at = words[0].toInt(&ok);
    QByteArray const row = QByteArray::fromHex(words[1].toLatin1());
    ok = ok && at >= 0 && !row.isEmpty() && row.size() <= eeprom.size() && at <= eeprom.size() - row.size();
    if (ok)
        eeprom.replace(at, row.size(), row);
    return ok;
}

template <QString Options::*Member>
bool beginText(QStringList const& words, Script& script) {
    script.options.*Member = words[0];
    return !words[0].isEmpty();
}
} // namespace

// What the verbs do; the number of words and their form was looked at before.
struct Verbs {
    static bool close(Player& player, QStringList const&, QString*) {
        if (!std::exchange(player.m_dialog, {}).dialog)
            return false;
        player.m_report.reset();
        player.m_session.closePlugin();
        return true;
    }

    static bool press(Player& player, QStringList const& words, QString* error) {
        bool const isPressed = player.page().press(words[0].toLatin1().constData());
        if (!isPressed)
            *error = QStringLiteral("\"%1\" cannot be pressed now").arg(words[0]);
        return isPressed;
    }

    static bool set(Player& player, QStringList const& words, QString* error) {
        QByteArray const name = words[0].toLatin1();
        if (player.page().set(name.constData(), words[1]))
            return true;
        QStringList const choices = player.page().choices(name.constData());
        QString const offered = choices.isEmpty()
                                    ? QString()
                                    : QStringLiteral("; it offers ") + choices.join(QLatin1String(", "));
        *error = QStringLiteral("\"%1\" cannot be set to \"%2\" now%3").arg(words[0], words[1], offered);
        return false;
    }

    static bool frame(Player& player, QStringList const&, QString* error) {
        bool const isOpen = player.m_dialog.dialog || player.hasPage(error);
        if (isOpen)
            player.deliverFrame();
        return isOpen;
    }

    static bool frames(Player& player, QStringList const& words, QString*) {
        for (int i = 0; i < words[0].toInt() && !files::isInterrupted(); ++i) {
            player.deliverFrame();
            if (player.m_progress.frames % kFramesPerTick == 0)
                player.tick();
        }
        return true;
    }

    static bool tick(Player& player, QStringList const& words, QString*) {
        int const count = words.isEmpty() ? 1 : words[0].toInt();
        for (int i = 0; i < count && !files::isInterrupted(); ++i)
            player.tick();
        return true;
    }

    static bool wait(Player& player, QStringList const& words, QString* error) {
        auto const text = [&] { return player.page().text(words[0].toLatin1().constData()); };
        int const bound = words.size() > 2 ? words[2].toInt() : kFramesOfAWait;
        for (int count = 0; !matches(text(), words[1]) && !files::isInterrupted(); ++count) {
            if (count == bound) {
                player.m_hasTimedOut = true;
                *error = QStringLiteral("after %1 frames \"%2\" shows \"%3\", not \"%4\"")
                             .arg(QString::number(bound), words[0], text(), words[1]);
                return false;
            }
            (void)frames(player, {QStringLiteral("1")}, error);
        }
        return true;
    }

    static bool expect(Player& player, QStringList const& words, QString* error) {
        bool const isWanted = words[0] == QLatin1String("enabled");
        bool const isOfEnabling = isWanted || words[0] == QLatin1String("disabled");
        QString const& name = words[isOfEnabling ? 1 : 0];
        if (!player.hasWidget(name, error))
            return false;
        QByteArray const widget = name.toLatin1();
        QString const text = player.page().text(widget.constData());
        bool const isSo =
            isOfEnabling ? player.page().isEnabled(widget.constData()) == isWanted : matches(text, words[1]);
        if (!isSo)
            *error = isOfEnabling
                         ? QStringLiteral("\"%1\" is not %2").arg(name, words[0])
                         : QStringLiteral("\"%1\" shows \"%2\", not \"%3\"").arg(name, text, words[1]);
        return isSo;
    }

    static bool light(Player& player, QStringList const& words, QString*) {
        simulator::Light light = player.m_session.camera().light();
        (void)readLight(words, light);
        player.m_session.setLight(light);
        return true;
    }

    static bool reg(Player& player, QStringList const& words, QString* error) {
        bool const isTaken = player.m_session.setRegister(words[0].toLatin1(), words[1].toUInt(nullptr, 0));
        if (!isTaken)
            *error = QStringLiteral("the sensor does not take that: %1").arg(words[0]);
        return isTaken;
    }

    static bool fault(Player& player, QStringList const& words, QString* error) {
        if (player.m_session.camera().hasEeprom())
            player.m_session.injectFault(*parseFaultWish(words[0]));
        else
            *error = QStringLiteral("the camera has no EEPROM");
        return error->isEmpty();
    }

    static bool screenshot(Player& player, QStringList const& words, QString* error) {
        return files::replace(QDir(player.m_session.outputFolder()).absoluteFilePath(words[0]),
                              pngOf(player.m_dialog.dialog->grab().toImage()), error);
    }

    static std::span<Verb const> all() {
        static constexpr Verb kVerbs[] = {
            {"profile", 1, 1, "profile NAME", beginText<&Options::profile>},
            {"seed", 1, 1, "seed N", beginSeed},
            {"shading", 1, 1, "shading FILE", beginText<&Options::shadingFile>},
            {"ini", 1, 1, "ini FILE", beginText<&Options::iniFile>},
            {"setting", 1, 1, "setting LINE", beginSetting},
            {"eeprom", 1, 2, "eeprom blank, or behind that eeprom OFFSET BYTES", beginEeprom},
            {"light", 1, 4,
             "light KELVIN [LEVEL [GRADIENT [object]]], 2000 to 12000, 0.001 to 10000 and -1 to 1",
             beginLight, light, Needs::Session,
             [](QStringList const& words) {
                 simulator::Light light;
                 return readLight(words, light);
             }},
            {"fault", 1, 1, "fault NAME[@N][+] with N from 1 and a name that --help lists",
             [](QStringList const& words, Script& script) {
                 return bool(script.options.fault = parseFaultWish(words[0]));
             },
             fault, Needs::Session, [](QStringList const& words) { return bool(parseFaultWish(words[0])); }},
            {"register", 2, 2, "register NAME VALUE", nullptr, reg, Needs::Session,
             [](QStringList const& words) {
                 bool ok = false;
                 (void)words[1].toUInt(&ok, 0);
                 return ok;
             }},
            {"open", 0, 0, "open", nullptr,
             [](Player& player, QStringList const&, QString* error) { return player.open(error); }},
            {"show", 0, 0, "show", nullptr,
             [](Player& player, QStringList const&, QString* error) { return player.show(error); }},
            {"close", 0, 0, "close", nullptr, close},
            {"press", 1, 1, "press NAME", nullptr, press, Needs::Widget},
            {"set", 2, 2, "set NAME TEXT", nullptr, set, Needs::Widget},
            {"frame", 0, 1, "frame", nullptr, frame},
            {"frames", 1, 1, "frames N", nullptr, frames, Needs::Page, isCount<0>},
            {"tick", 0, 1, "tick [N]", nullptr, tick, Needs::Page, isCount<0>},
            {"wait", 2, 3, "wait NAME TEXT [FRAMES]", nullptr, wait, Needs::Widget, isCount<2>},
            {"expect", 2, 2, "expect NAME TEXT, expect enabled NAME or expect disabled NAME", nullptr,
             expect},
            {"screenshot", 1, 1, "screenshot FILE", nullptr, screenshot, Needs::Page},
        };
        return kVerbs;
    }
};

std::span<Verb const> verbs() { return Verbs::all(); }

Player::Player(Session& session) : m_session(session), m_placeholders(placeholdersOf(session.options())) {}

bool Player::perform(Command const& command, QString* error) {
    QStringList words;
    for (QString const& word : command.words)
        words << QString::fromUtf8(m_placeholders.reveal(word.toUtf8()));
    error->clear();
    Needs const needs = command.verb->needs;
    bool const isThere =
        needs == Needs::Session || (needs == Needs::Page ? hasPage(error) : hasWidget(words[0], error));
    if (isThere && command.verb->perform(*this, words, error))
        return true;
    if (error->isEmpty())
        *error = QStringLiteral("it cannot be done now");
    return false;
}

bool Player::open(QString* error) { return !m_dialog.dialog && m_dialog.make(m_session, error); }

bool Player::show(QString* error) {
    if ((!m_dialog.dialog && !open(error)) || m_dialog.page || !m_dialog.show(error))
        return false;
    m_report.emplace(m_dialog.page);
    return true;
}

bool Player::hasPage(QString* error) {
    if (m_dialog.dialog || !show(error))
        return bool(m_dialog.page);
    m_dialog.page.prepare(m_session);
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
    m_dialog.page.tick();
    QCoreApplication::processEvents();
    m_progress.statusTexts = m_dialog.page.statusTexts();
    m_report->show(m_progress);
}
} // namespace pictara
