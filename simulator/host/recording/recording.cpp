#include "simulator/host/recording/recording.h"

#include "simulator/files/whole_file.h"
#include "simulator/host/recording/recorded_input.h"
#include "simulator/host/session/light_ranges.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>

namespace pictara {
namespace {
constexpr char kFirstLine[] = "pictara-sim recording 1";
constexpr int kEepromSize = 8192, kRowSize = 32;
constexpr char kBlankEeprom[] = "blank";
constexpr qint64 kMostBytes = 64 << 20; // an hour of a script

bool readNumber(QString const& text, Range const& range, double& number) {
    bool ok = false;
    number = text.toDouble(&ok);
    return ok && number >= range.low && number <= range.high;
}

/// An option in the head; one that stands as by default has no line, but for those that every head shows.
struct HeadOption {
    char const* name;
    QString (*write)(Options const& options);
    bool (*read)(QString const& text, Options& options);
};

constexpr HeadOption kHeadOptions[] = {
    {"profile", [](Options const& o) { return o.profile; },
     [](QString const& text, Options& o) { return !(o.profile = text).isEmpty(); }},
    {"seed", [](Options const& o) { return QString::number(o.seed); },
     [](QString const& text, Options& o) {
         bool ok = false;
         o.seed = text.toULongLong(&ok);
         return ok;
     }},
    {"light", [](Options const& o) { return o.lightKelvin ? exactly(*o.lightKelvin) : QString(); },
     [](QString const& text, Options& o) {
         return readNumber(text, kColourTemperatures, o.lightKelvin.emplace());
     }},
    {"level", [](Options const& o) { return exactly(o.lightLevel); },
     [](QString const& text, Options& o) { return readNumber(text, kLevels, o.lightLevel); }},
    {"gradient", [](Options const& o) { return exactly(o.lightGradient); },
     [](QString const& text, Options& o) { return readNumber(text, kGradients, o.lightGradient); }},
    {"object", [](Options const& o) { return QString::fromLatin1(o.objectInPicture ? "yes" : "no"); },
     [](QString const& text, Options& o) {
         o.objectInPicture = text == QLatin1String("yes");
         return o.objectInPicture || text == QLatin1String("no");
     }},
    {"shading", [](Options const& o) { return o.shadingFile; },
     [](QString const& text, Options& o) { return !(o.shadingFile = text).isEmpty(); }},
    {"ini", [](Options const& o) { return o.iniFile; },
     [](QString const& text, Options& o) { return !(o.iniFile = text).isEmpty(); }},
    // One that waits for a save is an input at its time.
    {"fault", [](Options const& o) { return o.fault && o.fault->operation ? textOf(*o.fault) : QString(); },
     [](QString const& text, Options& o) { return bool(o.fault = parseFaultWish(text)); }},
};

// One that cannot be read ends the session before it begins.
QByteArray contentsOf(QString const& file) {
    QString error;
    return files::read(file, files::kMostText, &error).value_or(QByteArray());
}

QString fileInOutput(Options const& options, QString const& given, char const* usual) {
    return given.isEmpty() ? QDir(options.outputFolder).filePath(QLatin1String(usual)) : given;
}

// Rows that hold nothing but erased bytes are left out.
QByteArray eepromLines(QByteArray const& contents) {
    if (contents.isEmpty())
        return {};
    QByteArray lines = QByteArrayLiteral("eeprom ") + kBlankEeprom + '\n';
    for (int at = 0; at < contents.size(); at += kRowSize)
        if (QByteArray const row = contents.mid(at, kRowSize); row.count('\xFF') != row.size())
            lines += "eeprom " + QByteArray::number(at) + ' ' + row.toHex() + '\n';
    return lines;
}

bool readEepromLine(QByteArray const& text, QByteArray& eeprom) {
    if (text == kBlankEeprom) {
        eeprom = QByteArray(kEepromSize, '\xFF');
        return true;
    }
    bool ok = false;
    int const at = text.left(text.indexOf(' ')).toInt(&ok);
    QByteArray const row = QByteArray::fromHex(text.mid(text.indexOf(' ') + 1));
    ok = ok && at >= 0 && !row.isEmpty() && row.size() <= eeprom.size() && at <= eeprom.size() - row.size();
    if (ok)
        eeprom.replace(at, row.size(), row);
    return ok;
}

bool readHeadLine(QByteArray const& line, Recording& recording) {
    QByteArray const name = line.left(line.indexOf(' ')), text = line.mid(name.size() + 1);
    if (name == "setting")
        recording.settings.push_back(text);
    if (name == "eeprom")
        return readEepromLine(text, recording.eeprom);
    for (HeadOption const& option : kHeadOptions)
        if (name == option.name)
            return option.read(QString::fromUtf8(text), recording.options);
    return name == "setting";
}
} // namespace

QByteArray recordingHead(Options const& options, Placeholders const& placeholders) {
    QByteArray head = kFirstLine + QByteArrayLiteral("\n");
    for (HeadOption const& option : kHeadOptions)
        if (QString const text = option.write(options); !text.isEmpty())
            head += QByteArray(option.name) + ' ' + text.toUtf8() + '\n';
    QByteArray const settings = contentsOf(fileInOutput(options, options.settingsFile, "settings.ini"));
    for (QByteArray const& line : settings.split('\n'))
        if (QByteArray const setting = line.trimmed(); !setting.isEmpty())
            head += "setting " + placeholders.hide(setting) + '\n';
    return head + eepromLines(contentsOf(fileInOutput(options, options.eepromFile, "eeprom.bin"))) + '\n';
}

std::optional<Recording> readRecording(QString const& name, QString* error) {
    auto text = files::read(name, kMostBytes, error);
    if (!text) {
        *error = QStringLiteral("The recording %1 cannot be read: %2").arg(name, *error);
        return std::nullopt;
    }
    if (text->endsWith('\n'))
        text->chop(1);
    Recording recording;
    bool isHead = true;
    int number = 0;
    for (QByteArray line : text->split('\n')) {
        ++number;
        while (line.endsWith('\r'))
            line.chop(1);
        bool const isGood =
            !isHead || line.isEmpty() || (number == 1 ? line == kFirstLine : readHeadLine(line, recording));
        if (!isGood) {
            *error = number == 1 ? QStringLiteral("%1 is no recording of this program's kind.").arg(name)
                                 : QStringLiteral("%1:%2: the head of a recording has no such line: %3")
                                       .arg(name)
                                       .arg(number)
                                       .arg(QString::fromUtf8(line));
            return std::nullopt;
        }
        if (!isHead)
            recording.lines.push_back(line);
        else if (line.isEmpty())
            recording.firstLine = number + 1;
        isHead = isHead && !line.isEmpty();
    }
    if (!recording.lines.empty() && isInput(recording.lines.front()))
        return recording;
    *error = QStringLiteral("The recording %1 holds no input.").arg(name);
    return std::nullopt;
}

bool layOut(Recording const& recording, QString const& folder, QString* error) {
    Placeholders placeholders;
    placeholders.add(folder, "<output>");
    QByteArray settings;
    for (QByteArray const& line : recording.settings)
        settings += placeholders.reveal(line) + '\n';
    QDir const place(folder);
    return (settings.isEmpty() || writeWhole(place.filePath("settings.ini"), settings, error)) &&
           (recording.eeprom.isEmpty() || writeWhole(place.filePath("eeprom.bin"), recording.eeprom, error));
}

Placeholders placeholdersOf(Options const& options) {
    QString const program = QCoreApplication::applicationDirPath();
    Placeholders placeholders;
    placeholders.add(QDir(options.outputFolder).absolutePath(), "<output>");
    placeholders.add(options.iniFile.isEmpty() ? program + QStringLiteral("/pictara.ini")
                                               : QFileInfo(options.iniFile).absoluteFilePath(),
                     "<ini>");
    placeholders.add(program, "<program>");
    return placeholders;
}

bool writeWhole(QString const& name, QByteArray const& contents, QString* error) {
    if (files::replace(name, contents, error))
        return true;
    *error = QStringLiteral("The file %1 cannot be written: %2").arg(name, *error);
    return false;
}
} // namespace pictara
