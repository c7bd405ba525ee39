#include "common/system.h"
#include "simulator/camera/simulated_camera.h"
#include "tests/calibration/pages.h"
#include "tests/support/linked_library.h"
#include "tests/support/whole_walk.h"

#include <QFile>
#include <array>
#include <iostream>

using namespace kestra;

namespace {
using simulator::SimulatedCamera;

/// One way to the EEPROM, by a profile whose sensor takes it.
struct Access {
    char const* name;
    char const* profile;
    bool losesEvenBytes; ///< the bridge's write of two bytes stores only the second one
};

constexpr Access kAccesses[] = {
    {"serial transfers", "polynomial", false},
    {"bus description", "bus-master-103", false},
    {"bridge", "eeprom-bridge-71", true},
};

// These faults reach the library's answer; the others corrupt in silence.
bool isReported(QString const& fault) {
    return fault != QLatin1String("flipped-bit") && fault != QLatin1String("ignored-write");
}

// The page saves to the EEPROM of a simulated camera, in virtual time. The device already holds a record of
// the same name, so that a save reads, deletes, appends and writes.
class SaveUnderFaults : public PageFixture, public ::testing::WithParamInterface<PageCase> {
protected:
    SaveUnderFaults() : PageFixture(GetParam()) {
        // Every save of a factory's label stores the same time.
        currentUtcTime.replace([] { return QDateTime(QDate(2024, 5, 31), QTime(23, 59, 7), Qt::UTC); });
    }
    ~SaveUnderFaults() override {
        delete page.data();
        discardEeprom(eepromSlot);
        pauseFor.replace({});
        currentUtcTime.replace({});
    }

    [[nodiscard]] static bool verifies() { return GetParam().captureRows.size() > 0; }

    void openOn(Access const& access) {
        QString error;
        delete page.data();
        camera = SimulatedCamera::open(QString::fromLatin1(access.profile), &error);
        ASSERT_TRUE(camera) << qPrintable(error);
        camera->useVirtualTime();
        pauseFor.replace([this](std::chrono::milliseconds time) { camera->advanceTime(int(time.count())); });
        installVeyra2(linkedLibrary());
        sensor.camera = camera->handle();
        open();
        ASSERT_EQ(state().eepromState, EepromState::Present);
        // What the bridge stores cannot be read again; there the older record is that of another path.
        if (!access.losesEvenBytes) {
            ASSERT_EQ(save(), "Done.") << "the older record";
            ASSERT_TRUE(camera->saveEeprom(file("older"), &error));
        }
        EXPECT_EQ(vy_WriteSensorRegStr(camera->handle(), "P_RD_P0Q0", "", 0x3C5A), 0);
        uint64_t const operations = camera->deviceOperations(), bytes = camera->deviceBytesWritten();
        startAnew();
        ASSERT_EQ(save(), "Done.");
        saveOperations = camera->deviceOperations() - operations;
        saveBytes = camera->deviceBytesWritten() - bytes;
        expected = deviceBytes();
    }

    QString file(char const* name) const { return QString::fromStdString(saveDir()) + '/' + name; }
    QByteArray deviceBytes() const {
        QString error;
        EXPECT_TRUE(camera->saveEeprom(file("now"), &error));
        QFile now(file("now"));
        return now.open(QIODevice::ReadOnly) ? now.readAll() : QByteArray();
    }
    // The device as before the save, and nothing of it read yet.
    void startAnew() {
        QString error;
        ASSERT_TRUE(camera->loadEeprom(file("older"), &error));
        discardEeprom(eepromSlot);
    }
    std::string save() {
        click("Prom_Save");
        EXPECT_TRUE(host.isBalanced());
        EXPECT_EQ(page->cursor().shape(), Qt::ArrowCursor);
        return text("Prom_Save_Status");
    }

    std::string startOverAndSave() {
        click("Start_Over");
        return state().eepromState == EepromState::Present ? save() : "not detected";
    }

