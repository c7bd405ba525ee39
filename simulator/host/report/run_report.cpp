#include "simulator/host/report/run_report.h"

#include "simulator/host/report/report_figures.h"
#include "simulator/host/report/report_page.h"
#include "simulator/host/report/summary_json.h"

namespace pictara {
namespace {
struct State {
    char const* name;
    std::optional<Evenness> const& evenness;
};

QString shownFigure(std::optional<double> const& value, int decimals) {
    return value ? QString::number(*value, 'f', decimals) : QStringLiteral("-");
}

void addFigures(ReportPage& page, RunReport const& report) {
    QStringList rating{QStringLiteral("the dialog's rating")};
    for (auto const* evenness : {&report.before, &report.after})
        rating << (*evenness ? (*evenness)->rating : QStringLiteral("-"));
    std::vector<QStringList> rows{{QString(), QStringLiteral("uncorrected"), QStringLiteral("corrected")},
                                  rating};
    for (Figure const& figure : pictureFigures()) {
        QStringList row{QString::fromLatin1(figure.label)};
        for (auto const* evenness : {&report.before, &report.after})
            row << shownFigure(*evenness ? std::optional(figure.of(**evenness)) : std::nullopt,
                               figure.decimals);
        rows.push_back(row);
    }
    page.heading(QStringLiteral("Figures"));
    page.table(rows);
}

void addPictures(ReportPage& page, RunReport const& report) {
    page.heading(QStringLiteral("Pictures"));
    page.beginRow();
    page.picture(markedPicture(*report.before), QStringLiteral("Uncorrected; the worst block is marked"));
    page.picture(markedPicture(*report.after), QStringLiteral("Corrected; the worst block is marked"));
    page.endRow();
}

void addMaps(ReportPage& page, State const& state) {
    LightMaps const& maps = state.evenness->detail.maps;
    double const aspect = double(state.evenness->picture.width()) / state.evenness->picture.height();
    page.beginRow();
    for (PictureQuantity const& quantity : pictureQuantities())
        page.chart(HeatMap{
            .title = QStringLiteral("%1, %2").arg(QLatin1String(quantity.title), QLatin1String(state.name)),
            .unit = QStringLiteral("%"),
            .columns = maps.sensor.columns,
            .rows = maps.sensor.rows,
            .values = quantity.of(maps),
            .aspect = aspect});
    page.endRow();
}

void addProfiles(ReportPage& page, RunReport const& report) {
    page.heading(QStringLiteral("Profiles from the top left to the bottom right corner"));
    page.beginRow();
    LightGrid const& grid = report.before->detail.maps.sensor;
    for (PictureQuantity const& quantity : pictureQuantities()) {
        auto const line = [&](char const* name, LightMaps const& maps, bool isReference) {
            return ProfileChart::Line{QString::fromLatin1(name),
                                      diagonal(quantity.of(maps), grid.columns, grid.rows), isReference};
        };
        QString const title = QString::fromLatin1(quantity.title);
        auto const before = line("uncorrected", report.before->detail.maps, false);
        auto const after = line("corrected", report.after->detail.maps, false);
        auto const truth = line("corrected, true", report.after->detail.trueMaps, true);
        auto const chart = [&](QString const& name, std::vector<ProfileChart::Line> const& lines) {
            page.chart(ProfileChart{.title = name,
                                    .xLabel = QStringLiteral("% of the diagonal"),
                                    .yLabel = QStringLiteral("%"),
                                    .start = 0,
                                    .end = 100,
                                    .lines = lines});
        };
        chart(title, {before, after});
        // What is left would be a flat line beside what there was.
        chart(title + QStringLiteral(", what is left"), {after, truth});
    }
    page.endRow();
}

void addDeviations(ReportPage& page, RunReport const& report) {
    page.heading(QStringLiteral("Colour deviation of the blocks from their mean"));
    page.beginRow();
    for (State const& state : {State{"uncorrected", report.before}, State{"corrected", report.after}}) {
        DisplayBlocks const& blocks = state.evenness->detail.shown;
        DeviationBins const bins = deviationBins(blocks.deviations);
        page.chart(HistogramChart{
            .title = QStringLiteral("%1, %2 x %3 blocks")
                         .arg(QLatin1String(state.name))
                         .arg(blocks.columns)
                         .arg(blocks.rows),
            .xLabel = QStringLiteral("deviation in a*b*"),
            .yLabel = QStringLiteral("blocks"),
            .binWidth = bins.width,
            .counts = bins.counts,
        });
    }
    page.endRow();
}

void addCoarseGrids(ReportPage& page, State const& state) {
    PictureDetail const& detail = state.evenness->detail;
    page.beginRow();
    page.grid(QStringLiteral("Luminance against the centre, %, ") + QLatin1String(state.name),
              detail.coarseLight.columns, luminanceResidual(detail.coarseLight), 1);
    page.grid(QStringLiteral("Colour deviation from the mean, a*b*, ") + QLatin1String(state.name),
              detail.coarseColour.columns, detail.coarseColour.deviations, 2);
    page.endRow();
}

void addStates(ReportPage& page, RunReport const& report) {
    State const states[] = {{"uncorrected", report.before}, {"corrected", report.after}};
    addPictures(page, report);
    if (hasCharts()) {
        page.heading(QStringLiteral("Colour and luminance over the picture"));
        for (State const& state : states)
            addMaps(page, state);
        addProfiles(page, report);
        addDeviations(page, report);
    } else {
        page.paragraph(
            QStringLiteral("This program was built without charts; the JSON beside this page holds "
                           "profiles and histograms."));
    }
    page.heading(QStringLiteral("What is left on 11 x 11 blocks"));
    for (State const& state : states)
        addCoarseGrids(page, state);
}

void addLights(ReportPage& page, LightMatrix const& lights) {
    if (lights.empty())
        return;
    std::vector<QStringList> rows{{QStringLiteral("the dialog's figure (a*b*)")}, {QStringLiteral("none")}};
    for (size_t table = 0; table < lights.front().tableAlone.size(); ++table)
        rows.push_back({QStringLiteral("table %1 alone").arg(table + 1)});
    rows.push_back({QStringLiteral("blended tables")});
    for (LightColumn const& light : lights) {
        rows[0] << QString::number(light.kelvin) + QStringLiteral(" K");
        rows[1] << shownFigure(light.uncorrected, 2);
        for (size_t table = 0; table + 3 < rows.size(); ++table)
            rows[table + 2] << shownFigure(
                table < light.tableAlone.size() ? light.tableAlone[table] : std::nullopt, 2);
        rows.back() << shownFigure(light.corrected, 2);
    }
    page.heading(QStringLiteral("Each table under each light"));
    page.table(rows);
}

void addFacts(ReportPage& page, RunReport const& report) {
    for (FactTable const& table : report.tables) {
        if (table.facts.empty())
            continue;
        std::vector<QStringList> rows;
        for (Fact const& fact : table.facts)
            rows.push_back({fact.label, fact.shown});
        page.heading(table.title);
        page.facts(rows);
    }
    if (report.registers.empty())
        return;
    std::vector<QStringList> rows{
        {QStringLiteral("id"), QStringLiteral("address"), QStringLiteral("name"), QStringLiteral("value")}};
    auto const hex = [](uint32_t value) {
        return QStringLiteral("0x%1").arg(value, 4, 16, QLatin1Char('0'));
    };
    for (SolutionRegister const& reg : report.registers)
        rows.push_back({QString::number(reg.id), hex(reg.address), reg.name, hex(reg.value)});
    page.foldedTable(QStringLiteral("The %1 registers of the solution").arg(report.registers.size()), rows);
}

QByteArray pageOf(RunReport const& report) {
    ReportPage page(QStringLiteral("Lens shading: %1").arg(report.run));
    page.paragraph(QStringLiteral("Result: %1.").arg(report.result));
    if (!report.cause.isEmpty())
        page.paragraph(QStringLiteral("Cause: %1").arg(report.cause));
    if (!report.refused.isNull()) {
        page.heading(QStringLiteral("Refused"));
        page.picture(report.refused, report.refusedCaption);
    }
    if (report.before || report.after)
        addFigures(page, report);
    if (report.before && report.after)
        addStates(page, report);
    addLights(page, report.lights);
    addFacts(page, report);
    return page.finish();
}
} // namespace

QString resultName(QString const& run, char const* name) {
    QString const prefix = run == QLatin1String("calibration") ? QString() : run + QLatin1Char('-');
    return prefix + QLatin1String(name);
}

QString writeReport(RunReport const& report, OutputFolder& output) {
    QString const page = resultName(report.run, "report.html");
    output.saveBytes(page, pageOf(report));
    output.saveBytes(resultName(report.run, "summary.json"), summaryJson(report));
    return output.pathOf(page);
}
} // namespace pictara
