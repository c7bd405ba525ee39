#pragma once

#include "simulator/host/report/charts.h"

#include <QByteArray>
#include <QStringList>
#include <QXmlStreamWriter>

namespace pictara {
/// Writes one HTML page that needs nothing but itself: style and pictures lie in it. Whatever text is handed
/// in is escaped.
class ReportPage {
public:
    explicit ReportPage(QString const& title);

    void heading(QString const& text);
    void paragraph(QString const& text);
    /// Figures and blocks between these stand side by side where there is room.
    void beginRow();
    void endRow();
    /// A picture, scaled down to what a page can show.
    void picture(QImage const& picture, QString const& caption);
    /// Two pictures, of which the page shows the one for its background. Nothing where there are no charts.
    template <typename Chart>
    void chart(Chart const& told) {
        chart(drawChart(told, Scheme::Light), drawChart(told, Scheme::Dark), told.title);
    }
    /// Names and what is told of them, without a header.
    void facts(std::vector<QStringList> const& rows);
    /// The first row is the header, the first column names the rows. All rows are of one length.
    void table(std::vector<QStringList> const& rows);
    /// The same, folded away until somebody opens it.
    void foldedTable(QString const& caption, std::vector<QStringList> const& rows);
    /// Numbers on a grid, tinted by sign and size.
    void grid(QString const& caption, int columns, std::vector<double> const& values, int decimals);

    /// The whole page; nothing can be added after this.
    [[nodiscard]] QByteArray finish();

private:
    void chart(QImage const& light, QImage const& dark, QString const& caption);
    void caption(QString const& text);
    void rows(std::vector<QStringList> const& rows, bool hasHeader);
    void image(QImage const& picture, QString const& text, int shownWidth);

    QByteArray m_page;
    QXmlStreamWriter m_writer;
};
} // namespace pictara
