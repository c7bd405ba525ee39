#include "simulator/host/report/block_means.h"

#include <algorithm>

namespace pictara {
namespace {
void addRow(ColourRow const& row, QRect const& rect, Colour& sum) {
    std::vector<float> const* const planes[] = {&row.red, &row.green, &row.blue};
    for (size_t colour = 0; colour < 3; ++colour)
        for (int x = rect.left(); x <= rect.right(); ++x)
            sum[colour] += double((*planes[colour])[size_t(x)]);
}
} // namespace

double luminance(Colour const& colour) {
    return 0.2126 * colour[0] + 0.7152 * colour[1] + 0.0722 * colour[2];
}

std::vector<QRect> gridCells(int width, int height, int columns, int rows, int skippedRows) {
    int const used = height - skippedRows;
    columns = std::min(columns, width);
    rows = std::min(rows, used);
    std::vector<QRect> rects;
    for (int row = 0; row < rows; ++row)
        for (int column = 0; column < columns; ++column)
            rects.emplace_back(
                QPoint(width * column / columns, skippedRows + used * row / rows),
                QPoint(width * (column + 1) / columns - 1, skippedRows + used * (row + 1) / rows - 1));
    return rects;
}

std::vector<Colour> blockMeans(RowSource const& picture, std::vector<QRect> const& rects) {
    std::vector<Colour> means(rects.size());
    picture.read([&](uint32_t y, ColourRow const& row) {
        for (size_t i = 0; i < rects.size(); ++i)
            if (int(y) >= rects[i].top() && int(y) <= rects[i].bottom())
                addRow(row, rects[i], means[i]);
    });
    for (size_t i = 0; i < rects.size(); ++i)
        for (double& channel : means[i])
            channel /= double(rects[i].width()) * rects[i].height();
    return means;
}

LightGrid lightGrid(RowSource const& picture, int columns, int rows, int skippedRows) {
    if (picture.width < 1 || picture.height <= skippedRows)
        return {};
    return {std::min(columns, picture.width), std::min(rows, picture.height - skippedRows),
            blockMeans(picture, gridCells(picture.width, picture.height, columns, rows, skippedRows))};
}
} // namespace pictara
