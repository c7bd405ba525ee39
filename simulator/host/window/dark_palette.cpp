#include "simulator/host/window/dark_palette.h"

namespace pictara {
QPalette darkPalette() {
    QColor const ground(45, 46, 50), field(62, 63, 68), text(226, 226, 230), faint(150, 150, 156);
    // Fields are lighter than the ground: outlines, which are darker, would not show them.
    QPalette palette(ground); // shades for frames and bevels come from it
    palette.setColor(QPalette::Window, ground);
    palette.setColor(QPalette::WindowText, text);
    palette.setColor(QPalette::Base, field);
    palette.setColor(QPalette::AlternateBase, QColor(56, 57, 62));
    palette.setColor(QPalette::Text, text);
    palette.setColor(QPalette::PlaceholderText, faint);
    palette.setColor(QPalette::Button, QColor(74, 75, 81));
    palette.setColor(QPalette::ButtonText, text);
    palette.setColor(QPalette::ToolTipBase, field);
    palette.setColor(QPalette::ToolTipText, text);
    palette.setColor(QPalette::Highlight, QColor(46, 110, 190));
    palette.setColor(QPalette::HighlightedText, Qt::white);
    palette.setColor(QPalette::Link, QColor(110, 170, 250));
    for (QPalette::ColorRole const role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText})
        palette.setColor(QPalette::Disabled, role, faint);
    return palette;
}
} // namespace pictara
