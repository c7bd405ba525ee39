#include "config_page/document_opener.h"

#include <QDesktopServices>
#include <utility>

namespace {
std::function<bool(QUrl const&)>& replacement() {
    static std::function<bool(QUrl const&)> opener;
    return opener;
}
} // namespace

bool openDocument(QUrl const& url) {
    return replacement() ? replacement()(url) : QDesktopServices::openUrl(url);
}

void setDocumentOpener(std::function<bool(QUrl const&)> opener) {
    replacement() = std::move(opener);
}
