#include "simulator/host/recording/input_player.h"

#include "simulator/host/session/light_ranges.h"
#include "simulator/host/session/session.h"

#include <QCoreApplication>
#include <utility>

namespace pictara {
// What each kind of input does; `rest` is what stands behind its name. False when it cannot be done.
struct InputKinds {
    using Do = bool (*)(InputPlayer& player, QString const& rest, QString* error);

    static bool open(InputPlayer& player, QString const&, QString* error) {
        return !player.m_dialog.dialog && makeHeadless(player.m_session, player.m_dialog, error);
    }

    static bool show(InputPlayer& player, QString const&, QString* error) {
        return player.m_dialog.dialog && !player.m_dialog.page && showHeadless(player.m_dialog, error);
    }

    static bool frame(InputPlayer& player, QString const&, QString*) {
        if (!player.m_dialog.dialog)
            return false;
        player.m_session.frames().deliverNext();
        QCoreApplication::processEvents();
        return true;
    }

    static bool tick(InputPlayer& player, QString const&, QString*) {
        if (!player.m_dialog.page)
            return false;
        player.m_dialog.page.stopTimer();
        player.m_dialog.page.tick();
        QCoreApplication::processEvents();
        return true;
    }

    static bool press(InputPlayer& player, QString const& rest, QString*) {
        return player.m_dialog.page.press(rest.toLatin1().constData());
    }

    static bool type(InputPlayer& player, QString const& rest, QString*) {
        return player.m_dialog.page.type(name(rest).constData(), text(rest));
    }

    static bool choose(InputPlayer& player, QString const& rest, QString*) {
        return player.m_dialog.page.choose(name(rest).constData(), text(rest));
    }

    static bool light(InputPlayer& player, QString const& rest, QString*) {
        QStringList const words = rest.split(QLatin1Char(' '));
        simulator::Light const light{words.value(0).toDouble(), words.value(1).toDouble(),
                                     words.value(2).toDouble(), words.value(3) == QLatin1String("object")};
        if (!isIn(kColourTemperatures, light.colourTemperature) || !isIn(kLevels, light.level) ||
            !isIn(kGradients, light.gradient))
            return false;
        player.m_session.setLight(light);
        return true;
    }

    static bool reg(InputPlayer& player, QString const& rest, QString*) {
        player.m_session.setRegister(name(rest), text(rest).toUInt());
        return true;
    }

    static bool fault(InputPlayer& player, QString const& rest, QString*) {
        auto const wish = parseFaultWish(rest);
        return wish && player.m_session.injectFault(*wish);
    }

    static bool close(InputPlayer& player, QString const&, QString*) {
        if (!std::exchange(player.m_dialog, {}).dialog)
            return false;
        player.m_session.closePlugin();
        return true;
    }

private:
    static bool isIn(Range const& range, double value) { return value >= range.low && value <= range.high; }
    static QByteArray name(QString const& rest) { return rest.section(QLatin1Char(' '), 0, 0).toLatin1(); }
    static QString text(QString const& rest) { return rest.section(QLatin1Char(' '), 1); }
};

namespace {
struct {
    char const* name;
    InputKinds::Do perform;
} constexpr kKinds[] = {
    {"open", InputKinds::open},     {"show", InputKinds::show},   {"frame", InputKinds::frame},
    {"tick", InputKinds::tick},     {"press", InputKinds::press}, {"type", InputKinds::type},
    {"choose", InputKinds::choose}, {"light", InputKinds::light}, {"register", InputKinds::reg},
    {"fault", InputKinds::fault},   {"close", InputKinds::close},
};
} // namespace

bool InputPlayer::play(QString const& input, QString* error) {
    QString const name = input.section(QLatin1Char(' '), 0, 0);
    for (auto const& kind : kKinds) {
        if (name != QLatin1String(kind.name))
            continue;
        error->clear();
        if (kind.perform(*this, input.section(QLatin1Char(' '), 1), error))
            return true;
        if (error->isEmpty())
            *error = QStringLiteral("it cannot be done now");
        return false;
    }
    *error = QStringLiteral("there is no input of this name");
    return false;
}
} // namespace pictara
