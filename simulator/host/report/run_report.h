#pragma once

#include "simulator/host/report/output_folder.h"
#include "simulator/host/report/summary_lines.h"
#include "simulator/host/run/light_matrix.h"

#include <QJsonValue>

namespace pictara {
/// Something that is told in words and to scripts alike.
struct Fact {
    Fact(char const* name, char const* told, QJsonValue const& number, char const* unit = "");
    Fact(QString name, QString told, QString const& text);

    QString key; ///< for scripts, with the unit in it
    QString label;
    QJsonValue value;
    QString shown;
};

struct FactTable {
    QString key;
    QString title;
    std::vector<Fact> facts;
};

/// A register of the solution.
struct SolutionRegister {
    uint32_t id = 0;
    uint32_t address = 0;
    QString name; ///< empty where the camera has none for it
    uint32_t value = 0;
};

/// What a headless run tells: one page for people, and the same figures for scripts.
struct RunReport {
    QString run;    ///< "calibration", "replay" or "script"
    QString result; ///< as in the text summary
    QString cause;  ///< of a failure
    std::vector<FactTable> tables;
    std::optional<Evenness> before, after;
    QImage refused; ///< with its blocks; null for none
    QString refusedCaption;
    LightMatrix lights;
    std::vector<SolutionRegister> registers;
};

class Session;

/// What lies before the camera, and the camera.
[[nodiscard]] FactTable sceneFacts(Scene const& scene);
/// The registers as they are now, with what was written in all.
[[nodiscard]] FactTable registerFacts(Session& session, uint64_t solutionRegisters, uint64_t registerWrites);
/// The solution that the plug-in wrote, by address.
[[nodiscard]] std::vector<SolutionRegister> solutionOf(Session& session);

/// What a calibration leaves has a bare name, such as "report.html"; what another run leaves bears its kind
/// before it, so that it replaces no calibration's.
[[nodiscard]] QString resultName(QString const& run, char const* name);

/// Writes report.html and summary.json by their resultName(). Returns the page's absolute name.
QString writeReport(RunReport const& report, OutputFolder& output);
} // namespace pictara
