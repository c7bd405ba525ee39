#pragma once

#include "simulator/host/report/charts.h"
#include "simulator/host/report/output_folder.h"

#include <QStringList>
#include <utility>

namespace pictara {
/// How good a board is; the later, the worse.
enum class Verdict { None, Pass, Marginal, Fail };

/// "pass", "marginal" or "fail"; "-" for what is not judged.
[[nodiscard]] QString textOf(Verdict verdict);

/// The first row is its head, and in each row the first cell.
struct Table {
    QString title;
    std::vector<QStringList> rows;
};

struct Picture {
    QImage image;
    QString caption;
    char const* file; ///< its name, like the certificate's
};

/// What a run ends in: a page that prints on one sheet, lines for a terminal, and figures for scripts.
struct Certificate {
    QString run;         ///< "calibration", "replay", "script", or what another program was asked for
    QString result = {}; ///< the verdict's text, or why there is none: "refused", "not calibrated"...
    QString cause = {};  ///< of what is no pass
    Verdict verdict = Verdict::None; ///< the worst of all that was judged
    std::vector<Table> tables = {};  ///< what was measured, its limit and its verdict first
    std::vector<std::pair<QString, QString>> facts = {}; ///< label and text; an empty text is not told
    std::vector<Picture> pictures = {};
    std::vector<HeatMap> maps = {};
    std::vector<ProfileChart> profiles = {};
    QJsonObject figures = {}; ///< every key tells its unit

    void judge(Verdict next) { verdict = std::max(verdict, next); }
};

/// "label: text" for each fact, and aligned tables.
[[nodiscard]] QString certificateText(Certificate const& certificate);
/// A page of HTML that needs nothing but itself.
[[nodiscard]] QByteArray certificatePage(Certificate const& certificate);
/// A JSON object.
[[nodiscard]] QByteArray certificateJson(Certificate const& certificate);

/// Writes certificate.html, summary.json and the pictures, and removes pictures of an earlier run. What a
/// calibration leaves has a bare name; what another run leaves bears its kind before it, so that it replaces
/// no calibration's. Returns the page's absolute name.
QString writeCertificate(Certificate const& certificate, OutputFolder& output);

/// What one line of a table of boards tells, in its order: keys of the object "board" of the figures.
inline constexpr char const* kBoardColumns[] = {"serial_number", "date",        "sensor",   "label",
                                                "lights_K",      "before_ab",   "after_ab", "verdict",
                                                "eeprom",        "results_file"};

/// Adds the certificate's board as a line to a table of comma-separated values (RFC 4180), with a head when
/// the file is new or empty. Programs that do so at the same time wait for one another. False with a message
/// for the user, and the file as it was, when it cannot be written.
[[nodiscard]] bool appendBoard(Certificate const& certificate, QString const& file, QString* error);

/// A number with as many decimals as anybody can mean; 0 for what is no number.
[[nodiscard]] double rounded(double value);
} // namespace pictara
