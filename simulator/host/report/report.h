#pragma once

#include "simulator/host/report/charts.h"

#include <QDir>
#include <QJsonValue>
#include <QStringList>

namespace pictara {
/// Something that is told under one name.
struct Fact {
    static constexpr int kShortest = -1; ///< as many decimals as it takes

    QString key;   ///< for scripts, with the unit in it
    QString label; ///< for people; empty: told to scripts alone
    std::vector<QJsonValue> values =
        {};            ///< as many as the section tells of; texts, flags, numbers, null for none
    QString unit = {}; ///< behind a number
    int decimals = kShortest;

    /// To people, and not for scripts alone or without any value.
    [[nodiscard]] bool isTold() const;
    /// One of the values as people read it.
    [[nodiscard]] QString shown(size_t index = 0) const;
};

/// What each fact of a section has a value for.
enum class Layout {
    One,     ///< the section itself
    States,  ///< each of kStates
    Columns, ///< several things that stand side by side
    Rows,    ///< many things, one below the other
};

/// The states of the sensor's correction, for scripts and people.
inline constexpr char const* kStates[] = {"uncorrected", "corrected"};

struct Picture {
    QImage image;
    QString caption;
    char const* file; ///< its name, like the report's
};

/// Facts and pictures of one subject.
struct Section {
    QString key; ///< for scripts; of `Layout::States` each state has its own
    QString title;
    Layout layout = Layout::One;
    std::vector<Fact> facts = {};
    std::vector<Picture> pictures = {};
    std::vector<HeatMap> maps = {};
    std::vector<ProfileChart> profiles = {};

    /// One more thing that the facts have a value for, in their order.
    void add(std::initializer_list<QJsonValue> thing);
};

/// What a run tells, as a text, as a page for people and as figures for scripts.
struct Report {
    QString run;         ///< "calibration", "replay", "script" or "shading"
    QString result = {}; ///< how it ended
    QString cause = {};  ///< of a failure
    std::vector<Section> sections = {};
};

/// Writes a run's files, each as a whole or not at all, and knows their names. What cannot be written is told
/// on the standard error stream.
class OutputFolder {
public:
    explicit OutputFolder(QString const& folder) : m_folder(folder) {}

    /// As PNG, whatever the name says.
    void savePicture(QString const& name, QImage const& picture) { saveBytes(name, pngOf(picture)); }
    void saveBytes(QString const& name, QByteArray const& bytes);
    /// Removes those of the names that this run did not write, so that nothing of an earlier one is taken for
    /// its own.
    void removeOthers(QStringList const& names);
    /// Absolute, whether it is there or not.
    [[nodiscard]] QString pathOf(QString const& name) const { return m_folder.absoluteFilePath(name); }
    [[nodiscard]] bool failed() const { return m_failed; }

private:
    QDir m_folder;
    QStringList m_written;
    bool m_failed = false;
};

/// A line "name: value" for each value.
[[nodiscard]] QString reportText(Report const& report);
/// A page of HTML that needs nothing but itself.
[[nodiscard]] QByteArray reportPage(Report const& report);
/// A JSON object; every key tells its unit.
[[nodiscard]] QByteArray reportJson(Report const& report);

/// Writes report.html, summary.json, summary.txt and the pictures, and removes pictures of an earlier run.
/// What a calibration leaves has a bare name; what another run leaves bears its kind before it, so that it
/// replaces no calibration's. Returns the page's absolute name.
QString writeReport(Report const& report, OutputFolder& output);

/// A number with as many decimals as anybody can mean; 0 for what is no number.
[[nodiscard]] double rounded(double value);
} // namespace pictara
