// Every order in which host, dialog, library and application may come together and to their ends, each in a
// process of its own, which must end with 0. Where processes fork, one that stands at the end of a sequence
// is the beginning of all that are longer; elsewhere each begins anew, and fewer are tried.

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
#include <string>
#include <utility>
#include <vector>

#ifdef Q_OS_WIN
#include <QProcess>
#else
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

// What is alive when a process ends is left to the system, deliberately: that is no leak.
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
        if (!dialogs.back())
            std::_Exit(2);
        dialogs.back()->show();
        invoke("OnBnClickedRunall");
    }
    void invoke(char const* slot) {
        if (QDialog* const found = page())
            QMetaObject::invokeMethod(found, slot);
    }
    [[nodiscard]] QDialog* page() const {
        return dialogs.empty() || !dialogs.back() ? nullptr : dialogs.back()->findChild<QDialog*>();
    }
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
        if (maySweep && !dialogs.empty() && dialogs.back())
            std::_Exit(4);
    }
    void endApplication() {
        QApplication::processEvents();
        delete std::exchange(application, nullptr);
    }
};

using Deed = void (*)(Setting&);
struct Event {
    char const* name;
    Deed run;
};

constexpr Event kEvents[] = {
    {"open", [](Setting& s) { s.open(200); }},
    {"open another kind", [](Setting& s) { s.open(72); }},
    {"tick", [](Setting& s) { s.invoke("start"); }},
    {"frame", [](Setting& s) { s.frame(); }},
    {"notification", [](Setting& s) { s.plugin.registerChanged(); }},
    {"close", [](Setting& s) { s.plugin.closeDialog(); }},
    {"delete by parent", [](Setting& s) { delete s.parent.data(); }},
    {"delete dialog", [](Setting& s) { delete (s.dialogs.empty() ? nullptr : s.dialogs.back().data()); }},
    {"delete page", [](Setting& s) { delete s.page(); }},
};
constexpr size_t kHostEvents = 7; // the first ones, which a host itself brings about
constexpr Event kEnds[] = {
    {"unload", [](Setting& s) { s.unload(), s.endApplication(); }},
    {"application, unload", [](Setting& s) { s.endApplication(), s.unload(); }},
    {"application, exit", [](Setting& s) { s.endApplication(); }},
    {"exit", [](Setting&) {}},
};

struct Counts {
    int orders, failed;
};

// All orders of at most `longest` of `events` different ones, with so many ends each.
int numberOfOrders(size_t events, size_t longest, size_t ends) {
    size_t orders = 1, found = 1;
    for (size_t length = 1; length <= longest; ++length)
        found += orders *= events + 1 - length;
    return int(found * ends);
}

#ifdef Q_OS_WIN

constexpr size_t kUsualLongest = 2;
constexpr bool kHasUsuallyEveryEnd = true;
constexpr char kOneOrder[] = "--one-order";

// The numbers of events, and of an end.
[[noreturn]] void runOrder(int count, char** numbers) {
    auto* const setting = new Setting; // never destroyed: what an order leaves alive is alive at the exit
    for (int i = 0; i + 1 < count; ++i)
        kEvents[std::atoi(numbers[i])].run(*setting);
    kEnds[std::atoi(numbers[count - 1])].run(*setting);
    std::exit(0);
}

class Orders {
public:
    Orders(size_t events, size_t longest, bool) : m_events(events), m_longest(longest) {
        qputenv("TMP", QFile::encodeName(m_folder.path())); // what is left alive leaves its files as well
        qputenv("TEMP", QFile::encodeName(m_folder.path()));
    }

    [[nodiscard]] Counts run() {
        walk();
        return m_counts;
    }

private:
    void walk() {
        for (size_t end = 0; end < std::size(kEnds); ++end)
            inChild(end);
        for (size_t i = 0; i < m_events && size_t(m_path.size()) < m_longest; ++i) {
            QString const event = QString::number(i);
            if (m_path.contains(event))
                continue;
            m_path.append(event);
            walk();
            m_path.removeLast();
        }
    }

