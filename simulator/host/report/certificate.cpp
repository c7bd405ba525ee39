#include "simulator/host/report/certificate.h"

#include "simulator/files/whole_file.h"

#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QLockFile>
#include <algorithm>
#include <cmath>
#include <iterator>

namespace pictara {
namespace {
QString linesOf(Table const& table) {
    std::vector<int> widths(table.rows.empty() ? 0 : size_t(table.rows.front().size()));
    for (QStringList const& row : table.rows)
        for (size_t i = 0; i < widths.size(); ++i)
            widths[i] = std::max(widths[i], row.value(int(i)).size());
    QString lines = table.title.isEmpty() ? QString() : table.title + '\n';
    for (QStringList const& row : table.rows) {
        QString line;
        for (size_t i = 0; i < widths.size(); ++i)
            line += (i == 0 ? row[0].leftJustified(widths[0]) : row.value(int(i)).rightJustified(widths[i])) +
                    QLatin1String("  ");
        while (line.endsWith(' '))
            line.chop(1);
        lines += line + '\n';
    }
    return lines;
}

QJsonObject profilesOf(Certificate const& certificate) {
    QJsonObject charts;
    for (ProfileChart const& chart : certificate.profiles) {
        QJsonObject lines;
        for (ProfileChart::Line const& line : chart.lines) {
            QJsonArray values;
            std::transform(line.values.begin(), line.values.end(), std::back_inserter(values), rounded);
            lines[line.name] = values;
        }
        charts[chart.key] = lines;
    }
    return charts;
}

QString quoted(QString text) { return '"' + text.replace('"', QLatin1String("\"\"")) + '"'; }

QString boardLine(QJsonObject const& board) {
    QStringList cells;
    for (char const* key : kBoardColumns) {
        QJsonValue const value = board[QLatin1String(key)];
        cells << (value.isDouble()   ? QString::number(value.toDouble())
                  : value.isString() ? quoted(value.toString())
                                     : QString());
    }
    return cells.join(',') + '\n';
}
} // namespace

QString textOf(Verdict verdict) {
    constexpr char const* kTexts[] = {"-", "pass", "marginal", "fail"};
    return QString::fromLatin1(kTexts[size_t(verdict)]);
}

QString certificateText(Certificate const& certificate) {
    QString text = QStringLiteral("result: %1\n").arg(certificate.result);
    if (!certificate.cause.isEmpty())
        text += QStringLiteral("cause: %1\n").arg(certificate.cause);
    for (Table const& table : certificate.tables)
        text += '\n' + linesOf(table);
    text += '\n';
    for (auto const& [label, told] : certificate.facts)
        if (!told.isEmpty())
            text += label + QLatin1String(": ") + told + '\n';
    return text;
}

QByteArray certificateJson(Certificate const& certificate) {
    QJsonObject root = certificate.figures;
    root["format"] = "pictara-summary-2";
    root["run"] = certificate.run;
    root["result"] = certificate.result;
    root["cause"] = certificate.cause;
    if (!certificate.profiles.empty())
        root["profiles"] = profilesOf(certificate);
    return QJsonDocument(root).toJson();
}

QString writeCertificate(Certificate const& certificate, OutputFolder& output) {
    auto const nameOf = [&](char const* name) {
        return certificate.run == QLatin1String("calibration") ? QString(name) : certificate.run + '-' + name;
    };
    for (Picture const& picture : certificate.pictures)
        output.savePicture(nameOf(picture.file), picture.image);
    output.removeOthers({nameOf("before.png"), nameOf("after.png"), nameOf("refused.png")});
    QString const page = nameOf("certificate.html");
    output.saveBytes(page, certificatePage(certificate));
    output.saveBytes(nameOf("summary.json"), certificateJson(certificate));
    return output.pathOf(page);
}

bool appendBoard(Certificate const& certificate, QString const& file, QString* error) {
    constexpr int kLongestWaitMs = 10'000;
    constexpr qint64 kLargestTable = 1 << 28;
    if (!files::isReplaceable(file, error))
        return false;
    QLockFile lock(file + QLatin1String(".lock"));
    if (!lock.tryLock(kLongestWaitMs)) {
        *error = QStringLiteral("%1: cannot be written: another program holds %1.lock").arg(file);
        return false;
    }
    QByteArray table;
    if (QFileInfo::exists(file)) {
        auto const present = files::read(file, kLargestTable, error);
        if (!present)
            return false;
        table = *present;
    }
    if (table.isEmpty())
        table = QStringList(std::begin(kBoardColumns), std::end(kBoardColumns)).join(',').toUtf8() + '\n';
    if (!table.endsWith('\n')) // as an editor may leave it
        table += '\n';
    return files::replace(file, table + boardLine(certificate.figures["board"].toObject()).toUtf8(), error);
}

double rounded(double value) {
    constexpr double kFractions = 1e5;
    return std::isfinite(value) ? std::round(value * kFractions) / kFractions : 0;
}
} // namespace pictara
