#pragma once

#include <QJsonObject>
#include <QJsonValue>
#include <QString>
#include <array>
#include <cstdint>
#include <initializer_list>
#include <limits>
#include <optional>
#include <utility>
#include <vector>

namespace files {
/// A value of a JSON document that knows its place, so that every fault names where it lies, as in
/// `p.json: optics.lens.centre[1]: 4 lies outside -0.5 to 0.5`. Reading a value of the wrong kind tells the
/// fault in `error` and gives a harmless default: a reader reads on and asks once at the end. Later faults
/// are mostly consequences of the first and are dropped. Borrows `error`, which is empty at first.
class JsonPlace {
public:
    /// The outermost value of a file, whose name without folders the messages show.
    JsonPlace(QJsonObject const& root, QString file, QString* error)
        : m_value(root), m_file(std::move(file)), m_error(error) {}

    [[nodiscard]] bool has(char const* key) const;
    /// A member that must be there.
    [[nodiscard]] JsonPlace operator[](char const* key) const;
    /// The elements of an array; a number that is not 0 is how many there must be.
    [[nodiscard]] std::vector<JsonPlace> items(size_t count = 0) const;
    /// The elements of an array that has at least one and at most `most`, of what `noun` says.
    [[nodiscard]] std::vector<JsonPlace> someItems(size_t most, char const* noun) const;

    [[nodiscard]] double number(double least = std::numeric_limits<double>::lowest(),
                                double most = std::numeric_limits<double>::max()) const;
    /// An array of numbers, each from -limit to limit.
    template <size_t Count>
    [[nodiscard]] std::array<double, Count> numbers(double limit) const {
        std::array<double, Count> result{};
        std::vector<JsonPlace> const places = items(Count);
        for (size_t i = 0; i < Count; ++i)
            result[i] = places[i].number(-limit, limit);
        return result;
    }
    /// A whole number, or text such as "0x3600".
    [[nodiscard]] uint32_t integer(uint32_t least = 0, uint32_t most = 0xFFFFFFFF) const;
    /// A member that need not be there.
    [[nodiscard]] uint32_t integerOr(uint32_t otherwise, char const* key, uint32_t least = 0,
                                     uint32_t most = 0xFFFFFFFF) const;
    [[nodiscard]] QString text() const;
    /// The text's number among the names; 0 for any other text.
    [[nodiscard]] size_t choice(std::initializer_list<char const*> names) const;
    [[nodiscard]] bool flag() const;
    [[nodiscard]] bool isArray() const { return m_value.isArray(); }
    [[nodiscard]] QJsonObject object() const;

    void fail(QString const& what) const;

private:
    [[nodiscard]] JsonPlace child(QJsonValue const& value, QString const& path) const;
    void expect(bool holds, char const* what) const;

    QJsonValue m_value;
    QString m_file;
    QString m_path; ///< within the file; empty for the file as a whole
    QString* m_error;
};

/// Reads a JSON text or file whose outermost value is an object; empty, with the place and the cause in
/// `error`, when it is none. `name` is what the messages call a text.
[[nodiscard]] std::optional<QJsonObject> parseJson(QByteArray const& text, QString const& name,
                                                   QString* error);
[[nodiscard]] std::optional<QJsonObject> readJson(QString const& file, QString* error);

/// `base` changed by `changes`: objects are merged member by member, a null removes a member, anything else
/// replaces it (JSON merge patch, RFC 7396).
[[nodiscard]] QJsonObject mergedJson(QJsonObject base, QJsonObject const& changes);
} // namespace files