    // Every byte that the device lacks is marked for the next attempt.
    int bytesForgotten() const {
        int forgotten = 0;
        if (!eepromSlot)
            return forgotten;
        QByteArray const device = deviceBytes();
        for (int32_t i = 0; i < eepromSlot->imageSize(); ++i)
            forgotten += eepromSlot->state[size_t(i)] == ByteState::Current &&
                         eepromSlot->image[size_t(i)] != uint8_t(device[i]);
        return forgotten;
    }

    void checkDevice(Access const& access) const {
        QByteArray const device = deviceBytes();
        for (int i = access.losesEvenBytes ? 1 : 0; i < device.size(); i += access.losesEvenBytes ? 2 : 1)
            ASSERT_EQ(device[i], expected[i]) << "byte " << i;
    }

    void saveUnder(QString const& fault, uint64_t at, bool forEver, Access const& access) {
        startAnew();
        ASSERT_TRUE(camera->injectFault(fault, at, forEver));
        std::string const answer = save();
        ASSERT_TRUE(answer == "Done." || answer == "Error accessing the EEPROM.") << answer;
        ++(answer == "Done." ? done : failed);
        bool const reported = isReported(fault);
        if (reported && answer == "Done.")
            checkDevice(access);
        if (reported && !access.losesEvenBytes) {
            EXPECT_EQ(bytesForgotten(), 0);
        }
        ASSERT_TRUE(camera->injectFault(QStringLiteral("none")));
        std::string retry = save();
        if (retry != "Done." && !reported) {
            // What was misread stays in the image; the person starts over, and it is read again.
            ++startedOver;
            retry = access.losesEvenBytes ? retry : startOverAndSave();
            if (retry != "Done.") {
                // Bits that were stored wrong have broken the chain itself: only another content mends that.
                ++broken;
                startAnew();
                retry = startOverAndSave();
            }
        }
        EXPECT_EQ(retry, "Done.");
        if (reported)
            checkDevice(access);
    }

    std::unique_ptr<SimulatedCamera> camera;
    QByteArray expected;
    uint64_t saveOperations = 0, saveBytes = 0;
    int done = 0, failed = 0, startedOver = 0, broken = 0;
};

TEST_P(SaveUnderFaults, EveryOperationOfASaveMayFail) {
    // A sample lets each operation fail in one or two of the ways.
    uint64_t const step = stride(5);
    uint64_t cases = 0;
    for (Access const& access : kAccesses) {
        // The page that reads back what it wrote never ends in "Done." there.
        if (access.losesEvenBytes && verifies())
            continue;
        ASSERT_NO_FATAL_FAILURE(openOn(access)) << access.profile;
        ASSERT_GT(saveOperations, 20U) << access.profile;
        uint64_t const before = cases;
        for (uint64_t first = 0; QString const& fault : SimulatedCamera::faultNames()) {
            if (fault == QLatin1String("none"))
                continue;
            uint64_t const last = fault == QLatin1String("power-cut") ? saveBytes : saveOperations;
            for (uint64_t at = first++ % step + 1; at <= last; at += step) {
                for (bool const forEver : {false, true}) {
                    SCOPED_TRACE(std::string(access.name) + ": " + fault.toStdString() + " at " +
                                 std::to_string(at) + (forEver ? " for ever" : ""));
                    ASSERT_NO_FATAL_FAILURE(saveUnder(fault, at, forEver, access));
                    ++cases;
                }
            }
        }
        std::cout << access.name << ": " << cases - before << " saves under faults (" << saveOperations
                  << " operations, " << saveBytes << " bytes each)\n";
    }
    std::cout << cases << " saves under faults: " << failed << " reported an error, " << done
              << " were done, " << startedOver << " needed the EEPROM to be read again, " << broken
              << " had broken its chain\n";
    EXPECT_GE(cases, (verifies() ? 6000U : 10000U) / step);
    EXPECT_GE(failed, 1000 / int(step));
    EXPECT_GE(done, 1000 / int(step));
}

INSTANTIATE_TEST_SUITE_P(Pages, SaveUnderFaults, ::testing::ValuesIn(kPages),
                         [](auto const& test) { return std::string(test.param.name); });
} // namespace
