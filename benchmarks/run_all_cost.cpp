#include "benchmarks/run_all_cost.h"

#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <algorithm>
#include <vector>

namespace {
constexpr int kRuns = 3;
constexpr int kLongestRunMs = 300'000;

// Of a line that the program says at its end.
double seconds(QString const& output, char const* name) {
    QRegularExpression const line(QStringLiteral("^%1: ([0-9.]+) s$").arg(QLatin1String(name)),
                                  QRegularExpression::MultilineOption);
    return line.match(output).captured(1).toDouble();
}

std::optional<RunAllCost> runOnce() {
    QTemporaryDir const folder;
    QProcess process;
    process.setStandardErrorFile(QProcess::nullDevice());
    process.start(QStringLiteral(PICTARA_SIM),
                  {QStringLiteral("--run-all"), QStringLiteral("--output"), folder.path()});
    bool const ended = process.waitForFinished(kLongestRunMs);
    if (!ended || process.exitStatus() != QProcess::NormalExit || process.exitCode() != 0)
        return std::nullopt;
    QString const output = QString::fromLocal8Bit(process.readAllStandardOutput());
    RunAllCost const cost{seconds(output, "processor time"), seconds(output, "processor time in ticks"),
                          seconds(output, "pauses in ticks")};
    return cost.processor > 0 ? std::optional(cost) : std::nullopt;
}
} // namespace

std::optional<RunAllCost> measureRunAll() {
    std::vector<RunAllCost> costs;
    for (int i = 0; i < kRuns; ++i) {
        std::optional<RunAllCost> const cost = runOnce();
        if (!cost)
            return std::nullopt;
        costs.push_back(*cost);
    }
    std::sort(costs.begin(), costs.end(),
              [](RunAllCost const& a, RunAllCost const& b) { return a.processor < b.processor; });
    return costs[kRuns / 2];
}
