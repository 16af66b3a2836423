#pragma once

#include <QList>
#include <QString>
#include <QStringList>

#include "console/usage_forms.h"

namespace quorvelle {

/// What is wrong with a command line that its command refused: one line that names the
/// word, the option, or what is missing, and the nearest word that would be right. `words`
/// begins with the command's own words, `forms` are the ways in which it can be written.
QString mistakeIn(const QStringList& words, const QList<UsageForm>& forms);

}  // namespace quorvelle
