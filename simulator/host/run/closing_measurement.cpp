#include "simulator/host/run/closing_measurement.h"

#include "simulator/host/session/session.h"

#include <QtDebug>
#include <limits>

namespace pictara {
std::optional<Evenness> measureEvenness(Session& session, DialogPage& page, RunDriver& driver,
                                        bool corrected) {
    // The test of the dialog switches the correction on; it measures with the next frame, so there is still
    // time to switch it off.
    if (!page.press("ColorUniformity"))
        return std::nullopt;
    if (!corrected && page.isChecked("Enable_LC"))
        page.press("Enable_LC");
    if (page.isChecked("Enable_LC") != corrected) {
        qWarning("pictara: the dialog shows the lens correction %s", corrected ? "off" : "on");
        return std::nullopt;
    }
    Evenness result;
    if (!driver.awaitUniformity(&result.uniformity))
        return std::nullopt;
    bool isNumber = false;
    result.limit = page.text("GoodCU").toDouble(&isNumber);
    if (!isNumber)
        result.limit = std::numeric_limits<double>::quiet_NaN();
    result.rating = page.colour("CU_Bullet");
    result.blocks = measureBlocks(session.frames().light(), int(session.camera().description().unusableRows));
    result.picture = session.frames().unmarkedPicture();
    return result;
}

std::optional<Evenness> measureInDetail(Session& session, DialogPage& page, RunDriver& driver,
                                        bool corrected) {
    std::optional<Evenness> evenness = measureEvenness(session, page, driver, corrected);
    if (evenness)
        evenness->detail = session.frames().detail();
    return evenness;
}
} // namespace pictara
