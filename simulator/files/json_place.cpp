#include "simulator/files/json_place.h"

#include "simulator/files/whole_file.h"

#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QStringList>
#include <algorithm>
#include <cmath>

namespace files {
namespace {
constexpr qint64 kMostBytes = 16 << 20; // numbers for the largest grid that anybody measures

QString at(QString const& file, QString const& path, QString const& what) {
    return file + QLatin1String(": ") + (path.isEmpty() ? what : path + QLatin1String(": ") + what);
}
} // namespace

JsonPlace JsonPlace::child(QJsonValue const& value, QString const& path) const {
    JsonPlace place = *this;
    place.m_value = value;
    place.m_path = path;
    return place;
}

void JsonPlace::fail(QString const& what) const {
    if (m_error->isEmpty())
        *m_error = at(m_file, m_path, what);
}

void JsonPlace::expect(bool holds, char const* what) const {
    if (!holds)
        fail(QLatin1String(what) + QLatin1String(" is expected"));
}

bool JsonPlace::has(char const* key) const { return m_value.toObject().contains(QLatin1String(key)); }

JsonPlace JsonPlace::operator[](char const* key) const {
    QString const name = QString::fromUtf8(key);
    QJsonObject const members = object();
    if (!members.contains(name)) // of what is no object that is told already
        fail(QStringLiteral("the key \"%1\" is missing").arg(name));
    return child(members.value(name), m_path.isEmpty() ? name : m_path + QLatin1Char('.') + name);
}

std::vector<JsonPlace> JsonPlace::items(size_t count) const {
    QJsonArray const array = m_value.toArray();
    expect(m_value.isArray(), "an array");
    if (count != 0 && size_t(array.size()) != count)
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

std::vector<JsonPlace> JsonPlace::someItems(size_t most, char const* noun) const {
    std::vector<JsonPlace> places = items();
    if (places.empty())
        fail(QStringLiteral("at least one %1 is needed").arg(QLatin1String(noun)));
    if (places.size() > most) {
        places[most].fail(QStringLiteral("no more than %1 %2s are read").arg(most).arg(QLatin1String(noun)));
        places.erase(places.begin() + std::ptrdiff_t(most), places.end());
    }
    return places;
}

double JsonPlace::number(double least, double most) const {
    double const value = m_value.toDouble(std::max(least, 0.0)); // finite: no text of JSON stands for others
    expect(m_value.isDouble(), "a number");
    if (value < least || value > most)
        fail(QStringLiteral("%1 lies outside %2 to %3").arg(value).arg(least).arg(most));
    return value;
}

uint32_t JsonPlace::integer(uint32_t least, uint32_t most) const {
    double const number = m_value.toDouble(-1);
    bool isWhole = number >= 0 && number <= 0xFFFFFFFF && number == std::floor(number);
    qulonglong const value =
        m_value.isString() ? m_value.toString().toULongLong(&isWhole, 0) : qulonglong(isWhole ? number : 0);
    bool const isWithin = value >= least && value <= most;
    expect(isWhole, "a whole number");
    if (!isWithin)
        fail(QStringLiteral("%1 lies outside %2 to %3").arg(value).arg(least).arg(most));
    return isWhole && isWithin ? uint32_t(value) : least;
}

uint32_t JsonPlace::integerOr(uint32_t otherwise, char const* key, uint32_t least, uint32_t most) const {
    return has(key) ? (*this)[key].integer(least, most) : otherwise;
}

QString JsonPlace::text() const {
    expect(m_value.isString(), "a text");
    return m_value.toString();
}

size_t JsonPlace::choice(std::initializer_list<char const*> names) const {
    QStringList known;
    for (char const* const name : names)
        known.append(QString::fromLatin1(name));
    QString const chosen = text();
    int const index = known.indexOf(chosen);
    if (index < 0)
        fail(QStringLiteral("\"%1\" is none of %2").arg(chosen, known.join(QStringLiteral(", "))));
    return size_t(std::max(index, 0));
}

bool JsonPlace::flag() const {
    expect(m_value.isBool(), "true or false");
    return m_value.toBool();
}

QJsonObject JsonPlace::object() const {
    expect(m_value.isObject(), "an object");
    return m_value.toObject();
}

std::optional<QJsonObject> parseJson(QByteArray const& text, QString const& name, QString* error) {
    QJsonParseError fault{};
    QJsonDocument const document = QJsonDocument::fromJson(text, &fault);
    if (fault.error != QJsonParseError::NoError)
        *error = at(name, QStringLiteral("line %1").arg(text.left(fault.offset).count('\n') + 1),
                    fault.errorString());
    else if (!document.isObject())
        *error = at(name, {}, QStringLiteral("an object is expected"));
    else
        return document.object();
    return std::nullopt;
}

std::optional<QJsonObject> readJson(QString const& file, QString* error) {
    auto const text = files::read(file, kMostBytes, error);
    return text ? parseJson(*text, QFileInfo(file).fileName(), error) : std::nullopt;
}

QJsonObject mergedJson(QJsonObject base, QJsonObject const& changes) {
    for (auto member = changes.begin(); member != changes.end(); ++member) {
        QJsonValue const& change = member.value();
        if (change.isNull())
            base.remove(member.key());
        else
            base.insert(member.key(), change.isObject()
                                          ? mergedJson(base.value(member.key()).toObject(), change.toObject())
                                          : change);
    }
    return base;
}
} // namespace files
