#pragma once

#include <QString>

namespace quorvelle {

/// Whether the text is an http or https URL.
bool isWebUrl(const QString& url);

/// Opens the person's default browser at an http or https URL and returns at once. Any
/// other URL is left alone, for the system would open files and programs by it. False when
/// nothing was started.
bool openBrowser(const QString& url);

/// How the platform does it; `url` is percent-encoded and of the web. For openBrowser().
bool startBrowser(const QString& url);

}  // namespace quorvelle
