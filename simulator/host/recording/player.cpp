#include "simulator/host/recording/player.h"

#include "simulator/files/interruption.h"
#include "simulator/host/report/output_folder.h"
#include "simulator/host/session/light_words.h"
#include "simulator/host/session/session.h"

#include <QCoreApplication>
#include <QDialog>
#include <QFileInfo>
#include <QPixmap>

namespace pictara {
namespace {
constexpr int kMostFrames = 1'000'000;
constexpr int kFramesOfAWait = 2000;
constexpr int kFramesPerTick = 3;

bool isCount(QString const& text) {
    bool ok = false;
    int const number = text.toInt(&ok);
    return ok && number >= 1 && number <= kMostFrames;
}

bool isLight(QStringList const& words) {
    simulator::Light light;
    return readLight(words, light);
}

std::optional<FaultWish> faultOf(QStringList const& words) {
    auto const wish = parseFaultWish(words[0]);
    return wish && canStrike(*wish) ? wish : std::nullopt;
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
    return words[0].contains(QLatin1Char('='));
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

bool beginFault(QStringList const& words, Script& script) {
    return bool(script.options.fault = faultOf(words));
}

constexpr Verb kVerbs[] = {
    {"profile", 1, 1, "profile NAME", beginText<&Options::profile>, nullptr},
    {"seed", 1, 1, "seed N", beginSeed, nullptr},
    {"shading", 1, 1, "shading FILE", beginText<&Options::shadingFile>, nullptr},
    {"ini", 1, 1, "ini FILE", beginText<&Options::iniFile>, nullptr},
    {"setting", 1, 1, "setting KEY=VALUE", beginSetting, nullptr},
    {"eeprom", 1, 2, "eeprom blank, or behind that eeprom OFFSET BYTES", beginEeprom, nullptr},
    {"light", 1, 4, "light KELVIN [LEVEL [GRADIENT [object]]], 2000 to 12000, 0.001 to 10000 and -1 to 1",
     beginLight, &Player::light, isLight},
    {"fault", 1, 1, "fault NAME[@N][+] with N from 1", beginFault, &Player::fault,
     [](QStringList const& words) { return bool(faultOf(words)); }},
    {"register", 2, 2, "register NAME VALUE", nullptr, &Player::setRegister,
     [](QStringList const& words) {
         bool ok = false;
         (void)words[1].toUInt(&ok, 0);
         return ok;
     }},
    {"open", 0, 0, "open", nullptr, &Player::open},
    {"show", 0, 0, "show", nullptr, &Player::show},
    {"close", 0, 0, "close", nullptr, &Player::close},
    {"press", 1, 1, "press NAME", nullptr, &Player::press},
    {"set", 2, 2, "set NAME TEXT", nullptr, &Player::set},
    {"frame", 0, 1, "frame", nullptr, &Player::frame},
    {"frames", 1, 1, "frames N", nullptr, &Player::frames,
     [](QStringList const& words) { return isCount(words[0]); }},
    {"tick", 0, 1, "tick [N]", nullptr, &Player::tick,
     [](QStringList const& words) { return words.isEmpty() || isCount(words[0]); }},
    {"wait", 2, 3, "wait NAME TEXT [FRAMES]", nullptr, &Player::await,
     [](QStringList const& words) { return words.size() == 2 || isCount(words[2]); }},
    {"expect", 2, 2, "expect NAME TEXT, expect enabled NAME or expect disabled NAME", nullptr,
     &Player::expect},
    {"screenshot", 1, 1, "screenshot FILE", nullptr, &Player::screenshot},
};
} // namespace

std::span<Verb const> verbs() { return kVerbs; }

Player::Player(Session& session, Options const& options)
    : m_session(session), m_placeholders(placeholdersOf(options)) {}

bool Player::perform(Command const& command, QString* error) {
    QStringList words;
    for (QString const& word : command.words)
        words << QString::fromUtf8(m_placeholders.reveal(word.toUtf8()));
    error->clear();
    if ((this->*command.verb->perform)(words, error))
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

bool Player::open(QStringList const&, QString* error) {
    return !m_dialog.dialog && m_dialog.make(m_session, error);
}

bool Player::show(QStringList const&, QString* error) {
    if (!m_dialog.dialog || m_dialog.page || !m_dialog.show(error))
        return false;
    m_report.emplace(stdout, m_dialog.page);
    return true;
}

bool Player::close(QStringList const&, QString*) {
    if (!std::exchange(m_dialog, {}).dialog)
        return false;
    m_report.reset();
    m_session.closePlugin();
    return true;
}

bool Player::hasPage(QString* error) {
    if (m_dialog.dialog || !open({}, error) || !show({}, error))
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

bool Player::press(QStringList const& words, QString* error) {
    if (!hasWidget(words[0], error))
        return false;
    bool const isPressed = m_dialog.page.press(words[0].toLatin1().constData());
    if (!isPressed)
        *error = QStringLiteral("\"%1\" cannot be pressed now").arg(words[0]);
    return isPressed;
}

bool Player::set(QStringList const& words, QString* error) {
    if (!hasWidget(words[0], error))
        return false;
    QByteArray const name = words[0].toLatin1();
    if (m_dialog.page.set(name.constData(), words[1]))
        return true;
    QStringList const choices = m_dialog.page.choices(name.constData());
    QString const offered =
        choices.isEmpty() ? QString() : QStringLiteral("; it offers ") + choices.join(QLatin1String(", "));
    *error = QStringLiteral("\"%1\" cannot be set to \"%2\" now%3").arg(words[0], words[1], offered);
    return false;
}

bool Player::frame(QStringList const&, QString*) {
    if (m_dialog.dialog)
        deliverFrame();
    return m_dialog.dialog != nullptr;
}

bool Player::frames(QStringList const& words, QString* error) {
    if (!hasPage(error))
        return false;
    for (int i = 0; i < words[0].toInt() && !files::isInterrupted(); ++i) {
        deliverFrame();
        if (m_progress.frames % kFramesPerTick == 0)
            tickOnce();
    }
    return true;
}

bool Player::tick(QStringList const& words, QString* error) {
    if (!hasPage(error))
        return false;
    int const count = words.isEmpty() ? 1 : words[0].toInt();
    for (int i = 0; i < count && !files::isInterrupted(); ++i)
        tickOnce();
    return true;
}

bool Player::await(QStringList const& words, QString* error) {
    if (!hasWidget(words[0], error))
        return false;
    QByteArray const name = words[0].toLatin1();
    int const bound = words.size() > 2 ? words[2].toInt() : kFramesOfAWait;
    for (int count = 0; count < bound; ++count) {
        if (files::isInterrupted() || matches(m_dialog.page.text(name.constData()), words[1]))
            return true;
        (void)frames({QStringLiteral("1")}, error);
    }
    QString const text = m_dialog.page.text(name.constData());
    m_hasTimedOut = !matches(text, words[1]);
    if (m_hasTimedOut)
        *error = QStringLiteral("after %1 frames \"%2\" shows \"%3\", not \"%4\"")
                     .arg(QString::number(bound), words[0], text, words[1]);
    return !m_hasTimedOut;
}

bool Player::expect(QStringList const& words, QString* error) {
    bool const isWanted = words[0] == QLatin1String("enabled");
    bool const isOfEnabling = isWanted || words[0] == QLatin1String("disabled");
    QString const& name = words[isOfEnabling ? 1 : 0];
    if (!hasWidget(name, error))
        return false;
    QByteArray const widget = name.toLatin1();
    QString const text = m_dialog.page.text(widget.constData());
    bool const isSo =
        isOfEnabling ? m_dialog.page.isEnabled(widget.constData()) == isWanted : matches(text, words[1]);
    if (!isSo)
        *error = isOfEnabling ? QStringLiteral("\"%1\" is not %2").arg(name, words[0])
                              : QStringLiteral("\"%1\" shows \"%2\", not \"%3\"").arg(name, text, words[1]);
    return isSo;
}

bool Player::light(QStringList const& words, QString*) {
    simulator::Light light = m_session.camera().light();
    bool const isGood = readLight(words, light);
    if (isGood)
        m_session.setLight(light);
    return isGood;
}

bool Player::setRegister(QStringList const& words, QString*) {
    m_session.setRegister(words[0].toLatin1(), words[1].toUInt(nullptr, 0));
    return true;
}

bool Player::fault(QStringList const& words, QString* error) {
    if (!m_session.camera().hasEeprom())
        *error = QStringLiteral("the camera has no EEPROM");
    else if (!m_session.injectFault(*faultOf(words)))
        *error = QStringLiteral("there is no fault \"%1\"; known are %2")
                     .arg(words[0], simulator::SimulatedCamera::faultNames().join(QLatin1String(", ")));
    return error->isEmpty();
}

bool Player::screenshot(QStringList const& words, QString* error) {
    if (!hasPage(error))
        return false;
    QFileInfo const info(QDir(m_session.outputFolder()), words[0]);
    OutputFolder folder(info.absolutePath());
    folder.savePicture(info.fileName(), m_dialog.dialog->grab().toImage());
    if (folder.failed())
        *error = QStringLiteral("the picture cannot be saved");
    return !folder.failed();
}

void Player::deliverFrame() {
    m_session.frames().deliverNext();
    QCoreApplication::processEvents();
    ++m_progress.frames;
}

void Player::tickOnce() {
    m_dialog.page.stopTimer(); // showing the page again starts its timer again
    m_dialog.page.tick();
    QCoreApplication::processEvents();
    ++m_progress.ticks;
    m_progress.statusTexts = m_dialog.page.statusTexts();
    m_report->show(m_progress);
}
} // namespace pictara
