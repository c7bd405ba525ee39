#include "simulator/host/report/report.h"

#include "simulator/files/whole_file.h"
#include "simulator/host/session/message_log.h"

#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <algorithm>
#include <cmath>
#include <iterator>

namespace pictara {
namespace {
// The facts' values of that index; null when none of them is there.
QJsonValue objectOf(Section const& section, size_t index) {
    QJsonObject object;
    bool isEmpty = true;
    for (Fact const& fact : section.facts) {
        QJsonValue const& value = fact.values[index];
        object[fact.key] = value.isDouble() ? QJsonValue(rounded(value.toDouble())) : value;
        isEmpty = isEmpty && value.isNull();
    }
    return isEmpty ? QJsonValue() : object;
}

QJsonArray objectsOf(Section const& section) {
    QJsonArray objects;
    for (size_t i = 0; !section.facts.empty() && i < section.facts.front().values.size(); ++i)
        objects.append(objectOf(section, i));
    return objects;
}

QJsonObject profilesOf(Section const& section) {
    QJsonObject charts;
    for (ProfileChart const& chart : section.profiles) {
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

// Each thing in a line of its own.
QString rowsOf(Section const& section) {
    QString lines;
    for (size_t i = 0; !section.facts.empty() && i < section.facts.front().values.size(); ++i) {
        QStringList told;
        for (Fact const& fact : section.facts)
            told << fact.label + QLatin1Char(' ') + fact.shown(i);
        lines += told.join(QLatin1String(", ")) + QLatin1Char('\n');
    }
    return lines;
}

QString linesOf(Section const& section, Fact const& fact) {
    if (section.layout == Layout::One)
        return fact.label + ": " + fact.shown() + '\n';
    QString lines;
    for (size_t i = 0; section.layout == Layout::States && i < std::size(kStates); ++i)
        lines += fact.label + ' ' + kStates[i] + ": " + fact.shown(i) + '\n';
    if (section.layout != Layout::Columns)
        return lines;
    lines = (fact.label + ':').leftJustified(31);
    for (size_t i = 0; i < fact.values.size(); ++i)
        lines += ' ' + fact.shown(i).rightJustified(7);
    return lines + '\n';
}
} // namespace

bool Fact::isTold() const {
    return !label.isEmpty() &&
           std::any_of(values.begin(), values.end(), [](QJsonValue const& value) { return !value.isNull(); });
}

void Section::add(std::initializer_list<QJsonValue> thing) {
    for (size_t i = 0; i < facts.size(); ++i)
        facts[i].values.push_back(thing.begin()[i]);
}

QString Fact::shown(size_t index) const {
    QJsonValue const& value = values[index];
    if (value.isNull())
        return QStringLiteral("-");
    if (value.isBool())
        return value.toBool() ? QStringLiteral("yes") : QStringLiteral("no");
    if (!value.isDouble())
        return value.toString();
    double const number = value.toDouble();
    return (decimals < 0 ? QString::number(number, 'g', 10) : QString::number(number, 'f', decimals)) + unit;
}

QString reportText(Report const& report) {
    QString text = QStringLiteral("result: %1\n").arg(report.result);
    if (!report.cause.isEmpty())
        text += QStringLiteral("cause: %1\n").arg(report.cause);
    for (Section const& section : report.sections) {
        QString lines = section.layout == Layout::Rows ? rowsOf(section) : QString();
        for (Fact const& fact : section.facts)
            if (fact.isTold())
                lines += linesOf(section, fact);
        if (!lines.isEmpty())
            text += QLatin1Char('\n') + lines;
    }
    return text;
}

QByteArray reportJson(Report const& report) {
    QJsonObject root{{"format", "pictara-summary-1"},
                     {"run", report.run},
                     {"result", report.result},
                     {"cause", report.cause}};
    for (Section const& section : report.sections) {
        if (section.layout == Layout::States)
            for (size_t i = 0; i < std::size(kStates); ++i)
                root[kStates[i]] = objectOf(section, i);
        else if (section.layout != Layout::One)
            root[section.key] = objectsOf(section);
        else if (!section.facts.empty())
            root[section.key] = objectOf(section, 0);
        if (!section.profiles.empty())
            root[section.key] = profilesOf(section);
    }
    return QJsonDocument(root).toJson();
}

void OutputFolder::saveBytes(QString const& name, QByteArray const& bytes) {
    QString error = QStringLiteral("%1 would be empty").arg(pathOf(name));
    bool const saved = !bytes.isEmpty() && files::replace(pathOf(name), bytes, &error);
    if (saved)
        m_written.append(name);
    else
        complain(error);
    m_failed = m_failed || !saved;
}

void OutputFolder::removeOthers(QStringList const& names) {
    for (QString const& name : names) {
        QString const path = m_folder.filePath(name);
        if (m_written.contains(name) || !QFileInfo(path).isFile() || QFile::remove(path))
            continue;
        complain(QStringLiteral("The file %1 of an earlier run cannot be removed.").arg(path));
        m_failed = true;
    }
}

QString writeReport(Report const& report, OutputFolder& output) {
    auto const nameOf = [&](char const* name) {
        return report.run == QLatin1String("calibration") ? QString(name) : report.run + '-' + name;
    };
    for (Section const& section : report.sections)
        for (Picture const& picture : section.pictures)
            output.savePicture(nameOf(picture.file), picture.image);
    output.removeOthers({nameOf("before.png"), nameOf("after.png"), nameOf("refused.png")});
    QString const page = nameOf("report.html");
    output.saveBytes(page, reportPage(report));
    output.saveBytes(nameOf("summary.json"), reportJson(report));
    output.saveBytes(nameOf("summary.txt"), reportText(report).toUtf8());
    return output.pathOf(page);
}

double rounded(double value) {
    constexpr double kFractions = 1e5;
    return std::isfinite(value) ? std::round(value * kFractions) / kFractions : 0;
}
} // namespace pictara
