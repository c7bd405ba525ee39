#include "tests/support/page_bench.h"

namespace kestra {
PageBench::PageBench() {
    sensor.camera = libraries.camera();
    remakeWizard();
}

void PageBench::remakeWizard() {
    wizard = std::make_unique<Wizard>(QStringLiteral("Kestra Headboard Tuning - LSC Wizard"), nullptr);
    // The pictures are the plug-in's resources; in a program without them each bullet is a pixel of its own.
    for (auto const& [pixmap, colour] : {std::pair(&wizard->pixGray, Qt::gray),
                                         {&wizard->pixBlue, Qt::blue},
                                         {&wizard->pixGreen, Qt::green},
                                         {&wizard->pixYellow, Qt::yellow},
                                         {&wizard->pixRed, Qt::red}}) {
        if (!pixmap->isNull())
            continue;
        *pixmap = QPixmap(1, 1);
        pixmap->fill(colour);
    }
}
} // namespace kestra
