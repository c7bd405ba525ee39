#include "simulator/camera/json_place.h"
#include "simulator/files/whole_file.h"

#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QStringList>
#include <cmath>
#include <utility>

namespace simulator {
namespace {

constexpr qint64 kMostBytes = 16 << 20; // numbers for the largest grid that anybody measures

} // namespace

void JsonFault::set(QString const& path, QString const& what) {
    if (isSet())
        return;
    message = path.isEmpty() ? file + QLatin1String(": ") + what
                             : file + QLatin1String(": ") + path + QLatin1String(": ") + what;
}

JsonPlace::JsonPlace(QJsonValue value, QString path, JsonFault& fault)
    : m_value(std::move(value)), m_path(std::move(path)), m_fault(&fault) {}

JsonPlace JsonPlace::child(QJsonValue const& value, QString const& path) const {
    return {value, path, *m_fault};
}

void JsonPlace::fail(QString const& what) const {
    m_fault->set(m_path, what);
}

bool JsonPlace::has(char const* key) const {
    return m_value.toObject().contains(QLatin1String(key));
}

JsonPlace JsonPlace::operator[](char const* key) const {
    QString const name = QString::fromUtf8(key);
    if (!m_value.isObject())
        fail(QStringLiteral("an object is expected"));
    else if (!m_value.toObject().contains(name))
        fail(QStringLiteral("the key \"%1\" is missing").arg(name));
    return child(m_value.toObject().value(name), m_path.isEmpty() ? name : m_path + QLatin1Char('.') + name);
}

std::vector<JsonPlace> JsonPlace::items(size_t count) const {
    QJsonArray const array = m_value.toArray();
    if (!m_value.isArray())
        fail(QStringLiteral("an array is expected"));
    else if (count != 0 && size_t(array.size()) != count)
        fail(QStringLiteral("%1 values are expected, not %2").arg(count).arg(array.size()));
    std::vector<JsonPlace> places;
    places.reserve(size_t(array.size()));
    for (int i = 0; i < array.size(); ++i)
        places.push_back(child(array.at(i), QStringLiteral("%1[%2]").arg(m_path).arg(i)));
    // Whoever asked for a count may index by it even when the file is at fault.
    while (places.size() < count)
        places.push_back(child(QJsonValue(), m_path));
    return places;
}

QStringList JsonPlace::keys() const {
    return object().keys();
}

double JsonPlace::number(double least, double most) const {
    if (!m_value.isDouble() || !std::isfinite(m_value.toDouble())) {
        fail(QStringLiteral("a number is expected"));
        return least > 0 ? least : 0;
    }
    double const value = m_value.toDouble();
    if (value < least || value > most)
        fail(QStringLiteral("%1 lies outside %2 to %3").arg(value).arg(least).arg(most));
    return value;
}

uint32_t JsonPlace::integer(uint32_t least, uint32_t most) const {
    bool isWhole = false;
    qulonglong value = 0;
    if (m_value.isString()) {
        value = m_value.toString().toULongLong(&isWhole, 0);
    } else if (m_value.isDouble()) {
        double const number = m_value.toDouble();
        isWhole = number >= 0 && number <= 0xFFFFFFFF && number == std::floor(number);
        value = isWhole ? qulonglong(number) : 0;
    }
    if (!isWhole) {
        fail(QStringLiteral("a whole number is expected"));
        return least;
    }
    if (value < least || value > most) {
        fail(QStringLiteral("%1 lies outside %2 to %3").arg(value).arg(least).arg(most));
        return least;
    }
    return uint32_t(value);
}

QString JsonPlace::text() const {
    if (!m_value.isString())
        fail(QStringLiteral("a text is expected"));
    return m_value.toString();
}

bool JsonPlace::flag() const {
    if (!m_value.isBool())
        fail(QStringLiteral("true or false is expected"));
    return m_value.toBool();
}

QJsonObject JsonPlace::object() const {
    if (!m_value.isObject())
        fail(QStringLiteral("an object is expected"));
    return m_value.toObject();
}

QJsonObject readJsonFile(QString const& file, JsonFault& fault) {
    fault.file = QFileInfo(file).fileName();
    QString why;
    auto const bytes = files::read(file, kMostBytes, &why);
    if (!bytes) {
        fault.file = file; // where it was looked for is what its user needs to know
        fault.set({}, QStringLiteral("cannot be read: %1").arg(why));
        return {};
    }
    QJsonParseError parseError{};
    QJsonDocument const document = QJsonDocument::fromJson(*bytes, &parseError);
    if (parseError.error != QJsonParseError::NoError) {
        auto const line = bytes->left(parseError.offset).count('\n') + 1;
        fault.set(QStringLiteral("line %1").arg(line), parseError.errorString());
    } else if (!document.isObject()) {
        fault.set({}, QStringLiteral("an object is expected"));
    }
    return document.object();
}

QJsonObject mergedJson(QJsonObject base, QJsonObject const& changes) {
    for (auto member = changes.begin(); member != changes.end(); ++member) {
        if (member.value().isNull())
            base.remove(member.key());
        else if (member.value().isObject())
            base.insert(member.key(),
                        mergedJson(base.value(member.key()).toObject(), member.value().toObject()));
        else
            base.insert(member.key(), member.value());
    }
    return base;
}

} // namespace simulator
