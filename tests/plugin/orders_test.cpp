// Every order in which host, dialog, library and application may come together and to their ends, each in a
// process of its own, which must end with 0. Where processes do not fork, fewer are tried.

#include "simulator/boundary/plugin_library.h"
#include "tests/support/fake_bench.h"
#include "tests/support/whole_walk.h"

#include <QApplication>
#include <QDialog>
#include <QPointer>
#include <QTemporaryDir>
#include <cstdio>
#include <cstdlib>
#include <gtest/gtest.h>
#include <iostream>
#include <iterator>
#include <utility>
#include <vector>

#ifdef Q_OS_WIN
#include <QProcess>

constexpr bool kForks = false;
#else
#include <sys/wait.h>
#include <unistd.h>

constexpr bool kForks = true;

// What is alive when a process ends is left to the system, deliberately: that is no leak.
// Published by the sanitizer. NOLINTNEXTLINE(bugprone-reserved-identifier)
extern "C" [[gnu::visibility("default")]] int __lsan_is_turned_off() { return 1; }
#endif

using namespace kestra;

namespace {
struct Setting : FakeBench {
    int argc = 1;
    char name[15] = "orders_test";
    char* argv[2] = {name, nullptr};
    QApplication* application = new QApplication(argc, argv);
    pictara::PluginLibrary plugin;
    QPointer<QWidget> parent = new QWidget;
    std::vector<QPointer<QDialog>> dialogs;

    Setting() {
        QString error;
        if (!plugin.load(QStringLiteral(PLUGIN_FILE), &error))
            std::_Exit(1);
    }
    void open(uint32_t kind) {
        sensor.sensorKind = kind;
        dialogs.emplace_back(plugin.openDialog(parent, &sensor, &services));
        if (!last())
            std::_Exit(2);
        last()->show();
        invoke("OnBnClickedRunall");
    }
    void invoke(char const* slot) {
        if (QDialog* const found = page())
            QMetaObject::invokeMethod(found, slot);
    }
    [[nodiscard]] QDialog* last() const { return dialogs.empty() ? nullptr : dialogs.back().data(); }
    [[nodiscard]] QDialog* page() const { return last() ? last()->findChild<QDialog*>() : nullptr; }
    void frame() {
        static std::vector<uint32_t> picture(64 * 48, 0x808080);
        plugin.rgbImageData(picture.data(), 11, 64, 48, 256);
        plugin.imageData(picture.data(), 13, 64, 48, 128);
    }
    // The library deletes the dialog that it gave last; those before it have only the host. Without the
    // application nobody may delete any.
    void unload() {
        bool const maySweep = QCoreApplication::instance() != nullptr;
        for (size_t i = 0; maySweep && i + 1 < dialogs.size(); ++i)
            delete dialogs[i].data();
        if (!plugin.unload())
            std::_Exit(3);
        if (maySweep && last())
            std::_Exit(4);
    }
    void endApplication() {
        QApplication::processEvents();
        delete std::exchange(application, nullptr);
    }
};

using Event = std::pair<char const*, void (*)(Setting&)>;

constexpr Event kEvents[] = {
    {"open", [](Setting& s) { s.open(200); }},
    {"open another kind", [](Setting& s) { s.open(72); }},
    {"tick", [](Setting& s) { s.invoke("start"); }},
    {"frame", [](Setting& s) { s.frame(); }},
    {"notification", [](Setting& s) { s.plugin.registerChanged(); }},
    {"close", [](Setting& s) { s.plugin.closeDialog(); }},
    {"delete by parent", [](Setting& s) { delete s.parent.data(); }},
    {"delete dialog", [](Setting& s) { delete s.last(); }},
    {"delete page", [](Setting& s) { delete s.page(); }},
};
constexpr size_t kHostEvents = 7; // the first ones, which a host itself brings about
constexpr Event kEnds[] = {
    {"unload", [](Setting& s) { s.unload(), s.endApplication(); }},
    {"application, unload", [](Setting& s) { s.endApplication(), s.unload(); }},
    {"application, exit", [](Setting& s) { s.endApplication(); }},
    {"exit", [](Setting&) {}},
};

constexpr char kOneOrder[] = "--one-order";

// Numbers of events, then that of an end.
[[noreturn]] void runOrder(Setting& setting, QStringList const& order) {
    for (int i = 0; i + 1 < order.size(); ++i)
        kEvents[order[i].toInt()].second(setting);
    kEnds[order.back().toInt()].second(setting);
    std::exit(0);
}

// Runs it in a process of its own. 0: that went well.
int runApart(QStringList const& order) {
#ifdef Q_OS_WIN
    QProcess process;
    process.start(QCoreApplication::applicationFilePath(), QStringList(kOneOrder) + order);
    bool const ended = process.waitForFinished(60'000) && process.exitStatus() == QProcess::NormalExit;
    return ended ? process.exitCode() : -1;
#else
    // Never destroyed: what an order leaves alive is alive at the process's exit.
    static auto* const setting = new Setting;
    std::fflush(nullptr); // or the child would write it once more
    pid_t const child = fork();
    if (child == 0)
        runOrder(*setting, order);
    int status = 0;
    return child > 0 && waitpid(child, &status, 0) == child ? status : -1;
#endif
}

/// All orders of at most `longest` of `events` different ones, each with every end, or with the ends in turn.
struct Orders {
    void runFrom(QStringList const& order, size_t turn) {
        for (size_t end = 0; end < std::size(kEnds); ++end)
            if (hasEveryEnd || end == turn % std::size(kEnds))
                run(order + QStringList(QString::number(end)));
        for (size_t i = 0; i < events && size_t(order.size()) < longest; ++i)
            if (QString const event = QString::number(i); !order.contains(event))
                runFrom(order + QStringList(event), 3 * turn + i + 1);
    }
    void run(QStringList const& order) {
        ++tried;
        int const status = runApart(order);
        if (status == 0)
            return;
        ++failed;
        for (int i = 0; i + 1 < order.size(); ++i)
            std::cerr << kEvents[order[i].toInt()].first << ", ";
        std::cerr << kEnds[order.back().toInt()].first << " ends with " << status << '\n';
    }
    size_t events, longest;
    bool hasEveryEnd;
    size_t tried = 0, failed = 0;
};

TEST(Orders, WhateverComesFirstTheProcessGoesOnAndEndsCleanly) {
    // What is left alive leaves its files as well.
    QTemporaryDir const folder;
    for (char const* const name : {"TMPDIR", "TMP", "TEMP"})
        qputenv(name, QFile::encodeName(folder.path()));
    // A few of all events, or, which takes minutes, all of the host's.
    Orders orders = walksWhole() ? Orders{kHostEvents, kHostEvents, true}
                    : kForks     ? Orders{std::size(kEvents), 3, false}
                                 : Orders{std::size(kEvents), 2, true};
    orders.runFrom({}, 0);
    std::cout << orders.tried << " orders\n";
    EXPECT_EQ(orders.failed, 0U);
    EXPECT_GT(orders.tried, walksWhole() ? 50'000U : 300U);
}
} // namespace

int main(int argc, char** argv) {
    if (argc > 2 && qstrcmp(argv[1], kOneOrder) == 0)
        runOrder(*new Setting, QStringList(argv + 2, argv + argc));
    testing::InitGoogleTest(&argc, argv);
#ifdef Q_OS_WIN
    QCoreApplication const application(argc, argv); // which knows the program's file
#endif
    return RUN_ALL_TESTS();
}
