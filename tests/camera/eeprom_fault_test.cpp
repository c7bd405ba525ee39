#include "tests/support/eeprom_access.h"

#include <gtest/gtest.h>
#include <string>
#include <vector>

using namespace simulator;

namespace {
// Five operations under a fault at the third: reads of what the factory left are `r`, writes `w`; the
// expected outcomes are `+` done, `-` failed, `!` done with wrong bytes.
struct FaultRow {
    char const* fault;
    bool forEver;
    char const* operations;
    char const* outcomes;
};

constexpr FaultRow kFaultRows[] = {
    {"none", true, "rwrwr", "+++++"},           {"no-acknowledge", false, "rwrwr", "++-++"},
    {"no-acknowledge", true, "rwrwr", "++---"}, {"no-acknowledge", false, "wwwrw", "++-++"},
    {"busy-for-ever", false, "rwrwr", "++-++"}, {"busy-for-ever", true, "rwwrw", "++---"},
    {"error-12", false, "rwrwr", "++-++"},      {"error-12", true, "rwwwr", "++---"},
    {"flipped-bit", false, "rwrwr", "++!++"},   {"flipped-bit", true, "rwwrw", "++!!!"},
    {"ignored-write", false, "rwwww", "++!++"}, {"ignored-write", true, "rwwrw", "++!+!"},
    {"ignored-write", false, "rwrww", "+++++"},
};

QByteArray const kFactory = QByteArray(8192, '\x6C');

/// What one operation brought, on a page of its own.
struct Transfer {
    char operation = 'r';
    bool isDone = false;
    QByteArray bytes; ///< read or to be written
};

Transfer transfer(EepromAccess const& access, SimulatedCamera& camera, char operation, uint32_t page) {
    Transfer done{.operation = operation, .bytes = operation == 'r' ? QByteArray(2, '\0') : "\x93\x3A"};
    done.isDone = operation == 'r' ? access.read(camera, page * 32, done.bytes)
                                   : access.write(camera, page * 32, done.bytes);
    return done;
}

char outcomeOf(Transfer const& done, QByteArray const& stored) {
    QByteArray const factory = kFactory.left(2);
    if (!done.isDone)
        return stored == factory ? '-' : '?'; // a failed transfer leaves no trace
    return (done.operation == 'r' ? done.bytes == factory : done.bytes == stored) ? '+' : '!';
}

TEST(EepromFault, StrikesTheNamedOperationOnEveryAccess) {
    for (EepromAccess const& access : kEepromAccesses) {
        for (FaultRow const& row : kFaultRows) {
            SCOPED_TRACE(std::string(access.name) + ' ' + row.fault +
                         (row.forEver ? " for ever " : " once ") + row.operations);
            Camera const camera = openFor(access);
            programContents(*camera, kFactory);
            ASSERT_TRUE(camera->injectFault(QString::fromLatin1(row.fault), 3, row.forEver));
            std::vector<Transfer> transfers;
            for (uint32_t i = 0; i < 5; ++i)
                transfers.push_back(transfer(access, *camera, row.operations[i], i));
            EXPECT_EQ(camera->deviceOperations(), 5U);
            ASSERT_TRUE(camera->injectFault(QStringLiteral("none")));
            transfers.push_back(transfer(access, *camera, 'w', 5));

            QByteArray const contents = contentsOf(*camera);
            QByteArray outcomes;
            for (size_t i = 0; i < transfers.size(); ++i)
                outcomes += outcomeOf(transfers[i], contents.mid(int(i) * 32, 2));
            EXPECT_EQ(outcomes, QByteArray(row.outcomes) + '+') << "the last one is without faults";
        }
    }
}

TEST(EepromFault, PowerCutKeepsTheBytesStoredBefore) {
    for (EepromAccess const& access : kEepromAccesses) {
        for (bool const forEver : {false, true}) {
            SCOPED_TRACE(std::string(access.name) + (forEver ? " for ever" : " once"));
            Camera const camera = openFor(access);
            programContents(*camera, kFactory);
            ASSERT_TRUE(camera->injectFault(QStringLiteral("power-cut"), 3, forEver));
            EXPECT_TRUE(access.write(*camera, 0, "ab"));
            EXPECT_FALSE(access.write(*camera, 2, "cd"));
            EXPECT_EQ(contentsOf(*camera).left(5), "abc" + kFactory.left(2));
            QByteArray bytes(2, '\0');
            EXPECT_EQ(access.read(*camera, 0, bytes), !forEver);
            EXPECT_EQ(access.write(*camera, 2, "ef"), !forEver);
            EXPECT_EQ(camera->deviceBytesWritten(), forEver ? 3U : 5U);
        }
        Camera const camera = openFor(access);
        ASSERT_TRUE(camera->injectFault(QStringLiteral("power-cut"), 2, false));
        EXPECT_TRUE(access.write(*camera, 0, "ab")) << "the transfer was over";
        QByteArray bytes(2, '\0');
        EXPECT_FALSE(access.read(*camera, 0, bytes));
        EXPECT_TRUE(access.read(*camera, 0, bytes));
    }
}
} // namespace
