#pragma once

#include "simulator/host/report/certificate.h"

#include <QJsonArray>
#include <optional>
#include <span>

namespace shading {
/// A column of a table, and what scripts call its figures.
struct Column {
    char const* key;   ///< tells the unit
    char const* head;  ///< null: a text, which people are told below the tables
    int decimals = -1; ///< -1: as many as the number needs, of six figures
    char const* unit = "";
};

/// Adds a table of the first rows, and all as a list of objects under `key`. The rows hold a text, a number,
/// a yes or no or nothing for each column, and first what they are about.
void tell(pictara::Certificate& certificate, char const* key, QString const& title,
          std::span<Column const> columns, std::vector<QJsonArray> const& rows, size_t shown = SIZE_MAX);

/// None, with the line that tells a user why.
[[nodiscard]] std::nullopt_t fail(QString const& file, QString const& cause, QString* error);
} // namespace shading
