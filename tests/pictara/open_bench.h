#pragma once

#include "simulator/host/host_window.h"
#include "simulator/host/session.h"
#include "tests/support/small_profile.h"

#include <QDialog>
#include <QTemporaryDir>
#include <gtest/gtest.h>

namespace pictara {

/// The window with the plug-in's dialog on a small sensor; `options` can be changed before it opens.
struct OpenBench : testing::Test {
    void open() {
        options.profile = writeSmallProfile(folder.path(), "poly-12bit", {});
        options.outputFolder = folder.filePath("out");
        QString error;
        session = Session::open(options, &error);
        ASSERT_TRUE(session) << error.toStdString();
        window = std::make_unique<HostWindow>(*session, options);
        ASSERT_TRUE(window->openDialog(&error)) << error.toStdString();
        window->showWithDialog();
    }
    void TearDown() override {
        if (session)
            session->closePlugin();
    }
    template <typename Widget>
    [[nodiscard]] Widget* part(char const* name) const {
        return window->findChild<Widget*>(QLatin1String(name));
    }

    QTemporaryDir folder;
    Options options;
    std::unique_ptr<Session> session;
    std::unique_ptr<HostWindow> window;
};

} // namespace pictara
