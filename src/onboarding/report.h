#pragma once

#include <QJsonObject>
#include <QString>

#include "console/shown_text.h"
#include "onboarding/preflight.h"
#include "onboarding/wizard.h"

/// What `storage init` tells the user: pure functions from what was found and done to
/// text and JSON.

namespace quorvelle::onboarding {

/// The account, bucket and server that a run is about, found before anything is changed.
Lines preflightText(const Options& options, const Preflight& found);

/// What a run connected and with which tokens; no secrets.
Lines onboardedText(const Options& options, const Onboarded& result);

/// The remedies for an operator's token that may not create tokens.
QString tokenRightsHint();

/// The JSON form of both reports. `result` is missing when nothing was created; the CI
/// credential stands in the object unless it `isInFile`.
QJsonObject reportObject(const Options& options, const Preflight& found, const Onboarded* result,
                         bool isInFile);

}  // namespace quorvelle::onboarding
