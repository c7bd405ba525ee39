#include "simulator/host/report/charts.h"
#include "simulator/host/run/runs.h"
#include "simulator/host/session/dialog_page.h"
#include "simulator/host/session/message_log.h"
#include "simulator/host/session/session.h"
#include "simulator/host/window/host_window.h"
#include "simulator/pictures/frame_readings.h"
#include "tests/support/small_profile.h"

#include <QtWidgets>
#include <gtest/gtest.h>

namespace pictara {
namespace {
// Above black: G 50, R 25 in the first row, B 12, and twice that from row 8 on.
TEST(FrameReadings, SamplesAreToldMarkedSavedAndAveragedAsTheSensorDeliversThem) {
    simulator::Frame frame{simulator::FrameType::Raw8, 16, 16, 16, QByteArray(256, '\0')};
    constexpr int kCell[] = {50, 25, 12, 50};
    for (int i = 0; i < 256; ++i)
        frame.pixels[i] = char(10 + (i < 128 ? 1 : 2) * kCell[i % 2 + i / 16 % 2 * 2]);
    simulator::CameraDescription camera;
    std::tie(camera.bayerPhase, camera.unusableRows, camera.blackLevel, camera.whiteLevel) =
        std::tuple(1, 1, 10, 110);
    QImage picture(16, 16, QImage::Format_RGB32);
    picture.fill(qRgb(1, 2, 3));
    auto const text = [&](int x, int y) { return pixelText({x, y}, frame, camera, picture); };
    EXPECT_EQ(text(1, 2), "x 1  y 2    raw R 35    shown 1 2 3");
    EXPECT_TRUE(text(0, 2).contains("Gr 60") && text(3, 9).contains("Gb 110") &&
                text(2, 15).contains("B 34"));
    EXPECT_TRUE(text(4, 0).contains("no picture"));
    QImage marked = picture.copy();
    EXPECT_EQ(markClipped(frame, camera, picture, marked), 100.0 * 64 / (16 * 15)) << "green from row 8 on";
    EXPECT_TRUE(marked.pixel(5, 7) == picture.pixel(5, 7) && marked.pixel(5, 8) != picture.pixel(5, 8));
    QImage const saved = QImage::fromData(pngOf(rawPicture(frame)));
    EXPECT_EQ(reinterpret_cast<quint16 const*>(saved.constScanLine(2))[1], 35) << saved.format();
    auto const profile = [&](QLine line) { // the matrix, of zeros, is left out
        return profileAlong(line, frame, camera, {.redGain = 2, .colourCorrection = true});
    };
    EXPECT_TRUE(profile({0, 12, 15, 12}).front()[1] == 1 && profile({0, 2, 15, 15}).back()[1] == 1);
    Colour const first = profile({0, 2, 15, 15}).front();
    EXPECT_TRUE(first[0] == 0.5 && first[1] == 0.5 && first[2] < 0.121);
    frame = {simulator::FrameType::Ycbcr, 8, 16, 16, frame.pixels.replace(32, 4, "0123", 4)};
    picture = picture.copy(0, 0, 8, 16);
    EXPECT_TRUE(text(1, 2).contains("raw Y 50 Cb 49 Cr 51"));
    picture.fill(qRgb(9, 255, 9));
    EXPECT_EQ(markClipped(frame, camera, picture, marked), 100) << "by what is shown";
}

TEST(Bench, BeginsWithTheLampOfThePageAndShowsAllItIsAskedFor) {
    installMessageLog();
    for (auto const& [profile, given, kelvin] :
         {std::tuple("adaptive-72", 0, 2800), {"adaptive-72", 3500, 3500}, {"polynomial", 0, 5000}}) {
        QTemporaryDir const folder;
        QString error;
        Options options;
        // The library's own data tells how large the picture of a sensor with tables is.
        options.profile = kelvin == 2800 ? writeChangedProfile(folder.path(), profile, kNoEeprom)
                                         : writeSmallProfile(folder.path(), profile);
        options.outputFolder = folder.path();
        options.lightKelvin = given > 0 ? std::optional<double>(given) : std::nullopt;
        auto const session = Session::open(options, &error);
        HostWindow window(*session);
        ASSERT_TRUE(window.openDialog(&error)) << error.toStdString();
        auto const close = qScopeGuard([&] { session->closePlugin(); });
        window.showWithDialog();
        EXPECT_EQ(session->camera().light().colourTemperature, kelvin);
        EXPECT_LE(window.dialog()->window()->geometry().bottom(), window.screen()->geometry().bottom());
        auto const* const chart = window.findChild<QLabel*>("chart");
        DialogPage page = DialogPage::find(window.dialog());
        auto const refused = [&, view = window.findChild<QWidget*>("view")] { // magenta blocks
            window.deliverFrame(), page.tick(), window.deliverFrame();
            QImage const shown = view->grab().toImage();
            QColor const block = shown.pixelColor(shown.width() * 3 / 5, shown.height() * 2 / 5);
            return block.blue() > block.green() + 50;
        };
        if (kelvin == 2800) { // a page of several lamps is judged under each, and the person's comes back
            RunDriver driver(page, [&] { session->frames().deliverNext(); });
            driver.onRequests = [&, &session = *session] {
                serveCaptureRows(page, [&](CaptureRow const& row) { session.bringLamp(row.kelvin); });
            };
            (void)driver.runAll();
            EXPECT_TRUE(sittingPage(*session, page).contains("4900 K"));
            EXPECT_EQ(session->camera().light().colourTemperature, 6500);
        }
        page.press("Show_Graph");
        EXPECT_TRUE(!refused() && chart->isVisible() && !chart->pixmap(Qt::ReturnByValue).isNull());
        if (kelvin != 5000)
            continue;
        window.findChild<QAction*>("profile")->trigger();
        session->setLight({.objectInPicture = true});
        page.press("Run_All");
        for (int i = 0; i < 100 && !refused(); ++i) {
        }
        session->setLight({});
        page.press("Start_Over");
        EXPECT_TRUE(refused()) << "until the next try";
        EXPECT_TRUE(sittingPage(*session, page).contains(">not calibrated<"));
        page.press("Calibrate");
        EXPECT_FALSE(refused());
        for (int i = 0; i < 100 && page.text("Calibrate_Status") != "Done."; ++i)
            (void)refused();
        EXPECT_TRUE(sittingPage(*session, page).contains("<dt>Repeatability</dt>"));
    }
}
} // namespace
} // namespace pictara
