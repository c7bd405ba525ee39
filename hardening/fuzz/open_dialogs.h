#pragma once

#include "tests/support/dialog_session.h"

#include <initializer_list>
#include <vector>

class LensAssist;
class LensAssistApga;

/// Dialogs of several kinds of sensor that stay for all runs, each of which begins with one that is started
/// over: opening takes longer than a run.
class OpenDialogs {
public:
    /// Opens one dialog for each kind.
    OpenDialogs(InputReader& input, std::initializer_list<uint32_t> kinds);
    /// Makes one of them the plug-in's dialog, with the host, the libraries and the headboard of the
    /// beginning.
    void choose(InputReader& input);
    /// What must hold behind a run, whatever it did.
    void checkBalance() const;

    kestra::DialogSession session;

private:
    struct Page {
        uint32_t kind;
        LensAssist* lensAssist;
        LensAssistApga* lensAssistApga;
    };
    std::vector<Page> m_pages;
};
