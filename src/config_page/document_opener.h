#pragma once

#include <QUrl>
#include <functional>

/// Opens a document with the program that the user's desktop has for it; false when there is none, or no such
/// document.
[[nodiscard]] bool openDocument(QUrl const& url);

/// Replaces the desktop, for a test that answers in its place; an empty function restores the real one.
void setDocumentOpener(std::function<bool(QUrl const&)> opener);
