#pragma once

#include <QJsonObject>
#include <QJsonValue>
#include <QString>
#include <cstdint>
#include <limits>
#include <vector>

namespace simulator {

/// The first fault found in a data file. Later ones are mostly its consequences and are dropped.
struct JsonFault {
    QString file;    ///< name without folders, as the message shows it
    QString message; ///< empty: no fault so far

    [[nodiscard]] bool isSet() const { return !message.isEmpty(); }
    /// `path` is the place within the file, empty for the file as a whole.
    void set(QString const& path, QString const& what);
};

/// A value of a JSON document that knows its place, so that every fault names where it lies. Reading a value
/// of the wrong kind records the fault and gives a harmless default: a reader reads on and asks once at the
/// end. Borrows the fault.
class JsonPlace {
public:
    JsonPlace(QJsonValue value, QString path, JsonFault& fault);

    [[nodiscard]] bool has(char const* key) const;
    /// A member that must be there.
    [[nodiscard]] JsonPlace operator[](char const* key) const;
    /// The elements of an array; a number that is not 0 is how many there must be.
    [[nodiscard]] std::vector<JsonPlace> items(size_t count = 0) const;
    /// The names of an object's members, in alphabetical order.
    [[nodiscard]] QStringList keys() const;

    [[nodiscard]] double number(double least = std::numeric_limits<double>::lowest(),
                                double most = std::numeric_limits<double>::max()) const;
    /// A whole number, or text such as "0x3600".
    [[nodiscard]] uint32_t integer(uint32_t least = 0, uint32_t most = 0xFFFFFFFF) const;
    [[nodiscard]] QString text() const;
    [[nodiscard]] bool flag() const;
    [[nodiscard]] bool isArray() const { return m_value.isArray(); }
    [[nodiscard]] QJsonObject object() const;

    void fail(QString const& what) const;

private:
    [[nodiscard]] JsonPlace child(QJsonValue const& value, QString const& path) const;

    QJsonValue m_value;
    QString m_path;
    JsonFault* m_fault;
};

/// Reads a JSON file whose outermost value is an object; an empty object and a fault otherwise.
[[nodiscard]] QJsonObject readJsonFile(QString const& file, JsonFault& fault);

/// `base` changed by `changes`: objects are merged member by member, a null removes a member, anything else
/// replaces it (JSON merge patch, RFC 7396).
[[nodiscard]] QJsonObject mergedJson(QJsonObject base, QJsonObject const& changes);

} // namespace simulator
