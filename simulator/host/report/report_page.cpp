#include "simulator/host/report/report_page.h"

#include "simulator/host/report/png_effort.h"

#include <QBuffer>
#include <algorithm>
#include <cmath>

namespace pictara {
namespace {
constexpr int kWidestPicture = 960;
constexpr int kLargestPicture = 450'000; // bytes; noise makes them large

// Without the characters that a writer of XML escapes, since a browser reads a style as it stands.
constexpr char kStyle[] = R"(
:root { color-scheme: light dark; --back: #fff; --text: #202024; --line: #c9c9d0; --head: #f0f0f3; }
@media (prefers-color-scheme: dark) {
  :root { --back: #191921; --text: #e1e1e6; --line: #4a4a52; --head: #2a2b30; }
}
body { background: var(--back); color: var(--text); font: 15px/1.45 sans-serif; margin: 1.5em auto;
  max-width: 1000px; padding: 0 1em; }
h1 { font-size: 1.5em; } h2 { font-size: 1.15em; margin: 1.8em 0 .5em; border-bottom: 1px solid var(--line); }
.row { display: flex; flex-wrap: wrap; gap: 1em; align-items: flex-start; }
figure { margin: 0 0 .5em; } figure img { max-width: 100%; height: auto; display: block; }
.row figure { max-width: 480px; }
figcaption, caption, summary { font-size: .9em; text-align: left; padding: .25em 0; opacity: .85; }
table { border-collapse: collapse; margin: 0 0 1em; font-variant-numeric: tabular-nums; }
td, th { border: 1px solid var(--line); padding: .15em .55em; text-align: right; font-weight: normal; }
th { background: var(--head); text-align: left; }
td.text { text-align: left; overflow-wrap: anywhere; }
.grid { font-size: .68em; } .grid td { padding: .3em .35em; }
@media print { body { max-width: none; margin: 0; font-size: 11px; }
  figure, table { break-inside: avoid; } h2 { break-after: avoid; } .row figure { max-width: 48%; } }
)";

QByteArray png(QImage const& picture) {
    QByteArray bytes;
    QBuffer buffer(&bytes);
    picture.save(&buffer, "PNG", kPngEffort);
    return bytes;
}

QString dataUri(QByteArray const& pngBytes) {
    return QStringLiteral("data:image/png;base64,") + QString::fromLatin1(pngBytes.toBase64());
}

bool isNumber(QString const& text) {
    return !text.isEmpty() && (text[0].isDigit() || text[0] == QLatin1Char('-'));
}

// Red above zero, blue below, stronger the farther away.
QString tint(double value, double largest) {
    double const share = largest > 0 ? std::abs(value) / largest : 0;
    return QStringLiteral("background:rgba(%1,%2)")
        .arg(value < 0 ? QStringLiteral("64,128,220") : QStringLiteral("220,72,56"))
        .arg(0.65 * share, 0, 'f', 2);
}
} // namespace

ReportPage::ReportPage(QString const& title) : m_writer(&m_page) {
    m_writer.writeDTD(QStringLiteral("<!DOCTYPE html>"));
    m_writer.writeStartElement(QStringLiteral("html"));
    m_writer.writeAttribute(QStringLiteral("lang"), QStringLiteral("en"));
    m_writer.writeStartElement(QStringLiteral("head"));
    m_writer.writeEmptyElement(QStringLiteral("meta"));
    m_writer.writeAttribute(QStringLiteral("charset"), QStringLiteral("utf-8"));
    m_writer.writeEmptyElement(QStringLiteral("meta"));
    m_writer.writeAttribute(QStringLiteral("name"), QStringLiteral("viewport"));
    m_writer.writeAttribute(QStringLiteral("content"), QStringLiteral("width=device-width"));
    m_writer.writeTextElement(QStringLiteral("title"), title);
    m_writer.writeTextElement(QStringLiteral("style"), QString::fromLatin1(kStyle));
    m_writer.writeEndElement();
    m_writer.writeStartElement(QStringLiteral("body"));
    m_writer.writeTextElement(QStringLiteral("h1"), title);
}

void ReportPage::heading(QString const& text) { m_writer.writeTextElement(QStringLiteral("h2"), text); }
void ReportPage::paragraph(QString const& text) { m_writer.writeTextElement(QStringLiteral("p"), text); }

void ReportPage::beginRow() {
    m_writer.writeStartElement(QStringLiteral("div"));
    m_writer.writeAttribute(QStringLiteral("class"), QStringLiteral("row"));
    m_writer.writeCharacters(QStringLiteral("\n")); // an element without content would be written as closed
}

void ReportPage::endRow() { m_writer.writeEndElement(); }

void ReportPage::image(QImage const& picture, QString const& text, int shownWidth) {
    m_writer.writeEmptyElement(QStringLiteral("img"));
    m_writer.writeAttribute(QStringLiteral("src"), dataUri(png(picture)));
    m_writer.writeAttribute(QStringLiteral("alt"), text);
    m_writer.writeAttribute(QStringLiteral("width"), QString::number(shownWidth));
}

void ReportPage::caption(QString const& text) {
    m_writer.writeTextElement(QStringLiteral("figcaption"), text);
}

void ReportPage::picture(QImage const& picture, QString const& text) {
    if (picture.isNull())
        return;
    int const width = std::min(kWidestPicture, picture.width());
    QImage scaled = picture;
    if (width < picture.width())
        scaled = picture.scaledToWidth(width, Qt::SmoothTransformation);
    while (png(scaled).size() > kLargestPicture && scaled.width() > kWidestPicture / 4)
        scaled = picture.scaledToWidth(scaled.width() * 3 / 4, Qt::SmoothTransformation);
    m_writer.writeStartElement(QStringLiteral("figure"));
    image(scaled, text, width);
    caption(text);
    m_writer.writeEndElement();
}

void ReportPage::chart(QImage const& light, QImage const& dark, QString const& text) {
    if (light.isNull())
        return;
    m_writer.writeStartElement(QStringLiteral("figure"));
    m_writer.writeStartElement(QStringLiteral("picture"));
    m_writer.writeEmptyElement(QStringLiteral("source"));
    m_writer.writeAttribute(QStringLiteral("media"), QStringLiteral("(prefers-color-scheme: dark)"));
    m_writer.writeAttribute(QStringLiteral("srcset"), dataUri(png(dark)));
    image(light, text, light.width() / kChartScale);
    m_writer.writeEndElement();
    m_writer.writeEndElement();
}

void ReportPage::rows(std::vector<QStringList> const& rows, bool hasHeader) {
    for (size_t i = 0; i < rows.size(); ++i) {
        m_writer.writeStartElement(QStringLiteral("tr"));
        for (int column = 0; column < rows[i].size(); ++column) {
            // A space keeps an empty cell from being written as a closed element.
            QString const text = rows[i][column].isEmpty() ? QStringLiteral(" ") : rows[i][column];
            bool const isHead = (hasHeader && i == 0) || column == 0;
            m_writer.writeStartElement(isHead ? QStringLiteral("th") : QStringLiteral("td"));
            if (!isHead && !isNumber(text))
                m_writer.writeAttribute(QStringLiteral("class"), QStringLiteral("text"));
            m_writer.writeCharacters(text);
            m_writer.writeEndElement();
        }
        m_writer.writeEndElement();
    }
}

void ReportPage::facts(std::vector<QStringList> const& told) {
    m_writer.writeStartElement(QStringLiteral("table"));
    rows(told, false);
    m_writer.writeEndElement();
}

void ReportPage::table(std::vector<QStringList> const& told) {
    m_writer.writeStartElement(QStringLiteral("table"));
    rows(told, true);
    m_writer.writeEndElement();
}

void ReportPage::foldedTable(QString const& text, std::vector<QStringList> const& told) {
    m_writer.writeStartElement(QStringLiteral("details"));
    m_writer.writeTextElement(QStringLiteral("summary"), text);
    table(told);
    m_writer.writeEndElement();
}

void ReportPage::grid(QString const& text, int columns, std::vector<double> const& values, int decimals) {
    double largest = 0;
    for (double const value : values)
        largest = std::max(largest, std::abs(value));
    m_writer.writeStartElement(QStringLiteral("table"));
    m_writer.writeAttribute(QStringLiteral("class"), QStringLiteral("grid"));
    m_writer.writeTextElement(QStringLiteral("caption"), text);
    for (size_t i = 0; i < values.size(); ++i) {
        if (i % size_t(columns) == 0)
            m_writer.writeStartElement(QStringLiteral("tr"));
        m_writer.writeStartElement(QStringLiteral("td"));
        m_writer.writeAttribute(QStringLiteral("style"), tint(values[i], largest));
        m_writer.writeCharacters(QString::number(values[i], 'f', decimals));
        m_writer.writeEndElement();
        if ((i + 1) % size_t(columns) == 0)
            m_writer.writeEndElement();
    }
    m_writer.writeEndElement();
}

QByteArray ReportPage::finish() {
    m_writer.writeEndDocument();
    return m_page;
}
} // namespace pictara