    void inChild(size_t end) {
        QProcess process;
        process.start(QCoreApplication::applicationFilePath(),
                      QStringList(QLatin1String(kOneOrder)) + m_path + QStringList(QString::number(end)));
        ++m_counts.orders;
        if (process.waitForFinished(60'000) && process.exitStatus() == QProcess::NormalExit &&
            process.exitCode() == 0)
            return;
        ++m_counts.failed;
        for (QString const& event : m_path)
            std::cerr << kEvents[event.toInt()].name << ", ";
        std::cerr << kEnds[end].name << " ends with " << process.exitCode() << '\n';
    }

    size_t const m_events, m_longest;
    QTemporaryDir m_folder;
    QStringList m_path;
    Counts m_counts{};
};

#else

constexpr size_t kUsualLongest = 3;
constexpr bool kHasUsuallyEveryEnd = false;

class Orders {
public:
    /// `hasEveryEnd`: each order comes to each of the ends, else they take turns.
    Orders(size_t events, size_t longest, bool hasEveryEnd)
        : m_events(events), m_longest(longest), m_hasEveryEnd(hasEveryEnd),
          m_counts(static_cast<Counts*>(
              mmap(nullptr, sizeof(Counts), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0))) {}

    [[nodiscard]] Counts run() {
        // Never destroyed: what an order leaves alive is alive at the process's exit.
        auto* const setting = new Setting;
        walk(*setting, 0, 0);
        return *m_counts;
    }

private:
    void walk(Setting& setting, unsigned done, size_t turn) {
        for (size_t i = 0; i < std::size(kEnds); ++i)
            if (m_hasEveryEnd || i == turn % std::size(kEnds))
                inChild(kEnds[i], [&] {
                    kEnds[i].run(setting);
                    std::exit(0);
                });
        for (size_t i = 0; i < m_events && m_path.size() < m_longest; ++i) {
            if (done & 1U << i)
                continue;
            inChild(kEvents[i], [&] {
                kEvents[i].run(setting);
                walk(setting, done | 1U << i, 3 * turn + i + 1);
                std::_Exit(0);
            });
        }
    }

    template <typename Call>
    void inChild(Event const& event, Call call) {
        m_path.push_back(event.name);
        std::fflush(nullptr); // or the child would write it once more
        pid_t const child = fork();
        if (child == 0)
            call();
        int status = 0;
        m_counts->orders += &event >= kEnds && &event < std::end(kEnds);
        if (child < 0 || waitpid(child, &status, 0) != child || status != 0) {
            ++m_counts->failed;
            for (char const* const step : m_path)
                std::cerr << step << ", ";
            std::cerr << "ends with " << status << '\n';
        }
        m_path.pop_back();
    }

    size_t const m_events, m_longest;
    bool const m_hasEveryEnd;
    Counts* const m_counts;
    std::vector<char const*> m_path;
};

#endif

TEST(Orders, WhateverComesFirstTheProcessGoesOnAndEndsCleanly) {
    // A few of all events, or, which takes minutes, all of the host's.
    bool const hasEveryEnd = walksWhole() || kHasUsuallyEveryEnd;
    size_t const events = walksWhole() ? kHostEvents : std::size(kEvents),
                 longest = walksWhole() ? kHostEvents : kUsualLongest;
    Counts const counts = Orders(events, longest, hasEveryEnd).run();
    std::cout << counts.orders << " orders\n";
    EXPECT_EQ(counts.failed, 0);
    EXPECT_EQ(counts.orders, numberOfOrders(events, longest, hasEveryEnd ? std::size(kEnds) : 1));
}
} // namespace

#ifdef Q_OS_WIN
int main(int argc, char** argv) {
    if (argc > 2 && qstrcmp(argv[1], kOneOrder) == 0)
        runOrder(argc - 2, argv + 2);
    testing::InitGoogleTest(&argc, argv);
    QCoreApplication const application(argc, argv); // which knows the program's file
    return RUN_ALL_TESTS();
}
#endif
